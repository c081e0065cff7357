#include "tests/sandbox/support/household.h"

#include <sstream>

namespace quillmar::sandbox::test {
namespace {

constexpr std::int64_t start = 1'791'498'660'250;  // 2026-10-08T22:31:00.250Z

bool standsAlone(const std::string& path) {
  return path.starts_with("/sandbox/") || path.starts_with("/dns-query");
}

std::string target(const std::string& path) { return standsAlone(path) ? path : "/api/v1" + path; }

}  // namespace

std::string Reply::error() const {
  const auto body = json();
  return body.is_object() && body.contains("error") && body["error"].is_string()
             ? body["error"].get<std::string>()
             : std::string{};
}

ServiceTest::ServiceTest() : now_{start} { restart({}); }
ServiceTest::~ServiceTest() = default;

void ServiceTest::restart(const Options& options) {
  service_.reset();
  auto started = Service::start(
      options, [this] { return std::chrono::system_clock::time_point{now().time_since_epoch()}; });
  if (!started) {
    ADD_FAILURE() << started.failure();
    std::abort();
  }
  service_ = std::move(*started);
}

Reply ServiceTest::curl(const std::vector<std::string>& options, const std::string& input) {
  std::vector<std::string> words{"curl",        "--silent",
                                 "--max-time",  "30",
                                 "--cacert",    service().caFile().string(),
                                 "--write-out", "\n%{http_code} %{time_total} %{content_type}"};
  words.insert(words.end(), options.begin(), options.end());
  const auto outcome = runCommand(words, input);
  const auto newline = outcome.output.rfind('\n');
  Reply reply{.exitStatus = outcome.status};
  if (newline == std::string::npos) return reply;
  const auto summary = outcome.output.substr(newline + 1);
  std::istringstream{summary} >> reply.status >> reply.seconds >> reply.contentType;
  reply.body = outcome.output.substr(0, newline);
  return reply;
}

Reply ServiceTest::ask(const std::string& method, const std::string& path, const std::string& token,
                       const std::string& body, const std::vector<std::string>& options) {
  std::vector<std::string> words{"--request", method, service().secureUrl() + target(path)};
  if (!token.empty()) words.insert(words.end(), {"--header", "Authorization: Bearer " + token});
  if (!body.empty())
    words.insert(words.end(), {"--header", "Content-Type: application/json", "--data-binary", "@-"});
  words.insert(words.end(), options.begin(), options.end());
  return curl(words, body);
}

Json ServiceTest::given(const std::string& method, const std::string& path, const std::string& token,
                        const Json& body) {
  const auto answer = service().ask(method, target(path), body.is_null() ? "" : body.dump(), token);
  EXPECT_LT(answer.status, 400) << method << ' ' << path << ": " << answer.body;
  return Json::parse(answer.body, nullptr, false);
}

std::string ServiceTest::givenAccount(const std::string& email, const std::string& name) {
  return given("POST", "/auth/register", {},
               {{"email", email}, {"password", password}, {"phone", "+61 412 345 678"}, {"name", name}})
      .at("token");
}

std::string ServiceTest::givenMember(const std::string& token, const std::string& email) {
  const auto invitation = given("POST", "/family/invite", token, Json::object());
  return given("POST", "/family/join", {},
               {{"invite_code", invitation.at("invite_code")},
                {"email", email},
                {"password", password},
                {"display_name", "Ben"}})
      .at("token");
}

std::string ServiceTest::givenChild(const std::string& token, const std::string& name) {
  return given("POST", "/children", token, {{"name", name}}).at("id");
}

std::string ServiceTest::givenDevice(const std::string& token, const std::optional<std::string>& childId) {
  const auto pending =
      given("POST", "/enrollment/init", {},
            {{"device_id", "own id"}, {"device_name", "Mia's phone"}, {"device_type", "ios"}});
  Json body{{"enrollment_code", pending.at("enrollment_code")}, {"device_name", "Phone"}};
  if (childId) body["child_id"] = *childId;
  return given("POST", "/enrollment/complete", token, body).at("device").at("id");
}

std::string ServiceTest::givenEndpointBlocking(const std::string& domain) {
  const auto token = givenAccount("ann@example.com");
  const auto child = givenChild(token);
  givenDevice(token, child);
  given("POST", "/children/" + child + "/policy/block", token, {{"domain", domain}});
  return given("GET", "/children/" + child, token).at("devices")[0].at("doh_endpoint");
}

std::string ServiceTest::memberId(const std::string& token, const std::string& email) {
  const auto family = given("GET", "/family", token);
  for (const auto& member : family.at("members")) {
    if (member.at("email") == email) return member.at("id");
  }
  ADD_FAILURE() << email << " is no member";
  return {};
}

}  // namespace quillmar::sandbox::test
