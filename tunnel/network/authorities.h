#pragma once

#include <openssl/x509_vfy.h>

#include <filesystem>

namespace quillmar::tunnel {

// The folder of the system's certificate authorities, or the one that SSL_CERT_DIR names.
std::filesystem::path authoritiesDirectory();

// Has a store trust the authorities in a folder, whose files are named by their hashes. The files are read
// now: who verifies later may have lost the right to open any. Each is parsed when somebody is signed by it,
// which hardly any ever is.
bool trustAuthorities(X509_STORE* store, const std::filesystem::path& directory);

}  // namespace quillmar::tunnel
