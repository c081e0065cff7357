#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "tunnel/dns/wire.h"

namespace quillmar::tunnel {

struct Question {
  std::string name{};  // as it was written
  std::uint16_t type = 0;
  std::uint16_t klass = internetClass;
};

// What an OPT record says (RFC 6891).
struct Edns {
  std::uint16_t payload = 0;  // the largest answer that its sender takes over UDP
  bool dnssecOk = false;
};

// A question of a client.
struct Query {
  std::uint16_t id = 0;
  bool recursionDesired = false;
  bool authenticData = false;
  bool checkingDisabled = false;
  Question question{};
  std::optional<Edns> edns{};
};

// A message that gets an error without being asked anywhere.
struct Refusal {
  std::uint16_t id = 0;
  std::uint16_t flags = 0;  // as they came
  std::uint16_t rcode = 0;
};

// What must not be answered: an answer to it would be answered in turn, or there is nobody to answer.
struct Silence {};

std::variant<Query, Refusal, Silence> parseQuery(std::string_view message);

// The question as it goes to the endpoint. It tells nothing of its client: the id is 0 (RFC 8484), the name
// in lower case, the length rounded up (RFC 8467), the OPT record our own.
std::string writeQuestion(const Query& query);

}  // namespace quillmar::tunnel
