#include "programs/agent/qr_drawing.h"

#include <array>
#include <cstddef>
#include <limits>
#include <string_view>
#include <utility>

namespace quillmar::agent {
namespace {

using Lines = std::vector<std::string>;

constexpr std::string_view blackOnWhite = "\x1b[30;107m";
constexpr std::string_view white = "\x1b[107m";
constexpr std::string_view black = "\x1b[40m";
constexpr std::string_view ordinary = "\x1b[0m";

// The block character by whether its upper and its lower half are filled.
constexpr std::array<std::array<std::string_view, 2>, 2> halves{{{" ", "▄"}, {"▀", "█"}}};

// The code with its quiet zone; everything outside is light.
class Sheet {
 public:
  Sheet(const QRModules& modules, std::size_t margin) : modules_(modules), margin_(margin) {}

  std::size_t side() const { return modules_.side + 2 * margin_; }
  bool isDark(std::size_t row, std::size_t column) const {
    const bool isInside = row >= margin_ && column >= margin_ && row < margin_ + modules_.side &&
                          column < margin_ + modules_.side;
    return isInside && modules_.isDark(row - margin_, column - margin_);
  }

 private:
  const QRModules& modules_;
  const std::size_t margin_;
};

std::string halfBlockLine(const Sheet& sheet, std::size_t row, bool hasColour) {
  std::string line(hasColour ? blackOnWhite : "");
  for (std::size_t column = 0; column < sheet.side(); ++column) {
    // Ink is dark if the sheet can be made white, and light on a terminal that is assumed to be dark.
    const bool upper = sheet.isDark(row, column) == hasColour;
    const bool lower = sheet.isDark(row + 1, column) == hasColour;
    line += halves[upper ? 1 : 0][lower ? 1 : 0];
  }
  return line += hasColour ? ordinary : "";
}

std::string spaceLine(const Sheet& sheet, std::size_t row, std::size_t width) {
  std::string line;
  for (std::size_t column = 0; column < sheet.side(); ++column) {
    line += sheet.isDark(row, column) ? black : white;
    line.append(width, ' ');
  }
  return line += ordinary;
}

Lines linesOf(const Sheet& sheet, const Terminal& terminal) {
  Lines lines;
  if (terminal.hasUTF8) {
    for (std::size_t row = 0; row < sheet.side(); row += 2) {
      lines.push_back(halfBlockLine(sheet, row, terminal.hasColour));
    }
    return lines;
  }
  const bool hasRoom = 2 * sheet.side() <= static_cast<std::size_t>(terminal.columns);
  for (std::size_t row = 0; row < sheet.side(); ++row) {
    lines.push_back(spaceLine(sheet, row, hasRoom ? 2 : 1));
  }
  return lines;
}

// The ways to draw a code, the most robust first. A narrower margin than the standard's, or less error
// correction, still scans better than a code that is cut off.
struct Kind {
  QRCorrection correction;
  std::size_t margin;
};
constexpr std::array kinds{Kind{QRCorrection::medium, 4}, Kind{QRCorrection::medium, 2},
                           Kind{QRCorrection::low, 2}, Kind{QRCorrection::low, 1}};

std::optional<Lines> draw(const QREncoder& encoder, std::string_view text, const Kind& kind,
                          const Terminal& terminal) {
  const auto modules = encoder.encode(text, kind.correction);
  if (!modules || modules->side + 2 * kind.margin > static_cast<std::size_t>(terminal.columns)) {
    return std::nullopt;
  }
  Lines lines = linesOf(Sheet(*modules, kind.margin), terminal);
  return lines.size() <= static_cast<std::size_t>(terminal.rows) ? std::optional(std::move(lines))
                                                                 : std::nullopt;
}

}  // namespace

std::optional<Lines> drawQRCode(const QREncoder& encoder, std::string_view text, const Terminal& terminal) {
  std::optional<Lines> lines;
  if (terminal.hasUTF8 || terminal.hasColour) {
    for (auto kind = kinds.begin(); kind != kinds.end() && !lines; ++kind) {
      lines = draw(encoder, text, *kind, terminal);
    }
  }
  return lines;
}

std::optional<std::size_t> rowsForQRCode(const QREncoder& encoder, std::string_view text, Terminal terminal) {
  terminal.rows = std::numeric_limits<int>::max();
  if (!drawQRCode(encoder, text, terminal)) {
    return std::nullopt;
  }
  return draw(encoder, text, kinds.back(), terminal)->size();
}

}  // namespace quillmar::agent
