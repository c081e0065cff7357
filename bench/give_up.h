#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace quillmar::bench {

[[noreturn]] inline void giveUp(const std::string& cause) {
  std::fprintf(stderr, "%s\n", cause.c_str());
  std::quick_exit(1);
}

}  // namespace quillmar::bench
