#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quillmar::tunnel {

// Why there is no answer to a question.
enum class Cause {
  noEndpoint,
  tooMany,
  late,
  unreachable,
  unknownAddress,
  untrusted,
  noHttp2,
  broken,
  askedToWait,
  refused,
  redirected,
  notDns,
  tooLong,
  malformed,
  cutShort,
  ofAnotherQuestion,
};

struct Failure {
  Cause cause{};
  std::string detail{};  // written by this machine, never by the endpoint

  friend bool operator==(const Failure&, const Failure&) = default;
};

// A sentence for the log and for the extended error.
std::string sentence(const Failure& failure);
// The info code of RFC 8914.
std::uint16_t extendedErrorCode(Cause cause);

}  // namespace quillmar::tunnel
