#include "tunnel/network/authorities.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <fstream>
#include <memory>
#include <string>

#include "sandbox/http/certificates.h"
#include "testing/temporary_directory.h"

namespace quillmar::tunnel {
namespace {

namespace fs = std::filesystem;

template <class T, void (*free)(T*)>
struct Free {
  void operator()(T* object) const { free(object); }
};
using Certificate = std::unique_ptr<X509, Free<X509, X509_free>>;
using Store = std::unique_ptr<X509_STORE, Free<X509_STORE, X509_STORE_free>>;
using Verification = std::unique_ptr<X509_STORE_CTX, Free<X509_STORE_CTX, X509_STORE_CTX_free>>;

Certificate readCertificate(const fs::path& path) {
  const std::unique_ptr<BIO, decltype(&BIO_free)> file(BIO_new_file(path.c_str(), "r"), &BIO_free);
  return Certificate(PEM_read_bio_X509(file.get(), nullptr, nullptr, nullptr));
}

bool isTrusted(const Store& store, const Certificate& certificate) {
  const Verification verification(X509_STORE_CTX_new());
  X509_STORE_CTX_init(verification.get(), store.get(), certificate.get(), nullptr);
  return X509_verify_cert(verification.get()) == 1;
}

struct TunnelAuthorities : testing::Test {
  // The file name of an authority in a folder with hashed names.
  std::string hashed(const std::string& number) const {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "%08lx",
                  X509_NAME_hash_ex(X509_get_subject_name(readCertificate(made.authority).get()), nullptr,
                                    nullptr, nullptr));
    return std::string(text.data()) + '.' + number;
  }
  void put(const std::string& name, const fs::path& file) const { fs::copy_file(file, folder.path() / name); }

  const TemporaryDirectory certificates;
  const sandbox::Certificates made = *sandbox::certificatesIn(certificates.path());
  const Certificate certificate = readCertificate(made.certificate);
  const TemporaryDirectory folder;
  const Store store{X509_STORE_new()};
};

TEST_F(TunnelAuthorities, are_trusted_also_when_their_files_are_out_of_reach) {
  put(hashed("0"), made.authority);
  EXPECT_TRUE(trustAuthorities(store.get(), folder.path()));
  fs::remove_all(folder.path());
  EXPECT_TRUE(isTrusted(store, certificate));
  EXPECT_TRUE(isTrusted(store, certificate)) << "and again";
}

TEST_F(TunnelAuthorities, may_have_the_same_hash) {
  const TemporaryDirectory others;
  put(hashed("0"), sandbox::certificatesIn(others.path())->authority);
  std::ofstream(folder.path() / hashed("1")) << "nonsense";
  put(hashed("2"), made.authority);
  EXPECT_TRUE(trustAuthorities(store.get(), folder.path()));
  EXPECT_TRUE(isTrusted(store, certificate));
}

TEST_F(TunnelAuthorities, that_are_not_there_are_not_trusted) {
  put("authority.pem", made.authority);
  put(hashed("r0"), made.authority);
  put("0000000g.0", made.authority);
  EXPECT_TRUE(trustAuthorities(store.get(), folder.path()));
  EXPECT_FALSE(isTrusted(store, certificate));

  const Store another(X509_STORE_new());
  EXPECT_TRUE(trustAuthorities(another.get(), "/nowhere"));
  EXPECT_FALSE(isTrusted(another, certificate));
}

TEST_F(TunnelAuthorities, of_this_system_are_where_it_says) {
  ::unsetenv("SSL_CERT_DIR");
  EXPECT_EQ(authoritiesDirectory(), fs::path(X509_get_default_cert_dir()));
  EXPECT_EQ(::setenv("SSL_CERT_DIR", "/elsewhere", 1), 0);
  EXPECT_EQ(authoritiesDirectory(), fs::path("/elsewhere"));
}

}  // namespace
}  // namespace quillmar::tunnel
