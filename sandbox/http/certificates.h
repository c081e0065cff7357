#pragma once

#include <filesystem>

#include "sandbox/outcome.h"

namespace quillmar::sandbox {

// PEM files of a private certificate authority and of its certificate for localhost, 127.0.0.1 and ::1.
struct Certificates {
  std::filesystem::path authority;
  std::filesystem::path certificate;
  std::filesystem::path key;
};

// Uses the directory's files. Creates new ones if they are missing or expire soon. The authority's key is not
// kept, so nobody can sign another certificate that its users would trust.
[[nodiscard]] Outcome<Certificates> certificatesIn(const std::filesystem::path& directory);

}  // namespace quillmar::sandbox
