#include "platform/common/authority_file.h"

#include <openssl/pem.h>
#include <openssl/x509.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>

namespace quillmar {
namespace {

using File = std::unique_ptr<std::FILE, decltype(&std::fclose)>;

struct FreeEntries {
  void operator()(STACK_OF(X509_INFO) * entries) const { sk_X509_INFO_pop_free(entries, X509_INFO_free); }
};
using Entries = std::unique_ptr<STACK_OF(X509_INFO), FreeEntries>;

// A folder can be opened too; only a read tells.
bool isReadable(std::FILE* file) {
  const bool isRead = std::fgetc(file) != EOF || std::ferror(file) == 0;
  const int error = errno;
  std::rewind(file);
  errno = error;
  return isRead;
}

// Read as the TLS library will read it: one damaged entry spoils the file.
bool holdsCertificate(std::FILE* file) {
  const Entries entries(PEM_X509_INFO_read(file, nullptr, nullptr, nullptr));
  for (int i = 0; i < sk_X509_INFO_num(entries.get()); ++i) {
    if (sk_X509_INFO_value(entries.get(), i)->x509 != nullptr) {
      return true;
    }
  }
  return false;
}

}  // namespace

std::optional<std::string> problemWithAuthorities(const std::filesystem::path& path) {
  if (path.empty()) {
    return std::nullopt;
  }
  const File file(std::fopen(path.c_str(), "re"), &std::fclose);
  if (!file || !isReadable(file.get())) {
    return "The certificate file " + path.string() +
           " can't be read: " + std::generic_category().message(errno) + '.';
  }
  if (!holdsCertificate(file.get())) {
    return "The certificate file " + path.string() + " holds no certificate in PEM form.";
  }
  return std::nullopt;
}

}  // namespace quillmar
