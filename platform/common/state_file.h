#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quillmar {

// A small file of rows, "name=value", for what a window remembers of itself and can do without. Each reading
// and each writing uses the file anew, so several owners of rows can share it in one process.
class StateFile {
 public:
  using Row = std::pair<std::string, std::string>;

  // Read no further: no one has so many rows.
  static constexpr std::size_t longest = 16384;

  explicit StateFile(std::filesystem::path file) : file_(std::move(file)) {}

  // nullopt if there is no such row, or no file that is ours to read. A row that is no row is skipped.
  std::optional<std::string> value(std::string_view name) const;
  // Replaces the rows of these names and keeps all others. The file is for this user only, and is written
  // completely or not at all. Returns false if it can't be written, or if a row is none.
  bool write(const std::vector<Row>& rows) const;

 private:
  std::vector<Row> rows() const;

  std::filesystem::path file_;
};

}  // namespace quillmar
