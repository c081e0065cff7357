// Runs the linked fuzz target on every file of a folder.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/fuzz/fuzz.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: fuzz_NAME FOLDER\n", stderr);
    return 2;
  }
  std::size_t files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
    std::ifstream file(entry.path(), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    std::printf("%s\n", entry.path().c_str());
    std::fflush(stdout);
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    ++files;
  }
  std::printf("%zu inputs\n", files);
  return files > 0 ? 0 : 1;
}
