#include "ui/bridge/shown_text.h"

#include <QTextBoundaryFinder>
#include <algorithm>
#include <vector>

namespace quillmar::ui {
namespace {

constexpr QChar ellipsis(0x2026);

// Bidi marks, embeddings, overrides, isolates, and the deprecated controls of mirroring, joining and digit
// shapes.
bool isDirectionMark(QChar character) {
  const char16_t code = character.unicode();
  return code == 0x061C || code == 0x200E || code == 0x200F || (code >= 0x202A && code <= 0x202E) ||
         (code >= 0x2066 && code <= 0x206F);
}

bool isLineBreak(QChar character) {
  const char16_t code = character.unicode();
  return (code >= u'\n' && code <= u'\r') || code == 0x0085 || code == 0x2028 || code == 0x2029;
}

// No script puts as many marks on one letter. More of them would cover the lines around.
constexpr int mostPiledMarks = 12;

bool isPiledMark(char32_t character) {
  constexpr char32_t firstCombining = 0x0300;
  return character >= firstCombining && (QChar::category(character) == QChar::Mark_NonSpacing ||
                                         QChar::category(character) == QChar::Mark_Enclosing);
}

QString withoutPiles(const QString& text) {
  QString flat;
  int piled = 0;
  for (qsizetype i = 0; i < text.size(); ++i) {
    const bool isPair = text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate();
    const char32_t character =
        isPair ? QChar::surrogateToUcs4(text[i], text[i + 1]) : static_cast<char32_t>(text[i].unicode());
    piled = isPiledMark(character) ? piled + 1 : 0;
    if (piled <= mostPiledMarks) {
      flat.append(text.sliced(i, isPair ? 2 : 1));
    }
    i += isPair ? 1 : 0;
  }
  return flat;
}

QString withoutMiddle(const QString& text, qsizetype from, qsizetype to) {
  return text.first(from) + ellipsis + text.sliced(to);
}

// Keeps two thirds of the lines from the start and one third from the end.
QString withFewerLines(const QString& text) {
  std::vector<qsizetype> breaks;
  for (qsizetype i = 0; i < text.size(); ++i) {
    const bool isSecondHalf = i > 0 && text[i] == u'\n' && text[i - 1] == u'\r';
    if (isLineBreak(text[i]) && !isSecondHalf) {
      breaks.push_back(i);
    }
  }
  const auto count = static_cast<qsizetype>(breaks.size());
  if (count < mostShownLines) {
    return text;
  }
  constexpr qsizetype last = mostShownLines / 3;
  constexpr qsizetype first = mostShownLines - last;
  return withoutMiddle(text, breaks[static_cast<std::size_t>(first - 1)],
                       breaks[static_cast<std::size_t>(count - last)]);
}

// Longer than any character that a keyboard writes.
constexpr qsizetype roomForACharacter = 64;

// The nearest boundary of a grapheme before, or after, the cut. A grapheme longer than the whole shown text
// belongs to no script and is cut.
qsizetype boundaryBefore(const QString& text, qsizetype cut) {
  const QString start = text.first(std::min(text.size(), cut + roomForACharacter));
  QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, start);
  finder.setPosition(cut);
  const qsizetype boundary = finder.isAtBoundary() ? cut : finder.toPreviousBoundary();
  return boundary > 0 ? boundary : cut - (text[cut].isLowSurrogate() ? 1 : 0);
}

qsizetype boundaryAfter(const QString& text, qsizetype cut) {
  const qsizetype before = std::max<qsizetype>(cut - roomForACharacter, 0);
  const QString end = text.sliced(before);
  QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, end);
  finder.setPosition(cut - before);
  const qsizetype boundary = finder.isAtBoundary() ? cut : before + finder.toNextBoundary();
  return boundary < text.size() ? boundary : cut + (text[cut].isLowSurrogate() ? 1 : 0);
}

QString shortened(const QString& text) {
  if (text.size() <= longestShownText) {
    return text;
  }
  constexpr qsizetype last = longestShownText / 3;
  constexpr qsizetype first = longestShownText - last - 1;
  return withoutMiddle(text, boundaryBefore(text, first), boundaryAfter(text, text.size() - last));
}

// Enough bytes at either end, whatever the characters are. The middle is not even decoded.
constexpr std::size_t bytesOfAnEnd = 8 * longestShownText;

std::size_t startOfCharacter(std::string_view utf8, std::size_t place) {
  constexpr unsigned continuation = 0x80;
  constexpr unsigned continuationBits = 0xC0;
  while (place > 0 && (static_cast<unsigned char>(utf8[place]) & continuationBits) == continuation) {
    --place;
  }
  return place;
}

QString withoutMarks(std::string_view utf8) {
  if (utf8.size() <= 2 * bytesOfAnEnd) {
    return editedText(utf8);
  }
  return editedText(utf8.substr(0, startOfCharacter(utf8, bytesOfAnEnd))) + ellipsis +
         editedText(utf8.substr(startOfCharacter(utf8, utf8.size() - bytesOfAnEnd)));
}

}  // namespace

QString shownText(std::string_view utf8) {
  const QString text = withoutMarks(utf8);
  const bool isPlain = std::ranges::none_of(
      text, [](QChar character) { return character.isSurrogate() || isPiledMark(character.unicode()); });
  return shortened(withFewerLines(isPlain ? text : withoutPiles(text)));
}

QString editedText(std::string_view utf8) {
  QString text = exactText(utf8);
  if (std::ranges::any_of(text, isDirectionMark)) {
    text.removeIf(isDirectionMark);
  }
  return text;
}

}  // namespace quillmar::ui
