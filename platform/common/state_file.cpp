#include "platform/common/state_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>

#include "platform/common/file_descriptor.h"
#include "platform/common/private_directory.h"

namespace quillmar {
namespace {

namespace fs = std::filesystem;

// A pipe or a device would never end.
bool isOrdinaryFile(int descriptor) {
  struct stat status {};
  return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == ::geteuid();
}

std::string contentOf(const fs::path& file) {
  const FileDescriptor opened(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (!opened || !isOrdinaryFile(opened.get())) {
    return {};
  }
  std::string content(StateFile::longest, '\0');
  const auto count = ::read(opened.get(), content.data(), content.size());
  const bool isWhole = count < static_cast<ssize_t>(StateFile::longest);
  content.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
  // A row that was cut would have another value.
  content.resize(isWhole ? content.size() : content.rfind('\n') + 1);
  return content;
}

bool isControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }

bool isRow(const StateFile::Row& row) {
  const auto& [name, value] = row;
  const auto isPartOfAName = [](char c) { return (c >= 'a' && c <= 'z') || c == '.' || c == '-'; };
  return !name.empty() && std::ranges::all_of(name, isPartOfAName) && std::ranges::none_of(value, isControl);
}

bool writeAll(int descriptor, std::string_view content) {
  while (!content.empty()) {
    const auto count = ::write(descriptor, content.data(), content.size());
    if (count <= 0) {
      return false;
    }
    content.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

}  // namespace

std::vector<StateFile::Row> StateFile::rows() const {
  std::vector<Row> found;
  const std::string content = contentOf(file_);
  std::string_view rest = content;
  while (!rest.empty()) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
    const auto sign = line.find('=');
    if (sign == std::string_view::npos) {
      continue;
    }
    Row row(line.substr(0, sign), line.substr(sign + 1));
    if (isRow(row)) {
      found.push_back(std::move(row));
    }
  }
  return found;
}

std::optional<std::string> StateFile::value(std::string_view name) const {
  const auto all = rows();
  const auto found = std::ranges::find(all, name, &Row::first);
  return found == all.end() ? std::nullopt : std::optional(found->second);
}

bool StateFile::write(const std::vector<Row>& rows) const {
  if (!std::ranges::all_of(rows, isRow) || !createPrivateDirectory(file_.parent_path())) {
    return false;
  }
  auto all = this->rows();
  std::erase_if(
      all, [&](const Row& old) { return std::ranges::find(rows, old.first, &Row::first) != rows.end(); });
  all.insert(all.end(), rows.begin(), rows.end());
  std::string content;
  for (const auto& [name, value] : all) {
    content.append(name).append("=").append(value).append("\n");
  }
  // Its mode is 0600.
  std::string fresh = file_.string() + ".XXXXXX";
  const FileDescriptor opened(::mkostemp(fresh.data(), O_CLOEXEC));
  if (!opened) {
    return false;
  }
  const bool isDone = writeAll(opened.get(), content) && std::rename(fresh.c_str(), file_.c_str()) == 0;
  if (!isDone) {
    ::unlink(fresh.c_str());
  }
  return isDone;
}

}  // namespace quillmar
