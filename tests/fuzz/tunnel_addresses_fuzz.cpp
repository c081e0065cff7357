// The input is a name server's answer with the endpoint's addresses, and also the host name to look up. The
// question is taken from the answer.

#include "tests/fuzz/fuzz.h"
#include "tests/fuzz/tunnel_question.h"
#include "tunnel/dns/address_records.h"

using namespace quillmar::tunnel;
using quillmar::fuzz::questionIn;
using quillmar::fuzz::require;

namespace {

void checkAnswer(std::string_view message) {
  const auto question = questionIn(message);
  const auto records = readAddressRecords(message, question);
  if (!records) {
    return;
  }
  require(!records->addresses.empty() || records->life == std::chrono::seconds(0),
          "that there are no addresses is not kept");
  for (const auto& address : records->addresses) {
    require(address.size() == (question.type == type::aaaa ? 16U : 4U), "an address has its family's size");
  }
  auto other = question;
  other.name[0] = static_cast<char>(other.name[0] + 1);
  require(!readAddressRecords(message, other), "an answer is one to its own question only");
}

void checkHost(std::string_view host) {
  const auto query = queryFor(host, type::a);
  if (!query) {
    return;
  }
  require(query->question.name.size() <= 255, "a name is short");
  const auto parsed = parseQuery(writeQuestion(*query));
  const auto* asked = std::get_if<Query>(&parsed);
  require(asked != nullptr, "what is asked is a question");
  std::string name;
  appendLowerCased(name, query->question.name);
  require(asked->question.name == name, "the host is asked for");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto input = quillmar::fuzz::textOf(data, size);
  checkAnswer(input);
  checkHost(input);
  return 0;
}
