#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tunnel/dns/wire.h"

namespace quillmar::tunnel::test {

using namespace std::string_literals;

// Messages of a client or of the endpoint, written by hand so that they can be malformed too.
struct QueryText {
  std::string name = "www.example.org";
  std::uint16_t type = type::a;
  std::uint16_t id = 0x1234;
  std::uint16_t flags = flag::recursionDesired;
  std::optional<std::uint16_t> payload{};  // adds an OPT record
  bool dnssecOk = false;
  std::uint8_t version = 0;
  std::uint16_t klass = internetClass;
};

inline std::string questionText(const std::string& name, std::uint16_t recordType,
                                std::uint16_t klass = internetClass) {
  auto text = wireName(name);
  append16(text, recordType);
  append16(text, klass);
  return text;
}

inline std::string optText(std::uint16_t payload, std::uint32_t ttl, std::string_view options = {}) {
  std::string text(1, '\0');
  append16(text, type::opt);
  append16(text, payload);
  append32(text, ttl);
  append16(text, static_cast<std::uint16_t>(options.size()));
  return text.append(options);
}

inline std::string queryText(const QueryText& query) {
  std::string text;
  append(text, Header{.id = query.id,
                      .flags = query.flags,
                      .questions = 1,
                      .additionals = static_cast<std::uint16_t>(query.payload ? 1 : 0)});
  text += questionText(query.name, query.type, query.klass);
  if (query.payload) {
    text += optText(*query.payload, (std::uint32_t{query.version} << 16U) | (query.dnssecOk ? dnssecOk : 0));
  }
  return text;
}

struct RecordText {
  std::uint16_t type = type::a;
  std::uint32_t ttl = 300;
  std::string data = "\xc0\x00\x02\x07"s;
  std::string name = "\xc0\x0c"s;  // a pointer to the question's name
};

inline std::string recordText(const RecordText& record) {
  auto text = record.name;
  append16(text, record.type);
  append16(text, internetClass);
  append32(text, record.ttl);
  append16(text, static_cast<std::uint16_t>(record.data.size()));
  return text + record.data;
}

inline RecordText soaText(std::uint32_t ttl, std::uint32_t minimum) {
  std::string data(2, '\0');
  for (const std::uint32_t number : {1U, 2U, 3U, 4U, minimum}) {
    append32(data, number);
  }
  return {.type = type::soa, .ttl = ttl, .data = data};
}

struct AnswerText {
  std::string name = "www.example.org";
  std::uint16_t type = type::a;
  std::uint16_t rcode = rcode::noError;
  std::uint16_t moreFlags = 0;
  std::vector<RecordText> answers{{}};
  std::vector<RecordText> authorities{};
  std::string additionals{};  // in wire format
  std::uint16_t additionalCount = 0;
  std::uint16_t klass = internetClass;
};

inline std::string answerText(const AnswerText& answer) {
  std::string text;
  append(text, Header{.id = 0,
                      .flags = static_cast<std::uint16_t>(flag::response | flag::recursionDesired |
                                                          flag::recursionAvailable | answer.moreFlags |
                                                          answer.rcode),
                      .questions = 1,
                      .answers = static_cast<std::uint16_t>(answer.answers.size()),
                      .authorities = static_cast<std::uint16_t>(answer.authorities.size()),
                      .additionals = answer.additionalCount});
  text += questionText(answer.name, answer.type, answer.klass);
  for (const auto* section : {&answer.answers, &answer.authorities}) {
    for (const auto& record : *section) {
      text += recordText(record);
    }
  }
  return text + answer.additionals;
}

// The message as text by an independent parser; empty if it can't be parsed.
std::string readByLdns(const std::string& message);

}  // namespace quillmar::tunnel::test
