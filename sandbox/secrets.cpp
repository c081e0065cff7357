#include "sandbox/secrets.h"

#include <sodium.h>

#include <array>

namespace quillmar::sandbox {
namespace {

// Argon2id with 7 MiB and five passes, the recommended minimum for a service; about 10 ms a password.
constexpr unsigned long long passes = 5;
constexpr std::size_t memory = std::size_t{7} * 1024 * 1024;

bool ready() {
  static const bool initialised = sodium_init() >= 0;
  return initialised;
}

template <std::size_t size>
std::string hex(const std::array<unsigned char, size>& bytes) {
  std::array<char, 2 * size + 1> text{};
  sodium_bin2hex(text.data(), text.size(), bytes.data(), bytes.size());
  return text.data();
}

template <std::size_t size>
std::array<unsigned char, size> randomBytes() {
  std::array<unsigned char, size> bytes{};
  if (ready()) {
    randombytes_buf(bytes.data(), bytes.size());
  }
  return bytes;
}

}  // namespace

std::string newId() {
  auto bytes = randomBytes<16>();
  bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40);
  bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80);
  auto text = hex(bytes);
  for (const std::size_t position : {20U, 16U, 12U, 8U}) {
    text.insert(position, 1, '-');
  }
  return text;
}

std::string newToken() { return hex(randomBytes<32>()); }

std::string newCode(std::size_t length) {
  static constexpr std::string_view alphabet = "ABCDEFGHJKMNPQRSTUVWXYZ23456789";
  std::string code;
  while (ready() && code.size() < length) {
    code += alphabet[randombytes_uniform(alphabet.size())];
  }
  return code;
}

std::string fingerprint(std::string_view token) {
  std::array<unsigned char, crypto_hash_sha256_BYTES> digest{};
  crypto_hash_sha256(digest.data(), reinterpret_cast<const unsigned char*>(token.data()), token.size());
  return hex(digest);
}

std::string hashPassword(const std::string& password) {
  std::array<char, crypto_pwhash_STRBYTES> hash{};
  if (!ready()) {
    return {};
  }
  const int code = crypto_pwhash_str_alg(hash.data(), password.data(), password.size(), passes, memory,
                                         crypto_pwhash_ALG_ARGON2ID13);
  return code == 0 ? hash.data() : std::string{};
}

bool passwordFits(const std::string& password, const std::string& hash) {
  return ready() && crypto_pwhash_str_verify(hash.c_str(), password.data(), password.size()) == 0;
}

}  // namespace quillmar::sandbox
