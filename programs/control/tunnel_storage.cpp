#include "programs/control/tunnel_storage.h"

#include <sys/stat.h>

#include <fstream>
#include <iterator>
#include <system_error>

namespace quillmar::control {
namespace {

namespace fs = std::filesystem;

std::optional<std::string> read(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  return in ? std::optional(std::string(std::istreambuf_iterator<char>(in), {})) : std::nullopt;
}

// Atomic: a reader sees the old file or the new one.
void write(const fs::path& file, const std::string& text) {
  const fs::path draft = file.string() + ".new";
  {
    std::ofstream out(draft, std::ios::binary | std::ios::trunc);
    ::chmod(draft.c_str(), S_IRUSR | S_IWUSR);
    out << text;
    out.flush();
    if (!out) {
      return;
    }
  }
  std::error_code error;
  fs::rename(draft, file, error);
}

}  // namespace

SimulatedTunnel::Storage tunnelStorageIn(const fs::path& dataDirectory) {
  const fs::path file = dataDirectory / "simulated-tunnel.txt";
  return {.read = [file] { return read(file); },
          .write = [file](const std::string& text) { write(file, text); }};
}

}  // namespace quillmar::control
