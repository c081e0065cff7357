// The first byte of the input is the answer's age, the rest an endpoint's answer. The question is taken from
// the answer.

#include "tests/fuzz/fuzz.h"
#include "tests/fuzz/tunnel_question.h"
#include "tunnel/dns/answer.h"
#include "tunnel/dns/reply.h"

using namespace quillmar::tunnel;
using quillmar::fuzz::questionIn;
using quillmar::fuzz::require;

namespace {

void checkLives(const std::string& reply) {
  Reader reader(reply, headerSize);
  reader.plainName();
  reader.number32();
  const auto header = *readHeader(reply);
  const unsigned records = header.answers + unsigned{header.authorities} + header.additionals;
  for (unsigned index = 0; index < records; ++index) {
    const auto record = reader.record();
    require(reader.ok(), "a reply can be read");
    require(record.type == type::opt || record.ttl <= 60, "nothing lives for longer than a minute");
  }
  require(reader.atEnd(), "a reply has nothing behind its records");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  auto bytes = quillmar::fuzz::textOf(data, size);
  if (bytes.empty()) {
    return 0;
  }
  const std::chrono::seconds age(static_cast<unsigned char>(bytes.front()));
  bytes.remove_prefix(1);
  Query query{.id = 7, .question = questionIn(bytes)};
  const auto parsed = Answer::parse(std::string(bytes), query.question, age);
  const auto* answer = std::get_if<Answer>(&parsed);
  if (answer == nullptr) {
    return 0;
  }
  require(answer->lifetime() >= std::chrono::seconds(0) && answer->lifetime() <= Answer::longestLife,
          "an answer is kept for a minute at most");
  for (const auto& edns : {std::optional<Edns>(), std::optional(Edns{.payload = 512, .dnssecOk = true})}) {
    query.edns = edns;
    for (const int elapsed : {0, 5, 100}) {
      const auto reply = answer->toQuery(query, std::chrono::seconds(elapsed));
      require(readHeader(reply)->id == query.id, "a reply has the id of its question");
      checkLives(reply);
      require(fitted(reply, query, Channel::udp).size() <= 512, "a reply over UDP is short");
    }
  }
  return 0;
}
