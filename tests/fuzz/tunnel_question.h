#pragma once

#include <string_view>

#include "tunnel/dns/query.h"
#include "tunnel/dns/wire.h"

namespace quillmar::fuzz {

// The question in a message, as far as it is valid.
inline tunnel::Question questionIn(std::string_view message) {
  tunnel::Reader reader(message, tunnel::headerSize);
  tunnel::Question question;
  question.name = reader.plainName();
  question.type = reader.number16();
  question.klass = reader.number16();
  return question;
}

}  // namespace quillmar::fuzz
