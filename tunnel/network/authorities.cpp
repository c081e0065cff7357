#include "tunnel/network/authorities.h"

#include <openssl/pem.h>
#include <openssl/x509.h>

#include <charconv>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <unordered_map>

namespace quillmar::tunnel {
namespace {

namespace fs = std::filesystem;

// Certificates as PEM texts, by the hash of the subject's name. Several may have the same hash.
using Texts = std::unordered_multimap<unsigned long, std::string>;

struct CertificateFree {
  void operator()(X509* certificate) const { X509_free(certificate); }
};
using Certificate = std::unique_ptr<X509, CertificateFree>;

// "0f5dc4f3.0"; what has another name is not looked up there.
std::optional<unsigned long> hashIn(const std::string& fileName) {
  constexpr std::size_t digits = 8;
  unsigned long hash = 0;
  const char* const end = fileName.data() + std::min(digits, fileName.size());
  const auto read = std::from_chars(fileName.data(), end, hash, 16);
  const bool isHash = fileName.size() > digits + 1 && read.ec == std::errc() && read.ptr == end &&
                      fileName[digits] == '.' &&
                      fileName.find_first_not_of("0123456789", digits + 1) == std::string::npos;
  return isHash ? std::optional(hash) : std::nullopt;
}

Texts readAll(const fs::path& directory) {
  Texts texts;
  std::error_code ignored;
  for (const auto& entry : fs::directory_iterator(directory, ignored)) {
    if (const auto hash = hashIn(entry.path().filename().string())) {
      std::ifstream file(entry.path(), std::ios::binary);
      texts.emplace(*hash, std::string(std::istreambuf_iterator<char>(file), {}));
    }
  }
  return texts;
}

Certificate parse(const std::string& text) {
  const std::unique_ptr<BIO, decltype(&BIO_free)> file(
      BIO_new_mem_buf(text.data(), static_cast<int>(text.size())), &BIO_free);
  return Certificate(PEM_read_bio_X509_AUX(file.get(), nullptr, nullptr, nullptr));
}

// Puts all with this name's hash into the store, and those with this name into the result.
int find(X509_LOOKUP* lookup, X509_LOOKUP_TYPE type, const X509_NAME* name, X509_OBJECT* result) {
  auto& texts = *static_cast<Texts*>(X509_LOOKUP_get_method_data(lookup));
  if (type != X509_LU_X509) {
    return 0;
  }
  const auto [begin, end] = texts.equal_range(X509_NAME_hash_ex(name, nullptr, nullptr, nullptr));
  int found = 0;
  for (auto each = begin; each != end; ++each) {
    const auto certificate = parse(each->second);
    if (!certificate || X509_STORE_add_cert(X509_LOOKUP_get_store(lookup), certificate.get()) != 1) {
      continue;
    }
    if (found == 0 && X509_NAME_cmp(X509_get_subject_name(certificate.get()), name) == 0) {
      X509_OBJECT_set1_X509(result, certificate.get());
      // The caller counts the result as its own once more; the store keeps it alive.
      X509_free(certificate.get());
      found = 1;
    }
  }
  // The store has these certificates now.
  texts.erase(begin, end);
  return found;
}

X509_LOOKUP_METHOD* method() {
  static X509_LOOKUP_METHOD* const shared = [] {
    X509_LOOKUP_METHOD* made = X509_LOOKUP_meth_new("authorities that were read before");
    X509_LOOKUP_meth_set_get_by_subject(made, find);
    X509_LOOKUP_meth_set_free(made, [](X509_LOOKUP* lookup) {
      delete static_cast<Texts*>(X509_LOOKUP_get_method_data(lookup));  // NOLINT(*-owning-memory)
    });
    return made;
  }();
  return shared;
}

}  // namespace

fs::path authoritiesDirectory() {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody changes the environment
  const char* const named = std::getenv(X509_get_default_cert_dir_env());
  return named != nullptr ? named : X509_get_default_cert_dir();
}

bool trustAuthorities(X509_STORE* store, const fs::path& directory) {
  X509_LOOKUP* const lookup = X509_STORE_add_lookup(store, method());
  return lookup != nullptr &&
         X509_LOOKUP_set_method_data(lookup, std::make_unique<Texts>(readAll(directory)).release()) == 1;
}

}  // namespace quillmar::tunnel
