// The input is a client's query. Builds every reply that needs no upstream.

#include "tests/fuzz/fuzz.h"
#include "tunnel/dns/reply.h"
#include "tunnel/resolver/local_names.h"

using namespace quillmar::tunnel;
using quillmar::fuzz::require;

namespace {

void checkReply(const Query& query, const std::string& reply) {
  const auto header = readHeader(reply);
  require(header && header->id == query.id, "a reply has the id of its question");
  require((header->flags & flag::response) != 0, "a reply says that it is one");
  require(std::holds_alternative<Silence>(parseQuery(reply)), "a reply is not answered");
  require(header->additionals == (query.edns ? 1 : 0), "an OPT record has one in return");
  require(reply.substr(headerSize, query.question.name.size()) == query.question.name,
          "a reply has the question's letters");
  require(fitted(reply, query, Channel::udp).size() <= 1232, "a reply over UDP is short");
}

std::string lowerCased(std::string_view name) {
  std::string lower;
  appendLowerCased(lower, name);
  return lower;
}

void checkQuestion(const Query& query) {
  const auto question = writeQuestion(query);
  require(question.size() % 128 == 0, "a question tells little by its length");
  const auto again = parseQuery(question);
  require(std::holds_alternative<Query>(again), "what is asked is a question");
  const auto& asked = std::get<Query>(again);
  require(asked.id == 0, "a question has no id");
  require(asked.question.name == lowerCased(query.question.name), "a question is in lower case");
  require(asked.question.type == query.question.type && asked.question.klass == query.question.klass,
          "the same is asked");
  require(asked.edns->dnssecOk == (query.edns && query.edns->dnssecOk), "the same proof is asked for");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto message = quillmar::fuzz::textOf(data, size);
  const auto parsed = parseQuery(message);
  if (const auto* refusal = std::get_if<Refusal>(&parsed)) {
    const auto reply = refusalReply(*refusal);
    require(std::holds_alternative<Silence>(parseQuery(reply)), "a refusal is not answered");
  } else if (const auto* query = std::get_if<Query>(&parsed)) {
    require(query->question.name.size() <= 255, "a name is short");
    checkQuestion(*query);
    checkReply(*query, errorReply(*query, rcode::servFail, extendedError(0, "text")));
    if (const auto local = localReply(*query, lowerCased(query->question.name))) {
      checkReply(*query, *local);
    }
  }
  return 0;
}
