#include "tunnel/dns/query.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/tunnel/support/messages.h"
#include "tunnel/dns/reply.h"

namespace quillmar::tunnel {
namespace {

using namespace test;
using testing::HasSubstr;
using testing::Not;

Query understood(const std::string& message) {
  const auto parsed = parseQuery(message);
  EXPECT_TRUE(std::holds_alternative<Query>(parsed));
  return std::holds_alternative<Query>(parsed) ? std::get<Query>(parsed) : Query{};
}

std::uint16_t refusedWith(const std::string& message) {
  const auto parsed = parseQuery(message);
  EXPECT_TRUE(std::holds_alternative<Refusal>(parsed));
  return std::holds_alternative<Refusal>(parsed) ? std::get<Refusal>(parsed).rcode : rcode::noError;
}

bool isMetWithSilence(const std::string& message) {
  return std::holds_alternative<Silence>(parseQuery(message));
}

TEST(TunnelQuery, is_parsed_with_its_flags_and_its_opt_record) {
  const auto query = understood(queryText({.name = "WWW.Example.org",
                                           .type = type::aaaa,
                                           .id = 0xbeef,
                                           .flags = flag::recursionDesired | flag::checkingDisabled,
                                           .payload = 1400,
                                           .dnssecOk = true}));
  EXPECT_EQ(query.id, 0xbeef);
  EXPECT_EQ(query.question.name, wireName("WWW.Example.org"));
  EXPECT_EQ(query.question.type, type::aaaa);
  EXPECT_TRUE(query.recursionDesired);
  EXPECT_TRUE(query.checkingDisabled);
  EXPECT_FALSE(query.authenticData);
  ASSERT_TRUE(query.edns);
  EXPECT_EQ(query.edns->payload, 1400);
  EXPECT_TRUE(query.edns->dnssecOk);
  EXPECT_FALSE(understood(queryText({})).edns);
}

TEST(TunnelQuery, may_have_any_valid_name) {
  const std::string label(63, 'x');
  const std::string longest = label + '.' + label + '.' + label + '.' + std::string(61, 'y');
  EXPECT_EQ(understood(queryText({.name = longest})).question.name.size(), 255U);
  EXPECT_EQ(understood(queryText({.name = ""})).question.name, "\0"s);
  EXPECT_EQ(refusedWith(queryText({.name = longest + 'y'})), rcode::formErr);
  EXPECT_EQ(refusedWith(queryText({.name = std::string(64, 'x')})), rcode::formErr);
}

TEST(TunnelQuery, is_not_answered_if_it_is_an_answer_or_has_no_header) {
  EXPECT_TRUE(isMetWithSilence(""));
  EXPECT_TRUE(isMetWithSilence(queryText({}).substr(0, headerSize - 1)));
  EXPECT_TRUE(isMetWithSilence(answerText({})));
  EXPECT_TRUE(isMetWithSilence(queryText({.flags = 0xffff})));
}

TEST(TunnelQuery, cut_off_anywhere_is_a_format_error) {
  const auto whole = queryText({.payload = 1232});
  for (std::size_t size = headerSize; size < whole.size(); ++size) {
    EXPECT_EQ(refusedWith(whole.substr(0, size)), rcode::formErr) << size;
  }
}

TEST(TunnelQuery, has_one_question_and_no_trailing_bytes) {
  auto none = queryText({});
  put16(none, 4, 0);
  EXPECT_EQ(refusedWith(none), rcode::formErr);
  auto two = queryText({}) + questionText("www.example.org", type::aaaa);
  put16(two, 4, 2);
  EXPECT_EQ(refusedWith(two), rcode::formErr);
  EXPECT_EQ(refusedWith(queryText({}) + 'x'), rcode::formErr);
  auto pointing = queryText({});
  pointing.replace(headerSize, wireName("www.example.org").size(), "\xc0\x04"s);
  EXPECT_EQ(refusedWith(pointing), rcode::formErr);

  auto twoOpts = queryText({.payload = 1232}) + optText(1232, 0);
  putAdditionals(twoOpts, 2);
  EXPECT_EQ(refusedWith(twoOpts), rcode::formErr);
  auto misplaced = queryText({.payload = 1232});
  putAdditionals(misplaced, 0);
  put16(misplaced, 6, 1);
  EXPECT_EQ(refusedWith(misplaced), rcode::formErr);
}

TEST(TunnelQuery, of_another_opcode_or_a_zone_transfer_is_not_implemented) {
  EXPECT_EQ(refusedWith(queryText({.type = type::axfr})), rcode::notImp);
  EXPECT_EQ(refusedWith(queryText({.type = type::ixfr})), rcode::notImp);
  for (const int opcode : {1, 2, 4, 5, 6, 15}) {
    EXPECT_EQ(refusedWith(queryText({.flags = static_cast<std::uint16_t>(opcode << 11)})), rcode::notImp);
  }
  EXPECT_EQ(understood(queryText({.type = type::any})).question.type, type::any);
  EXPECT_EQ(understood(queryText({.type = 65'280})).question.type, 65'280);
}

TEST(TunnelQuery, is_refused_by_a_valid_message) {
  const auto reply =
      readByLdns(refusalReply({.id = 7, .flags = flag::recursionDesired, .rcode = rcode::formErr}));
  EXPECT_THAT(reply, HasSubstr("rcode: FORMERR, id: 7"));
  const auto update = refusalReply({.id = 7, .flags = 5U << 11U, .rcode = rcode::notImp});
  EXPECT_THAT(readByLdns(update), HasSubstr("opcode: UPDATE, rcode: NOTIMPL"));
  EXPECT_EQ(refusedWith(queryText({.payload = 1232, .version = 1})), rcode::badVers);
  const auto badVersion = refusalReply({.id = 7, .rcode = rcode::badVers});
  EXPECT_EQ(readHeader(badVersion)->rcode(), 0);
  EXPECT_THAT(readByLdns(badVersion), HasSubstr("EDNS: version 0"));
  EXPECT_EQ(badVersion.at(headerSize + 5), '\1') << "the upper bits";
}

TEST(TunnelQuery, is_sent_without_data_of_its_client) {
  const auto one = understood(queryText({.name = "WwW.example.org", .id = 1, .payload = 512}));
  const auto other = understood(queryText({.id = 2}));
  EXPECT_EQ(writeQuestion(one), writeQuestion(other));
  const auto read = readByLdns(writeQuestion(one));
  EXPECT_THAT(read, HasSubstr("rcode: NOERROR, id: 0"));
  EXPECT_THAT(read, HasSubstr("flags: rd ;"));
  EXPECT_THAT(read, HasSubstr("www.example.org."));
  EXPECT_THAT(read, Not(HasSubstr("flags: do")));
}

TEST(TunnelQuery, is_sent_with_the_flags_that_change_its_answer) {
  const auto query = understood(
      queryText({.flags = flag::authenticData | flag::checkingDisabled, .payload = 1232, .dnssecOk = true}));
  const auto read = readByLdns(writeQuestion(query));
  EXPECT_THAT(read, HasSubstr("flags: rd cd ad"));
  EXPECT_THAT(read, HasSubstr("flags: do"));
}

TEST(TunnelQuery, is_padded) {
  for (std::size_t length = 1; length <= 63; ++length) {
    const auto label = std::string(length, 'x');
    for (const auto& name : {label, label + ".example.org", label + '.' + label + '.' + label}) {
      const auto question = writeQuestion(understood(queryText({.name = name})));
      EXPECT_EQ(question.size() % 128, 0U) << name;
      EXPECT_NE(readByLdns(question), "") << name;
    }
  }
}

}  // namespace
}  // namespace quillmar::tunnel
