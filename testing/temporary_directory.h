#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

namespace quillmar {

// A new directory that goes with its object, contents included.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string name = (std::filesystem::temp_directory_path() / "quillmar-test-XXXXXX").string();
    path_ = ::mkdtemp(name.data()) ? name : std::string();
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory() {
    std::error_code error;
    std::filesystem::remove_all(path_, error);
  }

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace quillmar
