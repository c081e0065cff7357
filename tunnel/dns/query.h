#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "tunnel/dns/wire.h"

namespace quillmar::tunnel {

struct Question {
  std::string name{};  // in the client's upper and lower case
  std::uint16_t type = 0;
  std::uint16_t klass = internetClass;
};

// The content of an OPT record (RFC 6891).
struct Edns {
  std::uint16_t payload = 0;  // the largest UDP message that the sender accepts
  bool dnssecOk = false;
};

// A client's query.
struct Query {
  std::uint16_t id = 0;
  bool recursionDesired = false;
  bool authenticData = false;
  bool checkingDisabled = false;
  Question question{};
  std::optional<Edns> edns{};
};

// A message that is answered with an error right away.
struct Refusal {
  std::uint16_t id = 0;
  std::uint16_t flags = 0;  // of the message
  std::uint16_t rcode = 0;
};

// A message that must not be answered: it has no whole header, or it is an answer itself. Two servers would
// otherwise answer each other forever.
struct Silence {};

std::variant<Query, Refusal, Silence> parseQuery(std::string_view message);

// The message for the endpoint. It shows nothing of the client: the id is 0 (RFC 8484), the name is in lower
// case, the length is padded (RFC 8467), and the OPT record is our own.
std::string writeQuestion(const Query& query);

}  // namespace quillmar::tunnel
