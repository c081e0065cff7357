#pragma once

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <chrono>
#include <memory>
#include <string>

#include "tests/platform/raw_server.h"

namespace quillmar {

// A certificate authority for one test.
class TestAuthority {
 public:
  explicit TestAuthority(const std::string& name = "Test Authority");

  // The authority's certificate, for clients to trust.
  std::string certificate() const;

  // The file name under which OpenSSL looks for it in a directory.
  std::string nameHash() const;

  struct Server {
    // "DNS:localhost,IP:127.0.0.1"
    std::string names = "DNS:localhost,IP:127.0.0.1";
    std::chrono::hours validFrom{-1};
    std::chrono::hours validTo{1};
  };
  // A TLS server's configuration with a certificate of this authority.
  TlsContext contextFor(const Server& server) const;
  TlsContext context() const { return contextFor(Server()); }

 private:
  using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
  using Certificate = std::unique_ptr<X509, decltype(&X509_free)>;

  static Certificate make(const std::string& name, EVP_PKEY* key, const Server& validity);

  Key key_;
  Certificate certificate_;
};

}  // namespace quillmar
