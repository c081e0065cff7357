#!/usr/bin/env python3
"""Checks who includes whom: arrows point down only, and the system itself touches no platform library.

  architecture_test.py ROOT     checks the tree at ROOT, and this checker on trees made up for it
"""

import pathlib
import re
import sys
import tempfile
import unittest

ROOT = pathlib.Path(sys.argv.pop() if len(sys.argv) > 1 else pathlib.Path(__file__).parents[2])

# The folders that a folder may include besides itself, the lowest first: a row names only rows above it. A
# subfolder without a row belongs to its parent's.
BOTTOM = {"foundation", "platform"}
CLIENT = BOTTOM | {"client/records", "client"}
SESSION = CLIENT | {"presentation", "app/session"}
CORE = SESSION | {"identity", "child", "family", "console", "app"}
# The folders with one system's adapters, such as platform/linux.
SYSTEMS = {f"platform/{folder.name}" for folder in (ROOT / "platform").iterdir() if folder.is_dir()} - {
    "platform/common", "platform/simulated"}
ADAPTERS = SYSTEMS | {"platform/common", "platform/simulated"}
MAY_INCLUDE = {
    "command_line": set(),
    "foundation": set(),
    "platform": {"foundation"},
    "client/records": {"foundation"},
    "client": BOTTOM | {"client/records"},
    "presentation": CLIENT,
    "app/session": CLIENT,
    "identity": SESSION,
    "child": SESSION,
    "family": SESSION | {"identity"},
    "console": SESSION | {"identity", "family"},
    "app": CORE,
    "platform/common": BOTTOM,
    "platform/simulated": BOTTOM,
    **{system: BOTTOM | {"platform/common"} for system in sorted(SYSTEMS)},
    "ui": CORE | ADAPTERS,
    "programs": CORE | ADAPTERS | {"command_line", "ui"},
    "tunnel/dns": set(),
    "testing": CORE | {"platform/common", "platform/simulated"},
    "testing/ui": CORE | {"testing", "ui"},
    "testing/machine": {"tunnel/dns"},
    "tools": CORE | ADAPTERS | {"command_line", "ui", "testing", "testing/ui", "testing/machine"},
    "tunnel/resolver": {"tunnel/dns"},
    "tunnel/network": {"tunnel/resolver", "tunnel/dns", "foundation"},
    "tunnel/worker": {"tunnel/network", "tunnel/resolver", "tunnel/dns", "foundation"},
    "tunnel/link": set(),
    "tunnel/service": {"tunnel/worker", "tunnel/link", "tunnel/network", "tunnel/resolver", "tunnel/dns", "foundation"},
    "tunnel": {"tunnel/service", "tunnel/worker", "tunnel/link", "tunnel/network", "tunnel/resolver", "tunnel/dns",
               "command_line", "foundation"},
    "sandbox": {"command_line"},
    "tools/completions": {"command_line", "programs", "tunnel"},
}

# Folders without platform code.
PLATFORM_FREE = CORE | {"tunnel/dns", "tunnel/resolver"}

# External headers that the core may include: the standard library, and in foundation the libraries that it
# wraps.
LIBRARIES = {"foundation": re.compile(r"simdjson\.h|unicode/\w+\.h")}
# Headers that include the JSON parser. Headers must not include them; a source that decodes does.
PARSER = {"foundation/json_decode.h", "simdjson.h"}
STANDARD_HEADER = re.compile(r"[a-z_]+")
PLATFORM_HEADERS = {"thread", "filesystem", "fstream", "iostream", "cstdio", "csignal", "ctime"}
PLATFORM_CALLS = re.compile(r"\b(?:getenv|system_clock::now|steady_clock::now|sleep_for|sleep_until)\b")

INCLUDE = re.compile(r'^\s*#\s*include\s*(?:"([^"]+)"|<([^>]+)>)')
SOURCES = {".h", ".cpp"}


def folder_of(path, known):
    """The known folder that a path lies in: the longest one."""
    parents = [parent.as_posix() for parent in pathlib.PurePosixPath(path).parents]
    return next((parent for parent in parents if parent in known), None)


def include_faults(folder, header):
    target = folder_of(header, MAY_INCLUDE.keys() | {"tests"})
    if target is None:
        yield f'"{header}" is in no folder of the tree'
    elif target != folder and target not in MAY_INCLUDE[folder]:
        yield f"{folder} may not include {target}"


def library_faults(folder, header):
    wrapped = folder in LIBRARIES and LIBRARIES[folder].fullmatch(header)
    standard = STANDARD_HEADER.fullmatch(header) and header not in PLATFORM_HEADERS
    if folder in PLATFORM_FREE and not wrapped and not standard:
        yield f"{folder} may not include <{header}>"


def parser_faults(name, header):
    if name.endswith(".h") and header in PARSER and name not in PARSER:
        yield f"a header may not include {header}"


def line_faults(name, folder, line):
    include = INCLUDE.match(line)
    if include:
        yield from parser_faults(name, include[1] or include[2])
    if include and include[1]:
        yield from include_faults(folder, include[1])
    elif include:
        yield from library_faults(folder, include[2])
    elif folder in PLATFORM_FREE and (call := PLATFORM_CALLS.search(line.split("//")[0])):
        yield f"{folder} may not call {call[0]}"


def sources(root):
    top = {folder.split("/")[0] for folder in MAY_INCLUDE}
    return (path for name in sorted(top) for path in sorted((root / name).rglob("*")) if path.suffix in SOURCES)


def faults(root):
    for path in sources(root):
        name = path.relative_to(root).as_posix()
        folder = folder_of(name, MAY_INCLUDE)
        for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), start=1):
            for fault in line_faults(name, folder, line):
                yield f"{name}:{number}: {fault}"


class TheTree(unittest.TestCase):
    def test_keeps_the_arrows(self):
        self.assertEqual([], list(faults(ROOT)))

    def test_is_in_layers(self):
        above = set(MAY_INCLUDE)
        for folder, includes in MAY_INCLUDE.items():
            above.discard(folder)
            self.assertFalse(includes & above, folder)

    def test_is_looked_at_in_every_folder_that_has_sources(self):
        seen = {folder_of(path.relative_to(ROOT).as_posix(), MAY_INCLUDE) for path in sources(ROOT)}
        here = {folder for folder in MAY_INCLUDE if any((ROOT / folder).glob("*.h"))}
        self.assertIn("foundation", here)
        self.assertLessEqual(here, seen)


class TheChecker(unittest.TestCase):
    def faults_of(self, name, line):
        with tempfile.TemporaryDirectory() as directory:
            root = pathlib.Path(directory)
            path = root / name
            path.parent.mkdir(parents=True)
            path.write_text(f"#pragma once\n\n{line}\n", encoding="utf-8")
            return list(faults(root))

    def test_finds_an_arrow_that_points_up_or_out(self):
        for name, line in [
            ("foundation/a.h", '#include "platform/log.h"'),
            ("platform/a.h", '#include "client/b.h"'),
            ("platform/a.h", '#include "platform/linux/b.h"'),
            ("client/a.cpp", '#include "presentation/b.h"'),
            ("client/a.cpp", '#include "identity/b.h"'),
            ("client/records/a.h", '#include "client/b.h"'),
            ("client/records/a.h", '#include "platform/b.h"'),
            ("presentation/a.h", '#include "app/b.h"'),
            ("app/a.h", '#include "ui/b.h"'),
            ("child/a.h", '#include "platform/simulated/b.h"'),
            ("console/deep/a.cpp", '#include "sandbox/b.h"'),
            ("family/a.h", '#include "testing/b.h"'),
            ("platform/linux/a.h", '#include "platform/simulated/b.h"'),
            ("platform/linux/a.h", '#include "client/b.h"'),
            ("ui/a.h", '#include "sandbox/b.h"'),
            ("ui/bridge/a.h", '#include "testing/b.h"'),
            ("ui/a.h", '#include "programs/b.h"'),
            ("programs/a/main.cpp", '#include "sandbox/b.h"'),
            ("programs/a/main.cpp", '#include "tests/client/b.h"'),
            ("programs/a/main.cpp", '#include "testing/b.h"'),
            ("programs/a/main.cpp", '#include "tools/a/b.h"'),
            ("app/session/a.h", '#include "app/b.h"'),
            ("app/session/a.h", '#include "presentation/b.h"'),
            ("identity/a.h", '#include "family/b.h"'),
            ("identity/a.h", '#include "app/b.h"'),
            ("child/a.h", '#include "identity/b.h"'),
            ("family/a.h", '#include "console/b.h"'),
            ("platform/common/a.h", '#include "platform/linux/b.h"'),
            ("testing/a.h", '#include "tests/client/b.h"'),
            ("testing/a.h", '#include "ui/b.h"'),
            ("testing/a.h", '#include "platform/linux/b.h"'),
            ("testing/machine/a.cpp", '#include "tunnel/service/b.h"'),
            ("tools/a/main.cpp", '#include "programs/b.h"'),
            ("sandbox/a.h", '#include "foundation/b.h"'),
            ("command_line/a.h", '#include "foundation/b.h"'),
            ("app/a.h", '#include "command_line/b.h"'),
            ("tunnel/dns/a.h", '#include "foundation/b.h"'),
            ("tunnel/resolver/a.h", '#include "tunnel/network/b.h"'),
            ("tunnel/network/a.h", '#include "tunnel/b.h"'),
            ("tunnel/a.h", '#include "platform/b.h"'),
            ("tunnel/a.h", '#include "sandbox/b.h"'),
            ("programs/a/main.cpp", '#include "tunnel/b.h"'),
            ("platform/linux/a.h", '#include "tunnel/dns/b.h"'),
            ("sandbox/store/a.h", '#include "client/records/b.h"'),
            ("app/a.h", '#include "b.h"'),
            ("app/a.h", '#include "../ui/b.h"'),
            ("app/a.h", '  #  include  "ui/b.h"  // why not'),
        ]:
            with self.subTest(name=name, line=line):
                found = self.faults_of(name, line)
                self.assertEqual(1, len(found), found)
                self.assertTrue(found[0].startswith(f"{name}:3: "), found)

    def assert_each_has_one_fault(self, cases):
        for name, line in cases:
            with self.subTest(name=name, line=line):
                self.assertEqual(1, len(self.faults_of(name, line)))

    def test_finds_a_platform_in_the_core(self):
        self.assert_each_has_one_fault([
            ("child/a.cpp", "#include <thread>"),
            ("client/a.cpp", "#include <filesystem>"),
            ("app/a.cpp", "#include <fstream>"),
            ("console/a.cpp", "#include <QString>"),
            ("console/a.cpp", "#include <QtCore/QString>"),
            ("client/a.cpp", "#include <curl/curl.h>"),
            ("identity/a.cpp", "#include <sdbus-c++/sdbus-c++.h>"),
            ("family/a.cpp", "#include <boost/asio.hpp>"),
            ("platform/a.cpp", "#include <unistd.h>"),
            ("platform/a.cpp", "#include <simdjson.h>"),
            ("presentation/a.cpp", "#include <unicode/uchar.h>"),
            ("foundation/a.cpp", "#include <sqlite3.h>"),
            ("app/a.cpp", '  const char* home = std::getenv("HOME");'),
            ("child/a.cpp", "  const auto now = std::chrono::system_clock::now();"),
            ("child/a.cpp", "  std::this_thread::sleep_for(time);"),
            ("tunnel/dns/a.cpp", "#include <arpa/inet.h>"),
            ("tunnel/resolver/a.cpp", "#include <thread>"),
            ("tunnel/resolver/a.cpp", "  const auto now = std::chrono::steady_clock::now();"),
        ])

    def test_finds_a_header_that_brings_the_parser(self):
        self.assert_each_has_one_fault([
            ("client/a.h", '#include "foundation/json_decode.h"'),
            ("console/deep/a.h", '#include "foundation/json_decode.h"'),
            ("testing/a.h", '#include "foundation/json_decode.h"'),
            ("foundation/a.h", "#include <simdjson.h>"),
        ])

    def test_leaves_the_arrows_that_point_down(self):
        for name, line in [
            ("foundation/a.cpp", '#include "foundation/b.h"'),
            ("foundation/a.cpp", "#include <simdjson.h>"),
            ("foundation/json_decode.h", "#include <simdjson.h>"),
            ("client/records/a.cpp", '#include "foundation/json_decode.h"'),
            ("foundation/a.cpp", "#include <unicode/uchar.h>"),
            ("platform/a.h", '#include "foundation/b.h"'),
            ("client/a.h", '#include "client/records/b.h"'),
            ("client/records/a.h", "#include <string_view>"),
            ("client/a.cpp", "#include <mutex>"),
            ("presentation/a.h", '#include "client/records/b.h"'),
            ("app/a.h", '#include "child/b.h"'),
            ("family/a.h", '#include "identity/b.h"'),
            ("console/a.h", '#include "app/session/b.h"'),
            ("tools/a/main.cpp", '#include "testing/ui/b.h"'),
            ("family/deep/a.h", '#include "family/b.h"'),
            ("console/a.h", "// getenv is not for us"),
            ("platform/linux/a.cpp", "#include <thread>"),
            ("platform/linux/a.cpp", '  std::getenv("HOME");'),
            ("platform/simulated/a.h", '#include "platform/tunnel.h"'),
            ("ui/a.h", "#include <QString>"),
            ("ui/a.h", '#include "platform/linux/b.h"'),
            ("programs/a/main.cpp", '#include "ui/window.h"'),
            ("sandbox/store/a.cpp", '#include "sandbox/b.h"'),
            ("sandbox/a.cpp", "#include <filesystem>"),
            ("sandbox/a.cpp", '#include "command_line/b.h"'),
            ("tunnel/a.h", '#include "foundation/url.h"'),
            ("tunnel/resolver/a.h", '#include "tunnel/dns/b.h"'),
            ("tunnel/network/a.cpp", "#include <openssl/ssl.h>"),
            ("bench/a.cpp", '#include "testing/b.h"'),
            ("app/a.txt", '#include "ui/b.h"'),
        ]:
            with self.subTest(name=name, line=line):
                self.assertEqual([], self.faults_of(name, line))


if __name__ == "__main__":
    unittest.main()
