#pragma once

#include <openssl/x509_vfy.h>

#include <filesystem>

namespace quillmar::tunnel {

// The folder of the system's certificate authorities, or the one that SSL_CERT_DIR names.
std::filesystem::path authoritiesDirectory();

// Makes the store trust the authorities in a folder, whose files are named by their hashes. The files are
// read at once, because the process may later lose the right to open them. A certificate is parsed only when
// it is needed, because most never are.
bool trustAuthorities(X509_STORE* store, const std::filesystem::path& directory);

}  // namespace quillmar::tunnel
