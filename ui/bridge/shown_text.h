#pragma once

#include <QString>
#include <string_view>

namespace quillmar::ui {

// A text as it is drawn, whoever wrote it:
// - without the marks that turn the writing direction of what follows them, in this text or in one beside it;
// - without the marks that are piled up on one letter beyond all writing;
// - of at most `longestShownText` code units and `mostShownLines` lines. A longer one loses its middle, so
// that
//   a sentence about a name keeps its end, and a host its domain. No character is cut in two.
QString shownText(std::string_view utf8);

inline constexpr qsizetype longestShownText = 600;
inline constexpr qsizetype mostShownLines = 16;

// The same for what a person goes on writing, of which nothing may be lost.
QString editedText(std::string_view utf8);

// To the letter, for what no screen draws: a name, a key, a file, what is copied or encoded.
QString exactText(std::string_view utf8);

}  // namespace quillmar::ui
