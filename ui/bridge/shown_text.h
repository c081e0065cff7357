#pragma once

#include <QString>
#include <string_view>

namespace quillmar::ui {

// A text as screens draw it, whoever wrote it:
// - without the bidi controls, which reorder the text after them and beside them;
// - without combining marks beyond those that any script puts on one letter;
// - of at most `longestShownText` code units and `mostShownLines` lines. A longer text loses its middle, so
//   that a sentence about a name keeps its end, and a host its domain. No character is cut in two.
QString shownText(std::string_view utf8);

inline constexpr qsizetype longestShownText = 600;
inline constexpr qsizetype mostShownLines = 16;

// For a text that the person edits: only the bidi controls are removed.
QString editedText(std::string_view utf8);

// Unchanged, for what no screen draws: a name, a key, a file, a text to copy or encode.
inline QString exactText(std::string_view utf8) {
  return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

}  // namespace quillmar::ui
