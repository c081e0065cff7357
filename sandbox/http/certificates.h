#pragma once

#include <filesystem>

#include "sandbox/outcome.h"

namespace quillmar::sandbox {

// PEM files of a certificate authority of its own and of a certificate for localhost, 127.0.0.1 and ::1.
struct Certificates {
  std::filesystem::path authority;
  std::filesystem::path certificate;
  std::filesystem::path key;
};

// Uses the files in the directory, or makes them anew where they are absent or about to run out. The
// authority's own key is thrown away once it has signed, so that nobody who trusts its file can be lied to
// with it.
[[nodiscard]] Outcome<Certificates> certificatesIn(const std::filesystem::path& directory);

}  // namespace quillmar::sandbox
