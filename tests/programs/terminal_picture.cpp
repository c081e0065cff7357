#include "tests/programs/terminal_picture.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace quillmar::agent {
namespace {

constexpr int cellWidth = 4;
constexpr int cellHeight = 2 * cellWidth;
constexpr std::uint8_t black = 0x00;
constexpr std::uint8_t white = 0xFF;
constexpr std::uint8_t grey = 0x80;

struct Cell {
  std::uint8_t upper;
  std::uint8_t lower;
};

// Interprets a terminal's output as rows of cells.
class Emulator {
 public:
  explicit Emulator(bool isDark) : ownInk_(isDark ? white : black), ownPaper_(isDark ? black : white) {
    reset();
  }

  void read(std::string_view output) {
    while (!output.empty()) {
      output.remove_prefix(output.front() == '\x1b' ? takeColour(output) : takeCharacter(output));
    }
  }

  GreyCanvas canvas() const {
    std::size_t columns = 0;
    for (const auto& row : rows_) {
      columns = std::max(columns, row.size());
    }
    GreyCanvas picture(static_cast<int>(columns) * cellWidth, static_cast<int>(rows_.size()) * cellHeight,
                       ownPaper_);
    for (int y = 0; y < picture.height; ++y) {
      const auto& row = rows_[static_cast<std::size_t>(y / cellHeight)];
      for (int x = 0; x < static_cast<int>(row.size()) * cellWidth; ++x) {
        const Cell& cell = row[static_cast<std::size_t>(x / cellWidth)];
        picture.at(x, y) = y % cellHeight < cellHeight / 2 ? cell.upper : cell.lower;
      }
    }
    return picture;
  }

 private:
  void reset() {
    ink_ = ownInk_;
    paper_ = ownPaper_;
  }

  std::size_t takeColour(std::string_view output) {
    const auto end = output.find('m');
    std::string number;
    for (const char c : output.substr(2, end - 1)) {
      if (c >= '0' && c <= '9') {
        number += c;
      } else {
        apply(number);
        number.clear();
      }
    }
    return end + 1;
  }

  void apply(const std::string& number) {
    static const std::map<std::string, std::uint8_t> inks{{"30", black}, {"97", white}};
    static const std::map<std::string, std::uint8_t> papers{{"40", black}, {"107", white}};
    if (const auto ink = inks.find(number); ink != inks.end()) {
      ink_ = ink->second;
    } else if (const auto paper = papers.find(number); paper != papers.end()) {
      paper_ = paper->second;
    } else {
      reset();
    }
  }

  std::size_t takeCharacter(std::string_view output) {
    static const std::map<std::string_view, std::pair<bool, bool>> blocks{
        {" ", {false, false}}, {"▀", {true, false}}, {"▄", {false, true}}, {"█", {true, true}}};
    if (output.front() == '\n' || output.front() == '\r') {
      if (output.front() == '\n') {
        rows_.emplace_back();
      }
      return 1;
    }
    const std::size_t length = static_cast<unsigned char>(output.front()) < 0x80 ? 1 : 3;
    const auto block = blocks.find(output.substr(0, length));
    rows_.back().push_back(block == blocks.end() ? Cell{grey, grey}
                                                 : Cell{block->second.first ? ink_ : paper_,
                                                        block->second.second ? ink_ : paper_});
    return length;
  }

  const std::uint8_t ownInk_;
  const std::uint8_t ownPaper_;
  std::uint8_t ink_ = white;
  std::uint8_t paper_ = black;
  std::vector<std::vector<Cell>> rows_{1};
};

}  // namespace

GreyCanvas pictureOf(std::string_view output, bool isDarkTerminal) {
  Emulator emulator(isDarkTerminal);
  emulator.read(output);
  return emulator.canvas();
}

}  // namespace quillmar::agent
