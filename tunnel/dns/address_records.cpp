#include "tunnel/dns/address_records.h"

#include <algorithm>
#include <limits>

namespace quillmar::tunnel {
namespace {

constexpr std::size_t longestHost = 253;

std::size_t sizeOfAddress(std::uint16_t recordType) { return recordType == type::aaaa ? 16 : 4; }

bool answers(Reader& reader, const Header& header, const Question& question) {
  const auto name = reader.plainName();
  const auto recordType = reader.number16();
  const auto klass = reader.number16();
  const bool isKnown = header.rcode() == rcode::noError || header.rcode() == rcode::nxDomain;
  return reader.ok() && header.questions == 1 && (header.flags & flag::response) != 0 && isKnown &&
         areSameNames(name, question.name) && recordType == question.type && klass == question.klass;
}

}  // namespace

std::optional<AddressRecords> readAddressRecords(std::string_view message, const Question& question) {
  const auto header = readHeader(message);
  Reader reader(message, headerSize);
  if (!header || !answers(reader, *header, question)) {
    return std::nullopt;
  }
  AddressRecords found;
  auto life = std::numeric_limits<std::uint32_t>::max();
  for (unsigned index = 0; index < header->answers; ++index) {
    const Record record = reader.record();
    if (!reader.ok()) {
      return std::nullopt;
    }
    life = std::min(life, record.ttl);
    if (record.type == question.type && record.data.size() == sizeOfAddress(question.type)) {
      found.addresses.emplace_back(record.data);
    }
  }
  found.life = std::chrono::seconds(found.addresses.empty() ? 0 : life);
  return found;
}

std::optional<Query> queryFor(std::string_view host, std::uint16_t type) {
  if (host.ends_with('.')) {
    host.remove_suffix(1);
  }
  for (auto rest = host; !rest.empty();) {
    const auto label = rest.substr(0, rest.find('.'));
    if (label.empty() || label.size() > largestLabel) {
      return std::nullopt;
    }
    rest.remove_prefix(std::min(label.size() + 1, rest.size()));
  }
  if (host.empty() || host.size() > longestHost || host.ends_with('.')) {
    return std::nullopt;
  }
  return Query{.question = {.name = wireName(host), .type = type}};
}

}  // namespace quillmar::tunnel
