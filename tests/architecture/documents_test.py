#!/usr/bin/env python3
"""Checks that the files and names in the documents exist: documents_test.py ROOT"""

import os
import pathlib
import re
import sys
import unittest

ROOT = pathlib.Path(sys.argv.pop() if len(sys.argv) > 1 else pathlib.Path(__file__).parents[2])

DOCUMENTS = ["CONTRIBUTING.md", "docs/architecture.md", "docs/performance.md", "docs/sandbox.md", "docs/tunnel.md"]
# NAME in a path stands for any name.
PATH = re.compile(r"[\w.-]+(?:/[\w.-]+)+/?|[\w-]+\.(?:h|cpp|qml|py)")
NAME = re.compile(r"[A-Za-z_]\w*(?:(?:::|\.)\w+)*")
# A step of a walk through the code: it begins with its files.
STEP = re.compile(r"^\d+\. (`[^`]+`(?:, `[^`]+`)*): (.*?)(?=^\d+\. |^$|\Z)", re.MULTILINE | re.DOTALL)
CODE = re.compile(r"`([^`]+)`")
BLOCK = re.compile(r"^ *```.*?^ *```", re.MULTILINE | re.DOTALL)


class Tree:
    def __init__(self, texts):
        """`texts`: the content of each file by its path."""
        self.texts = texts
        self.paths = {str(folder) for path in texts for folder in pathlib.PurePosixPath(path).parents} | texts.keys()
        self.words = set(re.findall(r"\w+", " ".join(texts[path] for path in texts if not path.endswith(".md"))))

    def has(self, path):
        path = path.removeprefix("./").rstrip("/")
        return path in self.paths or any(other.endswith("/" + path) for other in self.texts)

    def has_word(self, word, files):
        return word in self.words if not files else any(re.search(rf"\b{word}\b", self.texts[file]) for file in files)


def path_faults(tree, document):
    for code in CODE.findall(document):
        if PATH.fullmatch(code) and "NAME" not in code and not tree.has(code):
            yield f"there is no {code}"


def name_faults(tree, text, files=()):
    for code in CODE.findall(text):
        if NAME.fullmatch(code) and not PATH.fullmatch(code):
            for word in re.findall(r"\w+", code):
                if not tree.has_word(word, files):
                    yield f"{code} is not in {', '.join(files) or 'the code'}"


def faults(tree, document):
    document = BLOCK.sub("", document)
    yield from path_faults(tree, document)
    yield from name_faults(tree, document)
    for step in STEP.finditer(document):
        files = [file for file in CODE.findall(step[1]) if file in tree.texts]
        if files:
            yield from name_faults(tree, step[2], files)


def tree_at(root):
    texts = {}
    for folder, subfolders, files in os.walk(root):
        subfolders[:] = [name for name in subfolders if name not in {"build", "out"} and not name.startswith(".")]
        for path in (pathlib.Path(folder, name) for name in files if name != ".git"):
            texts[path.relative_to(root).as_posix()] = path.read_text(encoding="utf-8", errors="ignore")
    return Tree(texts)


class TheDocuments(unittest.TestCase):
    def test_name_what_exists(self):
        tree = tree_at(ROOT)
        for name in DOCUMENTS:
            with self.subTest(name=name):
                self.assertEqual([], list(faults(tree, tree.texts[name])))


class TheChecker(unittest.TestCase):
    tree = Tree({"a/b.h": "void run();", "a/c.cpp": "void stop();", "a/d.md": "lost"})

    def test_finds_what_does_not_exist(self):
        for document in ["See `a/x.h`.", "See `x.h`.", "Call `gone()` or `gone`.", "Call `lost`.", "Call `a::gone`.",
                         "1. `a/b.h`: calls `stop`.\n", "1. `a/b.h`: runs\n   and calls `stop`.\n2. `a/c.cpp`: ends.\n"]:
            with self.subTest(document=document):
                self.assertTrue(list(faults(self.tree, document)))

    def test_accepts_what_exists(self):
        for document in ["See `a/b.h`, `b.h`, `a/` and `a/NAME.h`.", "Call `run`.", "```\n`gone`\n```\n",
                         "1. `a/b.h`: calls `run`.\n", "1. `a/b.h`, `a/c.cpp`: call `stop`.\n",
                         "1. `a/b.h`: calls `run`.\n\nThen `stop`."]:
            with self.subTest(document=document):
                self.assertEqual([], list(faults(self.tree, document)))


if __name__ == "__main__":
    unittest.main()
