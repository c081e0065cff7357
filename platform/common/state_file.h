#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quillmar {

// A small file of rows, "name=value", for state of the window that may be lost. Each call opens the file
// anew, so several owners of rows in a process can share it.
class StateFile {
 public:
  using Row = std::pair<std::string, std::string>;

  // At most this many bytes are read.
  static constexpr std::size_t longest = 16384;

  explicit StateFile(std::filesystem::path file) : file_(std::move(file)) {}

  // nullopt if there is no such row or if the file can't be trusted. Malformed rows are skipped.
  std::optional<std::string> value(std::string_view name) const;
  // Replaces the rows of these names and keeps all others. The file is readable by this user only and is
  // replaced atomically. Returns false if it can't be written, or if a row is malformed.
  bool write(const std::vector<Row>& rows) const;

 private:
  std::vector<Row> rows() const;

  std::filesystem::path file_;
};

}  // namespace quillmar
