#include "tunnel/dns/answer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/tunnel/support/messages.h"
#include "tunnel/dns/reply.h"

namespace quillmar::tunnel {
namespace {

using namespace std::chrono_literals;
using namespace test;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

Query query(const QueryText& text = {}) { return std::get<Query>(parseQuery(queryText(text))); }

std::variant<Answer, AnswerFault> parsed(const AnswerText& text, std::chrono::seconds age = 0s) {
  return Answer::parse(answerText(text), query({.type = text.type}).question, age);
}
Answer good(const AnswerText& text, std::chrono::seconds age = 0s) {
  auto answer = parsed(text, age);
  EXPECT_TRUE(std::holds_alternative<Answer>(answer));
  return std::get<Answer>(std::move(answer));
}
AnswerFault fault(const std::string& message) {
  const auto answer = Answer::parse(message, query().question, 0s);
  EXPECT_TRUE(std::holds_alternative<AnswerFault>(answer));
  return std::get<AnswerFault>(answer);
}

TEST(TunnelAnswer, keeps_the_clients_id_case_and_flags) {
  const auto answer = good({.moreFlags = flag::authenticData});
  const auto reply = answer.toQuery(query({.name = "wWw.eXample.org", .id = 0xabcd, .flags = 0}), 0s);
  const auto read = readByLdns(reply);
  EXPECT_THAT(read, HasSubstr("rcode: NOERROR, id: 43981"));
  EXPECT_THAT(read, HasSubstr("flags: qr ra ad ;"));
  EXPECT_THAT(
      read,
      ContainsRegex(
          "wWw\\.eXample\\.org\\.[[:space:]]+60[[:space:]]+IN[[:space:]]+A[[:space:]]+192\\.0\\.2\\.7"));
  EXPECT_THAT(read, Not(HasSubstr("EDNS")));
}

TEST(TunnelAnswer, has_an_opt_record_if_the_query_had_one) {
  const auto answer =
      good({.additionals = optText(4096, 0, extendedError(15, "blocked")), .additionalCount = 1});
  EXPECT_THAT(readByLdns(answer.toQuery(query(), 0s)), Not(HasSubstr("EDNS")));
  const auto reply = answer.toQuery(query({.payload = 512, .dnssecOk = true}), 0s);
  EXPECT_THAT(readByLdns(reply), HasSubstr("EDNS: version 0; flags: do ; udp: 1232"));
  EXPECT_THAT(reply, testing::EndsWith("blocked"));
}

TEST(TunnelAnswer, has_no_ttl_longer_than_a_minute) {
  const auto lives = [](std::uint32_t ttl, std::chrono::seconds age, std::chrono::seconds elapsed) {
    const auto reply = good({.answers = {{.ttl = ttl}}}, age).toQuery(query(), elapsed);
    return get32(reply, reply.size() - 10);
  };
  EXPECT_EQ(lives(86'400, 0s, 0s), 60U);
  EXPECT_EQ(lives(61, 0s, 0s), 60U);
  EXPECT_EQ(lives(59, 0s, 0s), 59U);
  EXPECT_EQ(lives(86'400, 0s, 25s), 35U);
  EXPECT_EQ(lives(59, 20s, 0s), 39U);
  EXPECT_EQ(lives(59, 60s, 0s), 0U);
  EXPECT_EQ(lives(59, 0s, 61s), 0U);
  EXPECT_EQ(lives(0, 0s, 0s), 0U);
  EXPECT_EQ(lives(0x80000001U, 0s, 0s), 0U) << "negative, in the reading of old";
  EXPECT_EQ(lives(86'400, std::chrono::seconds(1'000'000'000'000), 0s), 0U);
}

TEST(TunnelAnswer, is_kept_for_its_shortest_ttl) {
  EXPECT_EQ(good({.answers = {{.ttl = 300}, {.ttl = 30}}, .authorities = {{.ttl = 40}}}).lifetime(), 30s);
  EXPECT_EQ(good({.answers = {{.ttl = 300}}}).lifetime(), 60s);
  EXPECT_EQ(good({.answers = {{.ttl = 50}}}, 20s).lifetime(), 30s);
  EXPECT_EQ(good({.answers = {{.ttl = 0}}}).lifetime(), 0s);
}

TEST(TunnelAnswer, without_a_record_is_kept_for_ten_seconds) {
  EXPECT_EQ(good({.rcode = rcode::nxDomain, .answers = {}, .authorities = {soaText(3600, 900)}}).lifetime(),
            10s);
  EXPECT_EQ(good({.answers = {}, .authorities = {soaText(3600, 900)}}).lifetime(), 10s) << "no such type";
  EXPECT_EQ(good({.answers = {}, .authorities = {soaText(3600, 4)}}).lifetime(), 4s);
  EXPECT_EQ(good({.answers = {}, .authorities = {soaText(3, 900)}}).lifetime(), 3s);
  const RecordText alias{.type = 5, .ttl = 300, .data = "\xc0\x0c"s};
  const auto aliasOnly = good({.answers = {alias}, .authorities = {soaText(3600, 900)}});
  EXPECT_EQ(aliasOnly.lifetime(), 10s) << "an alias to what has no such type";
  const auto read = readByLdns(aliasOnly.toQuery(query(), 3s));
  EXPECT_THAT(read, ContainsRegex("[[:space:]]7[[:space:]]+IN[[:space:]]+CNAME"));
  EXPECT_THAT(read, ContainsRegex("[[:space:]]7[[:space:]]+IN[[:space:]]+SOA"));
}

TEST(TunnelAnswer, without_any_ttl_is_not_kept) {
  EXPECT_EQ(good({.rcode = rcode::nxDomain, .answers = {}}).lifetime(), 0s);
  EXPECT_EQ(good({.answers = {}}).lifetime(), 0s);
}

TEST(TunnelAnswer, to_type_any_exists_with_any_record) {
  EXPECT_EQ(good({.type = type::any, .answers = {{.ttl = 50}}}).lifetime(), 50s);
}

TEST(TunnelAnswer, with_an_error_code_is_a_failure_with_an_extended_error) {
  for (const std::uint16_t code : {rcode::servFail, rcode::notImp, std::uint16_t{5}}) {
    const auto answer = good({.rcode = code, .answers = {}});
    EXPECT_TRUE(answer.isFailure());
    EXPECT_EQ(readHeader(answer.toQuery(query(), 0s))->rcode(), code);
  }
  const auto failed = good({.rcode = rcode::servFail, .answers = {}});
  EXPECT_THAT(failed.toQuery(query({.payload = 1232}), 0s), HasSubstr("could not find the answer"));
  const auto upperBits = good({.additionals = optText(512, 1U << 24U), .additionalCount = 1});
  EXPECT_EQ(readHeader(upperBits.toQuery(query(), 0s))->rcode(), rcode::servFail);
  EXPECT_TRUE(upperBits.isFailure());
  EXPECT_FALSE(good({.rcode = rcode::nxDomain, .answers = {}}).isFailure());
}

TEST(TunnelAnswer, loses_the_records_after_its_opt_record) {
  const auto glue = recordText({.ttl = 20});
  const auto answer = good({.additionals = glue + optText(512, 0) + glue, .additionalCount = 3});
  const auto read = readByLdns(answer.toQuery(query(), 0s));
  EXPECT_THAT(read, HasSubstr("ANSWER: 1, AUTHORITY: 0, ADDITIONAL: 1"));
  EXPECT_EQ(answer.lifetime(), 20s);
}

TEST(TunnelAnswer, does_not_pass_on_very_long_extended_errors) {
  const auto book = extendedError(15, std::string(2000, 'x'));
  const auto answer = good({.additionals = optText(512, 0, book), .additionalCount = 1});
  EXPECT_LT(answer.toQuery(query({.payload = 1232}), 0s).size(), 200U);
}

TEST(TunnelAnswer, cut_off_anywhere_is_rejected) {
  const auto whole = answerText({.authorities = {soaText(60, 60)}});
  for (std::size_t size = 0; size < whole.size(); ++size) {
    const auto answer = Answer::parse(whole.substr(0, size), query().question, 0s);
    EXPECT_TRUE(std::holds_alternative<AnswerFault>(answer)) << size;
  }
}

TEST(TunnelAnswer, to_another_question_is_rejected) {
  EXPECT_EQ(fault(answerText({.name = "ww.example.org"})), AnswerFault::ofAnotherQuestion);
  EXPECT_EQ(fault(answerText({.type = type::aaaa})), AnswerFault::ofAnotherQuestion);
  auto none = answerText({.answers = {}});
  put16(none, 4, 0);
  EXPECT_EQ(fault(none), AnswerFault::ofAnotherQuestion);
  auto chaos = answerText({});
  put16(chaos, headerSize + wireName("www.example.org").size() + 2, 3);
  EXPECT_EQ(fault(chaos), AnswerFault::ofAnotherQuestion);
}

TEST(TunnelAnswer, that_is_malformed_is_rejected) {
  EXPECT_EQ(fault(""), AnswerFault::malformed);
  EXPECT_EQ(fault(queryText({})), AnswerFault::malformed) << "a question";
  EXPECT_EQ(fault("<html>Sign in to use this network, please.</html>"), AnswerFault::malformed);
  EXPECT_EQ(fault(answerText({.moreFlags = 5U << 11U})), AnswerFault::malformed);
  EXPECT_EQ(fault(answerText({.moreFlags = flag::truncated})), AnswerFault::cutShort);
  EXPECT_EQ(fault(answerText({.answers = {{.name = "\xc0\xff"s}}})), AnswerFault::malformed)
      << "points ahead";
  EXPECT_EQ(fault(answerText({.answers = {{.name = "\xc0\x02"s}}})), AnswerFault::malformed)
      << "into the header";
  EXPECT_EQ(fault(answerText({.answers = {{.type = type::opt, .name = "\0"s}}})), AnswerFault::malformed);
}

TEST(TunnelAnswer, may_have_the_largest_message_size) {
  AnswerText text{.answers = {}};
  const RecordText big{.type = 16, .data = std::string(32'700, 'x')};
  text.answers = {big, big};
  const auto empty = answerText(text).size();
  text.answers[1].data.resize(32'700 + largestMessage - empty);
  ASSERT_EQ(answerText(text).size(), largestMessage);
  const auto answer = good(text);
  EXPECT_EQ(fitted(answer.toQuery(query(), 0s), query(), Channel::tcp).size(), largestMessage);
  const auto withOpt = query({.payload = 1232});
  const auto cut = readByLdns(fitted(answer.toQuery(withOpt, 0s), withOpt, Channel::tcp));
  EXPECT_THAT(cut, HasSubstr(" tc ")) << "no room for the OPT record";
}

TEST(TunnelReply, over_udp_is_no_longer_than_its_client_accepts) {
  const auto sized = [](std::size_t size) {
    AnswerText text{.answers = {{.type = 16, .data = ""}}};
    text.answers[0].data.resize(size - answerText(text).size());
    return good(text);
  };
  const auto isCut = [&](std::size_t size, const QueryText& of) {
    const auto asked = query(of);
    const auto optSize = of.payload ? 11U : 0U;
    const auto reply = fitted(sized(size - optSize).toQuery(asked, 0s), asked, Channel::udp);
    const bool cut = (get16(reply, 2) & flag::truncated) != 0;
    EXPECT_EQ(reply.size() == size, !cut);
    EXPECT_EQ(readHeader(reply)->answers, cut ? 0 : 1);
    EXPECT_EQ(readHeader(reply)->additionals, of.payload ? 1 : 0);
    return cut;
  };
  EXPECT_FALSE(isCut(512, {}));
  EXPECT_TRUE(isCut(513, {}));
  EXPECT_FALSE(isCut(512, {.payload = 0})) << "less than 512 is read as 512";
  EXPECT_FALSE(isCut(800, {.payload = 800}));
  EXPECT_TRUE(isCut(801, {.payload = 800}));
  EXPECT_FALSE(isCut(1232, {.payload = 4096}));
  EXPECT_TRUE(isCut(1233, {.payload = 4096}));
}

}  // namespace
}  // namespace quillmar::tunnel
