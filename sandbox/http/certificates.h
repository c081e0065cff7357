#pragma once

#include <filesystem>
#include <string>

#include "sandbox/outcome.h"

namespace quillmar::sandbox {

// PEM files of a private certificate authority and of its certificate for localhost, 127.0.0.1, ::1 and one
// more address.
struct Certificates {
  std::filesystem::path authority;
  std::filesystem::path certificate;
  std::filesystem::path key;
};

// Uses the directory's files. Creates new ones if they are missing, expire soon or are for another address.
// The authority's key is not kept, so nobody can sign another certificate that its users would trust.
[[nodiscard]] Outcome<Certificates> certificatesIn(const std::filesystem::path& directory,
                                                   const std::string& address = "127.0.0.1");

}  // namespace quillmar::sandbox
