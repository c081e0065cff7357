#include "sandbox/dns/message.h"
#include "tests/fuzz/fuzz.h"

using quillmar::fuzz::require;
using quillmar::sandbox::DnsQuery;

namespace {

constexpr std::size_t headerSize = 12;

void checkAnswer(std::string_view query, const std::string& answer) {
  require(answer.size() >= headerSize, "every query has an answer");
  require(answer.substr(0, 2) == query.substr(0, 2), "an answer has the id of its query");
  require((answer[2] & 0x80) != 0, "an answer says that it is one");
  require(!DnsQuery::parse(answer), "an answer is no query");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto wire = quillmar::fuzz::textOf(data, size);
  const auto query = DnsQuery::parse(wire);
  if (!query) return 0;
  require(size >= headerSize, "a query has a header");
  require(!query->type().empty(), "every type has a name");
  require(query->name().find_first_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ") == std::string::npos,
          "names are in lower case");
  for (const auto& answer :
       {query->exampleAnswer(), query->noSuchName(), query->notImplemented(), query->serverFailure()}) {
    checkAnswer(wire, answer);
  }
  return 0;
}
