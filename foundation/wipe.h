#pragma once

#include <string>

namespace quillmar {

// Empties a text that was secret and overwrites all of its buffer. The optimizer would leave out a plain
// overwriting of what nobody reads any more.
inline void wipe(std::string& text) {
  text.resize(text.capacity());
  for (volatile char& byte : text) {
    byte = 0;
  }
  text.clear();
}

}  // namespace quillmar
