// kdig, an independent DNS client.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "tests/sandbox/support/household.h"
#include "tests/sandbox/support/run_command.h"
#include "tests/tunnel/support/served_endpoint.h"

namespace quillmar::tunnel {
namespace {

using namespace test;
using sandbox::test::runCommand;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;
using Words = std::vector<std::string>;

constexpr std::uint16_t txt = 16;
constexpr std::uint16_t alias = 5;
constexpr std::uint16_t mail = 15;
constexpr std::uint16_t signature = 46;
constexpr std::uint16_t unknownType = 65'280;

std::string withSingleBlanks(std::string output) {
  std::ranges::replace(output, '\t', ' ');
  const auto isRepeated = [](char one, char next) { return one == ' ' && next == ' '; };
  output.erase(std::unique(output.begin(), output.end(), isRepeated), output.end());
  return output;
}

std::string kdig(const Words& more) {
  Words words{"kdig", "+retry=0"};
  words.insert(words.end(), more.begin(), more.end());
  const auto result = runCommand(words);
  EXPECT_EQ(result.status, 0) << result.output << result.errors;
  return withSingleBlanks(result.output);
}

std::string text(std::size_t size) {
  return std::string(1, static_cast<char>(size - 1)) + std::string(size - 1, 'x');
}

RecordText signatureRecord() {
  std::string data("\0\x01\x0d\x02\0\0\x01\x2c\x70\0\0\0\x60\0\0\0\x12\x34", 18);
  return {.type = signature, .data = data + wireName("example.org") + std::string(64, 's')};
}

// The endpoint chooses its answer by the first label of the name.
AnswerText answerFor(const std::string& label, const Query& query) {
  if (label == "big") {
    return {.answers = std::vector<RecordText>(5, {.type = txt, .data = text(200)})};
  }
  if (label == "bigger") {
    return {.answers = std::vector<RecordText>(6, {.type = txt, .data = text(200)})};
  }
  if (label == "huge") {
    return {.answers = std::vector<RecordText>(250, {.type = txt, .data = text(240)})};
  }
  if (label == "compressed") {  // pointers into the question and into another record
    return {.answers = {{.type = alias, .data = "\x06target\xc0\x17"s},
                        {.type = mail, .data = "\0\x0a\x04mail\xc0\x34"s, .name = "\xc0\x34"s}}};
  }
  if (label == "signed" && query.edns && query.edns->dnssecOk) {
    return {.moreFlags = flag::authenticData, .answers = {{}, signatureRecord()}};
  }
  if (label == "absent") {
    return {.rcode = rcode::nxDomain, .answers = {}, .authorities = {soaText(3600, 900)}};
  }
  if (label == "blocked") {
    return {.answers = {},
            .additionals = optText(1232, 0, "\0\x0f\0\x0a\0\x0f"s + "By Mum. "),
            .additionalCount = 1};
  }
  return query.question.type == unknownType ? AnswerText{.answers = {{.type = unknownType, .data = "data"}}}
                                            : AnswerText{};
}

std::string dottedName(const std::string& wire) {
  std::string name;
  for (std::size_t at = 0; wire[at] != '\0'; at += 1 + static_cast<std::size_t>(wire[at])) {
    name += (at == 0 ? "" : ".") + wire.substr(at + 1, static_cast<std::size_t>(wire[at]));
  }
  return name;
}

void answerAsNamed(TestPeer& peer, std::int32_t stream, const std::string& question) {
  const auto query = std::get<Query>(parseQuery(question));
  const auto name = dottedName(query.question.name);
  const auto label = name.substr(0, name.find('.'));
  if (label == "failing") {
    return peer.answer(stream, "", {}, "500");
  }
  auto answer = answerFor(label, query);
  answer.name = name;
  answer.type = query.question.type;
  answer.klass = query.question.klass;
  peer.answer(stream, answerText(answer));
}

struct Promise {
  const char* name;
  Words asked;
  std::vector<std::string> said;
  std::vector<std::string> unsaid{};
};

std::ostream& operator<<(std::ostream& out, const Promise& promise) { return out << promise.name; }

const std::string longestLabel(63, 'x');
const std::string longestName =
    longestLabel + '.' + longestLabel + '.' + longestLabel + '.' + std::string(61, 'y');

const std::vector<Promise> promises{
    {"a_name_has_its_address",
     {"www.example.org"},
     {"status: NOERROR", "Flags: qr rd ra;", "\nwww.example.org. 60 IN A 192.0.2.7\n"},
     {"EDNS"}},
    {"an_opt_record_is_answered_by_one", {"+bufsize=4096", "www.example.org"}, {"UDP size: 1232 B"}},
    {"a_later_version_of_edns_is_refused", {"+edns=1", "www.example.org"}, {"BADVERS", "Version: 0"}},
    {"options_of_the_client_are_not_answered",
     {"+cookie=0123456789abcdef", "+nsid", "+subnet=192.0.2.0/24", "+padding=64", "www.example.org"},
     {"status: NOERROR", "UDP size: 1232 B"},
     {"COOKIE", "NSID", "CLIENT-SUBNET", "PADDING"}},
    {"without_edns_an_answer_has_at_most_512_bytes",
     {"TXT", "big.example.org", "+ignore"},
     {"Flags: qr tc rd ra;", "ANSWER: 0"}},
    {"an_answer_is_no_longer_than_its_client_accepts",
     {"TXT", "big.example.org", "+bufsize=600", "+ignore"},
     {"Flags: qr tc rd ra;", "ANSWER: 0"}},
    {"an_answer_that_fits_is_whole",
     {"TXT", "big.example.org", "+bufsize=4096", "+ignore"},
     {"Flags: qr rd ra;", "ANSWER: 5"}},
    {"an_answer_over_udp_is_no_longer_than_networks_carry",
     {"TXT", "bigger.example.org", "+bufsize=65535", "+ignore"},
     {"Flags: qr tc rd ra;", "ANSWER: 0"}},
    {"a_truncated_answer_is_asked_for_over_tcp", {"TXT", "big.example.org"}, {"ANSWER: 5", "(TCP)"}},
    {"an_answer_over_tcp_may_be_long", {"+tcp", "TXT", "huge.example.org"}, {"ANSWER: 250", "(TCP)"}},
    {"compressed_names_are_whole",
     {"MX", "compressed.example.org"},
     {"\ncompressed.example.org. 60 IN CNAME target.example.org.\n",
      "\ntarget.example.org. 60 IN MX 10 mail.target.example.org.\n"}},
    {"unknown_types_are_passed_on",
     {"-t", "TYPE65280", "www.example.org"},
     {"\nwww.example.org. 60 IN TYPE65280 \\# 4 64617461\n"}},
    {"the_longest_name_is_passed_on",
     {"-t", "TYPE65280", longestName},
     {'\n' + longestName + ". 60 IN TYPE65280 \\# 4 64617461\n"}},
    {"other_classes_are_passed_on",
     {"-c", "CH", "TXT", "version.bind"},
     {"status: NOERROR", ";; version.bind. CH TXT\n"}},
    {"dnssec_records_are_sent_with_do",
     {"+dnssec", "signed.example.org"},
     {"Flags: qr rd ra ad;", "flags: do", "60 IN RRSIG A 13 2 300 "}},
    {"dnssec_records_are_not_sent_without_do",
     {"+edns", "signed.example.org"},
     {"ANSWER: 1;"},
     {"RRSIG", "flags: do"}},
    {"checking_disabled_is_copied", {"+cdflag", "www.example.org"}, {"Flags: qr rd ra cd;"}},
    {"recursion_desired_is_copied", {"+nordflag", "www.example.org"}, {"Flags: qr ra;"}},
    {"a_negative_answer_has_a_ttl_of_ten_seconds",
     {"absent.example.org"},
     {"status: NXDOMAIN", ". 10 IN SOA "}},
    {"extended_errors_of_the_endpoint_are_passed_on",
     {"+edns", "blocked.example.org"},
     {"EDE: 15 (Blocked): 'By Mum. '"}},
    {"a_failure_is_explained",
     {"+edns", "failing.example.org"},
     {"status: SERVFAIL", "'The endpoint answered with an HTTP error: status 500.'"}},
    {"notifications_are_refused", {"-t", "NOTIFY", "example.org"}, {"status: NOTIMPL"}},
};

struct TunnelKdigQuestions : TunnelServer {
  TunnelKdigQuestions() { start(answerAsNamed); }
  std::string ask(const Words& words) const {
    Words all{"@127.0.0.1", "-p", std::to_string(server->port())};
    all.insert(all.end(), words.begin(), words.end());
    return kdig(all);
  }
};
struct TunnelKdig : TunnelKdigQuestions, testing::WithParamInterface<Promise> {};

TEST_P(TunnelKdig, sees_that) {
  const auto output = ask(GetParam().asked);
  for (const auto& words : GetParam().said) {
    EXPECT_THAT(output, HasSubstr(words));
  }
  for (const auto& words : GetParam().unsaid) {
    EXPECT_THAT(output, Not(HasSubstr(words)));
  }
}
INSTANTIATE_TEST_SUITE_P(Promises, TunnelKdig, testing::ValuesIn(promises),
                         [](const auto& tested) { return std::string(tested.param.name); });

struct TunnelKdigTwice : TunnelKdigQuestions {};

TEST_F(TunnelKdigTwice, sees_the_life_of_an_answer_run_down) {
  EXPECT_THAT(ask({"www.example.org"}), HasSubstr(" 60 IN A "));
  EXPECT_THAT(ask({"www.example.org"}), HasSubstr(" 59 IN A ")) << "a second that has begun counts";
  EXPECT_THAT(endpoint->requests(), SizeIs(1));
}

TEST_F(TunnelKdigTwice, gets_no_dnssec_records_that_another_client_asked_for) {
  EXPECT_THAT(ask({"+dnssec", "signed.example.org"}), HasSubstr("RRSIG"));
  EXPECT_THAT(ask({"signed.example.org"}), Not(HasSubstr("RRSIG")));
}

TEST_F(TunnelKdigTwice, keeps_its_connection) {
  const auto output = ask({"+tcp", "+keepopen", "a.example", "b.example", "c.example"});
  for (const std::string name : {"a", "b", "c"}) {
    EXPECT_THAT(output, HasSubstr('\n' + name + ".example. 60 IN A "));
  }
}

// Asks the stand-in service both directly and through the tunnel.
class TunnelKdigAndService : public sandbox::test::ServiceTest {
 protected:
  std::string askService(const Words& words) {
    Words all{"@127.0.0.1",
              "-p",
              std::to_string(service().tlsPort()),
              "+https=" + url_.substr(url_.find("/dns-query")),
              "+tls-ca=" + service().caFile().string(),
              "+tls-hostname=localhost"};
    all.insert(all.end(), words.begin(), words.end());
    return kdig(all);
  }
  std::string askServer(const Words& words) {
    Words all{"@127.0.0.1", "-p", std::to_string(server_.port())};
    all.insert(all.end(), words.begin(), words.end());
    return kdig(all);
  }

 private:
  const std::string url_ = givenEndpointBlocking("ads.example");
  RunningServer server_{url_, service().caFile().string()};
};

// The status, the flags and all sections.
std::string contentOf(const std::string& output) {
  const auto status = output.find("; status: ");
  const auto flags = output.find(";; Flags: ");
  const auto sections = output.find(";; QUESTION SECTION:");
  const auto end = output.find("\n\n;; Received");
  EXPECT_LT(std::max({status, flags, sections, end}), output.size()) << output;
  return output.substr(status, output.find("; id", status) - status) +
         output.substr(flags, output.find(';', flags + 2) - flags) + output.substr(sections, end - sections);
}

TEST_F(TunnelKdigAndService, see_the_same) {
  const std::vector<Words> questions{{"www.site.example"},
                                     {"AAAA", "www.site.example"},
                                     {"HTTPS", "www.site.example"},
                                     {"-t", "TYPE65280", "www.site.example"},
                                     {longestName},
                                     {"pixel.ads.example"},
                                     {"+edns", "+bufsize=512", "edns.site.example"},
                                     {"+dnssec", "signed.site.example"},
                                     {"+nordflag", "other.site.example"},
                                     {"+tcp", "tcp.site.example"}};
  std::set<std::string> contents;
  for (const auto& words : questions) {
    const auto content = contentOf(askServer(words));
    EXPECT_EQ(content, contentOf(askService(words)));
    contents.insert(content);
  }
  EXPECT_THAT(contents, SizeIs(questions.size()));
  EXPECT_THAT(contents, testing::Contains(HasSubstr("NXDOMAIN")));
}

}  // namespace
}  // namespace quillmar::tunnel
