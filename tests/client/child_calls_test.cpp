#include "client/child_calls.h"

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "tests/client/console_answers.h"

namespace quillmar {
namespace {

using testing::ElementsAreArray;
using Lines = std::vector<std::string>;

// The two calls that write to the system log differ only in what they send and in their last line.
struct Trail {
  std::string name;
  std::string method;
  std::string urlLine;
  std::string body;
  std::string successLine;
  std::function<void(NetworkService&, std::function<void(bool)>)> start;
};

void PrintTo(const Trail& trail, std::ostream* out) { *out << trail.name; }

const std::vector<Trail> trails{
    {"getChildren", "GET", " - URL: https://au.example/api/v1/children",
     R"({"children":[)" + childBody() + "," + childBody() + R"(],"unassigned_devices":[]})",
     " - decoded 2 children",
     [](NetworkService& service, std::function<void(bool)> end) {
       service.send(calls::getChildren, [end](const Result<ChildrenResponse>& result) { end(result.ok()); });
     }},
    {"createChild", "POST", " - URL: https://au.example/api/v1/children, name: Mia %@ %n", childBody(),
     " - success: Mia (id: c1)",
     [](NetworkService& service, std::function<void(bool)> end) {
       service.send(calls::createChild, {.name = "Mia %@ %n", .photoURL = {}, .birthYear = {}},
                    [end](const Result<ChildProfileWithDevices>& result) { end(result.ok()); });
     }},
};

class TrailTest : public ClientTest, public testing::WithParamInterface<Trail> {
 protected:
  // The log lines of one call with this answer.
  Lines linesOf(DataTaskResult result) {
    http.answer(GetParam().method, "/children", std::move(result));
    log.clear();
    start();
    settle();
    return log.systemLines();
  }
  void start() {
    GetParam().start(*service, [this](bool ok) { succeeded = ok; });
  }
  std::string line(const std::string& rest) const { return "[NetworkService] " + GetParam().name + rest; }

  std::optional<bool> succeeded;
};

TEST_P(TrailTest, a_missing_root_is_logged_with_the_calls_name) {
  removeRoot();
  start();
  EXPECT_EQ(succeeded, false);
  EXPECT_THAT(log.systemLines(), ElementsAre(line(" failed: No region configured")));
}

TEST_P(TrailTest, an_invalid_root_url_logs_nothing) {
  breakRoot();
  start();
  EXPECT_EQ(succeeded, false);
  EXPECT_THAT(log.systemLines(), IsEmpty());
}

TEST_P(TrailTest, a_missing_token_is_logged_as_an_error) {
  removeToken();
  start();
  EXPECT_THAT(log.systemLines(),
              ElementsAre(line(GetParam().urlLine), line(" - error: Please log in again")));
}

TEST_P(TrailTest, a_success_is_logged_step_by_step) {
  EXPECT_THAT(linesOf(httpAnswer(201, GetParam().body)),
              ElementsAre(line(GetParam().urlLine), line(" - status: 201"),
                          line(" - response: " + GetParam().body), line(GetParam().successLine)));
  EXPECT_EQ(succeeded, true);
  EXPECT_THAT(printed(), ElementsAre("[NetworkService] addAuthHeader - token found, length: 12"));
}

TEST_P(TrailTest, a_transport_error_is_logged_with_its_message) {
  EXPECT_THAT(linesOf(transportFailure(Kind::timedOut)),
              ElementsAre(line(GetParam().urlLine), line(" - error: The request timed out.")));
}

TEST_P(TrailTest, an_answer_with_a_missing_part_is_logged_as_an_error) {
  for (const auto& part : {answerWithoutData(200), answerWithoutResponse("x"), DataTaskResult{}}) {
    EXPECT_THAT(linesOf(part),
                ElementsAre(line(GetParam().urlLine), line(" - error: Invalid response from server")));
  }
}

TEST_P(TrailTest, an_answer_that_is_not_http_logs_no_status) {
  EXPECT_THAT(linesOf(answerThatIsNotHttp("file")),
              ElementsAre(line(GetParam().urlLine), line(" - response: file"),
                          line(" - decode error: Invalid response from server")));
}

TEST_P(TrailTest, a_refusal_is_logged_with_its_body) {
  EXPECT_THAT(linesOf(httpAnswer(403, R"({"error":"own"})")),
              ElementsAre(line(GetParam().urlLine), line(" - status: 403"),
                          line(R"( - response: {"error":"own"})"), line(" - decode error: Access denied")));
  EXPECT_EQ(succeeded, false);
}

TEST_P(TrailTest, an_answer_that_does_not_decode_is_logged_with_its_body) {
  EXPECT_THAT(linesOf(httpAnswer(200, "")),
              ElementsAre(line(GetParam().urlLine), line(" - status: 200"), line(" - response: "),
                          line(" - decode error: " + std::string(malformedText))));
}

TEST_P(TrailTest, only_the_first_500_characters_of_a_body_are_logged) {
  const std::string family = "👨‍👩‍👧";
  std::string first500;
  for (int i = 0; i < 500; ++i) {
    first500 += family;
  }
  for (const auto& body : {first500, first500 + "!", first500 + family}) {
    EXPECT_EQ(linesOf(httpAnswer(200, body)).at(2), line(" - response: " + first500));
  }
}

TEST_P(TrailTest, a_body_that_is_not_utf8_is_not_logged) {
  EXPECT_THAT(linesOf(httpAnswer(500, notUtf8)), ElementsAre(line(GetParam().urlLine), line(" - status: 500"),
                                                             line(" - decode error: Unknown error")));
}

TEST_P(TrailTest, a_call_with_a_refresh_is_logged_once) {
  http.answer("POST", "/auth/refresh", 200, authBody(newToken));
  http.answer(GetParam().method, "/children", 401);
  EXPECT_THAT(linesOf(httpAnswer(200, GetParam().body)),
              ElementsAre(line(GetParam().urlLine), line(" - status: 200"),
                          line(" - response: " + GetParam().body), line(GetParam().successLine)));
}

INSTANTIATE_TEST_SUITE_P(Calls, TrailTest, testing::ValuesIn(trails),
                         [](const auto& tested) { return tested.param.name; });

class ChildCallsTest : public ClientTest {
 protected:
  template <class T>
  T answered(const std::function<void(NetworkService&, Completion<T>)>& call) {
    auto ended = outcome<T>();
    call(*service, ended.completion());
    settle();
    return ended.value();
  }
  std::optional<std::string> sentBody() const { return http.requests().at(0).body; }
};

TEST_F(ChildCallsTest, a_name_that_cannot_be_encoded_is_logged_with_the_encoders_message) {
  auto ended = outcome<ChildProfileWithDevices>();
  service->send(calls::createChild, {.name = notUtf8, .photoURL = {}, .birthYear = {}}, ended.completion());
  EXPECT_EQ(ended.errorText(), unwritableText);
  EXPECT_THAT(log.systemLines(),
              ElementsAre("[NetworkService] createChild - encode error: " + std::string(unwritableText)));
}

TEST_F(ChildCallsTest, an_empty_object_is_a_family_without_children) {
  http.answer("GET", "/children", 200, "{}");
  EXPECT_EQ(
      answered<ChildrenResponse>([](auto& service, auto end) { service.send(calls::getChildren, end); }),
      ChildrenResponse());
  EXPECT_EQ(log.systemLines().back(), "[NetworkService] getChildren - decoded 0 children");
}

TEST_F(ChildCallsTest, children_have_devices_and_policies_and_other_devices_are_unassigned) {
  http.answer("GET", "/children", 200,
              R"({"children":[{"id":"c1","family_id":"f1","name":"Mia","is_active":true,"created_at":"c",)"
              R"("updated_at":"u","devices":[)" +
                  deviceBody() + R"(],"policy":)" + childPolicyBody() + R"(}],"unassigned_devices":[)" +
                  deviceBody() + "," + deviceBody() + "]}");
  const auto answer =
      answered<ChildrenResponse>([](auto& service, auto end) { service.send(calls::getChildren, end); });
  ASSERT_THAT(answer.children, SizeIs(1));
  EXPECT_THAT(answer.children[0].devices, SizeIs(1));
  EXPECT_EQ(answer.children[0].policy->blockMode, "blacklist");
  EXPECT_THAT(answer.unassignedDevices, SizeIs(2));
}

TEST_F(ChildCallsTest, a_new_child_is_sent_with_its_known_fields) {
  service->send(calls::createChild, {.name = " Mia ", .photoURL = "https://p.example/1", .birthYear = 2015},
                outcome<ChildProfileWithDevices>().completion());
  EXPECT_EQ(sentBody(), R"({"name":" Mia ","photo_url":"https://p.example/1","birth_year":2015})");
}

TEST_F(ChildCallsTest, an_update_sends_only_the_key_that_is_set) {
  UpdateChildRequest changes;
  changes.isActive = false;
  service->send(calls::updateChild, {"c1"}, changes, outcome<ChildProfile>().completion());
  EXPECT_EQ(sentBody(), R"({"is_active":false})");
}

TEST_F(ChildCallsTest, an_empty_update_is_sent) {
  service->send(calls::updateChild, {"c1"}, {}, outcome<ChildProfile>().completion());
  EXPECT_EQ(sentBody(), "{}");
}

TEST_F(ChildCallsTest, an_updated_child_without_a_display_order_is_rejected) {
  http.answer("PUT", "/children/c1", 200, childBody());
  auto ended = outcome<ChildProfile>();
  service->send(calls::updateChild, {"c1"}, {}, ended.completion());
  settle();
  EXPECT_EQ(ended.errorText(), missingText);
}

TEST_F(ChildCallsTest, a_child_without_a_display_order_is_accepted) {
  http.answer("GET", "/children/c1", 200, childBody());
  const auto child = answered<ChildProfileWithDevices>(
      [](auto& service, auto end) { service.send(calls::getChild, {"c1"}, end); });
  EXPECT_EQ(child.displayOrder, 0);
  EXPECT_EQ(child.policy, std::nullopt);
}

TEST_F(ChildCallsTest, deleting_a_missing_child_is_not_found) {
  http.answer("DELETE", "/children/c1", 404, R"({"error":"own"})");
  auto ended = outcome<void>();
  service->send(calls::deleteChild, {"c1"}, ended.completion());
  settle();
  EXPECT_EQ(ended.error(), NetworkError::notFound());
  EXPECT_EQ(ended.errorText(), "Resource not found");
}

TEST_F(ChildCallsTest, a_domain_that_is_invalid_in_a_url_is_not_sent) {
  auto blocked = outcome<ChildPolicy>();
  auto allowed = outcome<ChildPolicy>();
  for (const std::string domain : {"a b", "bücher.example", "a\nb", "<b>", "100%"}) {
    service->send(calls::removeChildBlockedDomain, {"c1", domain}, blocked.completion());
    service->send(calls::removeChildAllowedDomain, {"c1", domain}, allowed.completion());
    EXPECT_EQ(blocked.error(), NetworkError::invalidResponse()) << domain;
    EXPECT_EQ(allowed.error(), NetworkError::invalidResponse()) << domain;
  }
  EXPECT_THAT(http.requests(), IsEmpty());
}

TEST_F(ChildCallsTest, ids_and_domains_are_not_encoded_in_the_path) {
  service->send(calls::removeChildBlockedDomain, {"c/1", "x.example/a?b=%41#c"},
                outcome<ChildPolicy>().completion());
  service->send(calls::removeChildAllowedDomain, {"c1", ""}, outcome<ChildPolicy>().completion());
  service->send(calls::unlinkDevice, {"c1", "d?1"}, outcome<void>().completion());
  ASSERT_THAT(http.requests(), SizeIs(3));
  EXPECT_EQ(http.requests()[0].url,
            "https://au.example/api/v1/children/c/1/policy/block/x.example/a?b=%41#c");
  EXPECT_EQ(http.requests()[1].url, "https://au.example/api/v1/children/c1/policy/allow/");
  EXPECT_EQ(http.requests()[2].url, "https://au.example/api/v1/children/c1/devices/d?1");
}

TEST_F(ChildCallsTest, a_domain_is_sent_unchanged) {
  service->send(calls::addChildBlockedDomain, {"c1"}, {"https://X.example/ \n"},
                outcome<ChildPolicy>().completion());
  service->send(calls::addChildAllowedDomain, {"c1"}, {""}, outcome<ChildPolicy>().completion());
  ASSERT_THAT(http.requests(), SizeIs(2));
  EXPECT_EQ(http.requests()[0].body, R"({"domain":"https://X.example/ \n"})");
  EXPECT_EQ(http.requests()[1].body, R"({"domain":""})");
}

TEST_F(ChildCallsTest, the_mode_is_sent_unchanged) {
  service->send(calls::updateChildPolicy, {"c1"}, {true, "whitelist"}, outcome<ChildPolicy>().completion());
  EXPECT_EQ(sentBody(), R"({"is_blocked":true,"block_mode":"whitelist"})");
}

TEST_F(ChildCallsTest, a_changed_policy_is_returned_whole) {
  const std::string body =
      R"({"id":"p1","child_id":"c1","family_id":"f1","is_blocked":true,"block_mode":"whitelist",)"
      R"("blocked_domains":["a","b"],"allowed_domains":["c"],"created_at":"c","updated_at":"u"})";
  http.answerAlways("PUT", "/children/c1/policy", 200, body);
  http.answerAlways("POST", "/children/c1/policy/block", 200, body);
  http.answerAlways("DELETE", "/children/c1/policy/block/x", 200, body);
  http.answerAlways("POST", "/children/c1/policy/allow", 200, body);
  http.answerAlways("DELETE", "/children/c1/policy/allow/x", 200, body);
  const auto expected = decodeJson<ChildPolicy>(body).value();
  for (const auto& call : std::vector<std::function<void(NetworkService&, Completion<ChildPolicy>)>>{
           [](auto&service, auto end) {
             service.send(calls::updateChildPolicy, {"c1"}, {true, "whitelist"}, end);
           },
           [](auto&service, auto end) { service.send(calls::addChildBlockedDomain, {"c1"}, {"x"}, end); },
           [](auto&service, auto end) {
             service.send(calls::removeChildBlockedDomain, {"c1", "x"}, end);
           },
           [](auto&service, auto end) { service.send(calls::addChildAllowedDomain, {"c1"}, {"x"}, end); },
           [](auto&service, auto end) {
             service.send(calls::removeChildAllowedDomain, {"c1", "x"}, end);
           }}) {
    EXPECT_EQ(answered<ChildPolicy>(call), expected);
  }
}

}  // namespace
}  // namespace quillmar
