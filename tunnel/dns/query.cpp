#include "tunnel/dns/query.h"

namespace quillmar::tunnel {
namespace {

constexpr std::size_t paddedTo = 128;
constexpr std::uint16_t paddingOption = 12;
// HTTPS has no such limit, but the endpoint may pass this on to other servers.
constexpr std::uint16_t takenPayload = 4096;

struct Opt {
  std::uint8_t version = 0;
  Edns edns{};
};

Opt optOf(const Record& record) {
  return {.version = static_cast<std::uint8_t>(record.ttl >> 16U & 0xffU),
          .edns = {.payload = record.klass, .dnssecOk = (record.ttl & dnssecOk) != 0}};
}

// Reads the records after the question. False if they are malformed, if bytes follow them, or if an OPT
// record is misplaced or the second one.
bool readRecords(Reader& reader, const Header& header, std::optional<Opt>& opt) {
  const unsigned ordinary = header.answers + unsigned{header.authorities};
  const unsigned all = ordinary + header.additionals;
  for (unsigned index = 0; index < all; ++index) {
    const Record record = reader.record();
    if (!reader.ok()) {
      return false;
    }
    if (record.type == type::opt) {
      if (opt || !record.ofRoot || index < ordinary) {
        return false;
      }
      opt = optOf(record);
    }
  }
  return reader.atEnd();
}

}  // namespace

std::variant<Query, Refusal, Silence> parseQuery(std::string_view message) {
  const auto header = readHeader(message);
  if (!header || (header->flags & flag::response) != 0) {
    return Silence{};
  }
  const auto refuse = [&](std::uint16_t code) { return Refusal{header->id, header->flags, code}; };
  if ((header->flags & flag::opcode) != 0) {
    return refuse(rcode::notImp);
  }
  Reader reader(message, headerSize);
  Query query{.id = header->id,
              .recursionDesired = (header->flags & flag::recursionDesired) != 0,
              .authenticData = (header->flags & flag::authenticData) != 0,
              .checkingDisabled = (header->flags & flag::checkingDisabled) != 0};
  query.question.name = reader.plainName();
  query.question.type = reader.number16();
  query.question.klass = reader.number16();
  std::optional<Opt> opt;
  if (header->questions != 1 || !reader.ok() || !readRecords(reader, *header, opt)) {
    return refuse(rcode::formErr);
  }
  if (query.question.type == type::axfr || query.question.type == type::ixfr) {
    return refuse(rcode::notImp);
  }
  if (opt) {
    if (opt->version > 0) {
      return refuse(rcode::badVers);
    }
    query.edns = opt->edns;
  }
  return query;
}

std::string writeQuestion(const Query& query) {
  const auto flags =
      static_cast<std::uint16_t>(flag::recursionDesired | (query.authenticData ? flag::authenticData : 0) |
                                 (query.checkingDisabled ? flag::checkingDisabled : 0));
  std::string message;
  message.reserve(4 * paddedTo);
  append(message, Header{.flags = flags, .questions = 1, .additionals = 1});
  appendLowerCased(message, query.question.name);
  append16(message, query.question.type);
  append16(message, query.question.klass);

  message += '\0';
  append16(message, type::opt);
  append16(message, takenPayload);
  append32(message, query.edns && query.edns->dnssecOk ? dnssecOk : 0);
  constexpr std::size_t optionHeader = 4;
  const std::size_t unpadded = message.size() + 2 + optionHeader;
  const std::size_t padding = (paddedTo - unpadded % paddedTo) % paddedTo;
  append16(message, static_cast<std::uint16_t>(optionHeader + padding));
  append16(message, paddingOption);
  append16(message, static_cast<std::uint16_t>(padding));
  message.append(padding, '\0');
  return message;
}

}  // namespace quillmar::tunnel
