#pragma once

#include <string>

namespace quillmar {

// Overwrites the whole buffer, then empties the text. The optimizer removes a plain overwrite of memory that
// is not read again.
inline void wipe(std::string& text) {
  text.resize(text.capacity());
  for (volatile char& byte : text) {
    byte = 0;
  }
  text.clear();
}

}  // namespace quillmar
