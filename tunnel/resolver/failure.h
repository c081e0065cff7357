#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quillmar::tunnel {

// Why a question got no answer.
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
  std::string detail{};  // from this machine, never the endpoint's own words

  friend bool operator==(const Failure&, const Failure&) = default;
};

// What it means, as a sentence for a log and for whoever asked.
std::string sentence(const Failure& failure);
// By its number in RFC 8914.
std::uint16_t extendedErrorCode(Cause cause);

}  // namespace quillmar::tunnel
