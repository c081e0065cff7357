#include "sandbox/http/certificates.h"

#include <fcntl.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>
#include <sys/stat.h>

#include <cstdio>
#include <memory>
#include <string>

namespace quillmar::sandbox {
namespace {

template <auto release>
struct Releaser {
  template <class T>
  void operator()(T* object) const {
    release(object);
  }
};

using Key = std::unique_ptr<EVP_PKEY, Releaser<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, Releaser<X509_free>>;
using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;
using Extension = std::unique_ptr<X509_EXTENSION, Releaser<X509_EXTENSION_free>>;

constexpr long day = 24L * 60 * 60;
constexpr long lifetime = 825 * day;
constexpr long renewal = 30 * day;

Key newKey() { return Key{EVP_EC_gen("P-256")}; }

bool extend(X509* certificate, X509* issuer, int kind, const char* value) {
  X509V3_CTX context;
  X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
  const Extension extension{X509V3_EXT_conf_nid(nullptr, &context, kind, value)};
  return extension && X509_add_ext(certificate, extension.get(), -1) == 1;
}

Certificate blank(const char* commonName, EVP_PKEY* key) {
  Certificate certificate{X509_new()};
  if (!certificate) {
    return nullptr;
  }
  X509_set_version(certificate.get(), X509_VERSION_3);
  unsigned char serial[16];
  if (RAND_bytes(serial, sizeof serial) != 1) {
    return nullptr;
  }
  serial[0] &= 0x7F;
  const std::unique_ptr<BIGNUM, Releaser<BN_free>> number{BN_bin2bn(serial, sizeof serial, nullptr)};
  BN_to_ASN1_INTEGER(number.get(), X509_get_serialNumber(certificate.get()));
  X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -day);
  X509_gmtime_adj(X509_getm_notAfter(certificate.get()), lifetime);
  auto* const name = X509_get_subject_name(certificate.get());
  X509_NAME_add_entry_by_txt(name, "O", MBSTRING_ASC,
                             reinterpret_cast<const unsigned char*>("Quillmar sandbox"), -1, -1, 0);
  X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>(commonName), -1,
                             -1, 0);
  X509_set_pubkey(certificate.get(), key);
  return certificate;
}

Certificate newAuthority(EVP_PKEY* key) {
  auto authority = blank("Quillmar sandbox authority", key);
  if (!authority) {
    return nullptr;
  }
  X509_set_issuer_name(authority.get(), X509_get_subject_name(authority.get()));
  const bool complete =
      extend(authority.get(), authority.get(), NID_basic_constraints, "critical,CA:TRUE,pathlen:0") &&
      extend(authority.get(), authority.get(), NID_key_usage, "critical,keyCertSign,cRLSign") &&
      extend(authority.get(), authority.get(), NID_subject_key_identifier, "hash") &&
      X509_sign(authority.get(), key, EVP_sha256()) > 0;
  return complete ? std::move(authority) : nullptr;
}

Certificate newCertificate(EVP_PKEY* key, X509* authority, EVP_PKEY* authorityKey,
                           const std::string& address) {
  const std::string names = "DNS:localhost,IP:127.0.0.1,IP:::1,IP:" + address;
  auto certificate = blank("localhost", key);
  if (!certificate) {
    return nullptr;
  }
  X509_set_issuer_name(certificate.get(), X509_get_subject_name(authority));
  const bool complete = extend(certificate.get(), authority, NID_basic_constraints, "critical,CA:FALSE") &&
                        extend(certificate.get(), authority, NID_key_usage, "critical,digitalSignature") &&
                        extend(certificate.get(), authority, NID_ext_key_usage, "serverAuth") &&
                        extend(certificate.get(), authority, NID_authority_key_identifier, "keyid") &&
                        extend(certificate.get(), authority, NID_subject_alt_name, names.c_str()) &&
                        X509_sign(certificate.get(), authorityKey, EVP_sha256()) > 0;
  return complete ? std::move(certificate) : nullptr;
}

// Written to a temporary file and renamed, so that readers never see a partial file.
template <class Write>
bool store(const std::filesystem::path& path, mode_t mode, Write write) {
  const auto beside = path.string() + ".new";
  std::error_code error;
  std::filesystem::remove(beside, error);
  const int descriptor = ::open(beside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
  if (descriptor < 0) {
    return false;
  }
  File file{::fdopen(descriptor, "w"), &std::fclose};
  if (!file || write(file.get()) != 1 || std::fclose(file.release()) != 0) {
    return false;
  }
  std::filesystem::rename(beside, path, error);
  return !error;
}

bool stillGood(const Certificates& files, const std::string& address) {
  const File file{std::fopen(files.certificate.c_str(), "r"), &std::fclose};
  if (!file || !std::filesystem::exists(files.authority) || !std::filesystem::exists(files.key)) {
    return false;
  }
  const Certificate certificate{PEM_read_X509(file.get(), nullptr, nullptr, nullptr)};
  if (!certificate) {
    return false;
  }
  std::time_t soon = std::time(nullptr) + renewal;
  return X509_cmp_time(X509_get0_notAfter(certificate.get()), &soon) > 0 &&
         X509_check_ip_asc(certificate.get(), address.c_str(), 0) == 1;
}

bool make(const Certificates& files, const std::string& address) {
  const auto authorityKey = newKey();
  const auto key = newKey();
  if (!authorityKey || !key) {
    return false;
  }
  const auto authority = newAuthority(authorityKey.get());
  const auto certificate =
      authority ? newCertificate(key.get(), authority.get(), authorityKey.get(), address) : nullptr;
  if (!certificate) {
    return false;
  }
  // The certificate is stored last: if it exists, the other two do.
  return store(files.authority, 0644,
               [&](std::FILE* file) { return PEM_write_X509(file, authority.get()); }) &&
         store(files.key, 0600,
               [&](std::FILE* file) {
                 return PEM_write_PrivateKey(file, key.get(), nullptr, nullptr, 0, nullptr, nullptr);
               }) &&
         store(files.certificate, 0644,
               [&](std::FILE* file) { return PEM_write_X509(file, certificate.get()); });
}

}  // namespace

Outcome<Certificates> certificatesIn(const std::filesystem::path& directory, const std::string& address) {
  const Certificates files{directory / "ca.pem", directory / "server.pem", directory / "server.key"};
  if (stillGood(files, address) || make(files, address)) {
    return files;
  }
  return Failure{"No certificate could be made in " + directory.string() + "."};
}

}  // namespace quillmar::sandbox
