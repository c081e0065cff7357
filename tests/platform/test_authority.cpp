#include "tests/platform/test_authority.h"

#include <openssl/bio.h>
#include <openssl/ec.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <atomic>
#include <iomanip>
#include <sstream>

namespace quillmar {
namespace {

void addExtension(X509* certificate, int id, const char* value) {
  const std::unique_ptr<X509_EXTENSION, decltype(&X509_EXTENSION_free)> extension(
      X509V3_EXT_conf_nid(nullptr, nullptr, id, value), &X509_EXTENSION_free);
  X509_add_ext(certificate, extension.get(), -1);
}

long secondsOf(std::chrono::hours time) { return static_cast<long>(std::chrono::seconds(time).count()); }

}  // namespace

TestAuthority::TestAuthority(const std::string& name)
    : key_(EVP_EC_gen("P-256"), &EVP_PKEY_free), certificate_(make(name, key_.get(), {.names = {}})) {
  addExtension(certificate_.get(), NID_basic_constraints, "critical,CA:TRUE");
  X509_set_issuer_name(certificate_.get(), X509_get_subject_name(certificate_.get()));
  X509_sign(certificate_.get(), key_.get(), EVP_sha256());
}

TestAuthority::Certificate TestAuthority::make(const std::string& name, EVP_PKEY* key,
                                               const Server& validity) {
  Certificate certificate(X509_new(), &X509_free);
  X509_set_version(certificate.get(), X509_VERSION_3);
  static std::atomic<long> serial = 1;
  ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), ++serial);
  X509_gmtime_adj(X509_getm_notBefore(certificate.get()), secondsOf(validity.validFrom));
  X509_gmtime_adj(X509_getm_notAfter(certificate.get()), secondsOf(validity.validTo));
  X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate.get()), "CN", MBSTRING_UTF8,
                             reinterpret_cast<const unsigned char*>(name.c_str()), -1, -1, 0);
  X509_set_pubkey(certificate.get(), key);
  return certificate;
}

std::string TestAuthority::certificate() const {
  const std::unique_ptr<BIO, decltype(&BIO_free_all)> memory(BIO_new(BIO_s_mem()), &BIO_free_all);
  PEM_write_bio_X509(memory.get(), certificate_.get());
  char* text = nullptr;
  const auto size = BIO_get_mem_data(memory.get(), &text);
  return {text, static_cast<std::size_t>(size)};
}

std::string TestAuthority::nameHash() const {
  std::ostringstream text;
  text << std::hex << std::setw(8) << std::setfill('0') << X509_subject_name_hash(certificate_.get());
  return text.str();
}

TlsContext TestAuthority::contextFor(const Server& server) const {
  const Key key(EVP_EC_gen("P-256"), &EVP_PKEY_free);
  const Certificate certificate = make("Test Server", key.get(), server);
  addExtension(certificate.get(), NID_subject_alt_name, server.names.c_str());
  X509_set_issuer_name(certificate.get(), X509_get_subject_name(certificate_.get()));
  X509_sign(certificate.get(), key_.get(), EVP_sha256());
  TlsContext context(SSL_CTX_new(TLS_server_method()), &SSL_CTX_free);
  SSL_CTX_use_certificate(context.get(), certificate.get());
  SSL_CTX_use_PrivateKey(context.get(), key.get());
  return context;
}

}  // namespace quillmar
