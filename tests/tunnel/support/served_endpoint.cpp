#include "tests/tunnel/support/served_endpoint.h"

#include "tunnel/dns/query.h"

namespace quillmar::tunnel::test {

std::string answerTo(const std::string& question, const RecordText& record, std::size_t records) {
  const auto query = std::get<Query>(parseQuery(question));
  std::string text;
  append(text, Header{.flags = flag::response | flag::recursionDesired | flag::recursionAvailable,
                      .questions = 1,
                      .answers = static_cast<std::uint16_t>(records)});
  text += query.question.name;
  append16(text, query.question.type);
  append16(text, query.question.klass);
  for (std::size_t count = 0; count < records; ++count) {
    text += recordText(record);
  }
  return text;
}

}  // namespace quillmar::tunnel::test
