#include <set>
#include <thread>

#include "tests/sandbox/support/household.h"

namespace quillmar::sandbox::test {
namespace {

using namespace std::chrono_literals;

// curl's exit codes for a connection that ended early: after a part of the answer, before any, or during
// HTTP/2.
const std::set<int> broken{18, 52, 56, 92};
constexpr int timedOut = 28;

class MisbehaviourTest : public ServiceTest {
 protected:
  MisbehaviourTest() : ann_{givenAccount("ann@example.com")} {}

  Reply steering(const Json& wishes) { return ask("POST", "/sandbox/misbehaviour", {}, wishes.dump()); }
  Reply anyCall(const std::vector<std::string>& options = {}) {
    return ask("GET", "/children", ann_, {}, options);
  }

  std::string ann_;
};

TEST_F(MisbehaviourTest, pages_of_other_sites_may_not_steer_the_service) {
  for (const std::string origin : {"https://evil.example", "null", "http://127.0.0.1:1"}) {
    const auto refused = ask("POST", "/sandbox/reset", {}, {}, {"--header", "Origin: " + origin});
    EXPECT_EQ(refused.status, 403) << origin;
    EXPECT_EQ(refused.error(), "Pages of other sites may not steer this service.");
  }
  for (const std::string& own : {service().url(), service().secureUrl()}) {
    EXPECT_EQ(ask("GET", "/sandbox/misbehaviour", {}, {}, {"--header", "Origin: " + own}).status, 200);
  }
  EXPECT_EQ(ask("GET", "/children", {}, {}, {"--header", "Origin: https://evil.example"}).status, 401);
}

TEST_F(MisbehaviourTest, a_service_starts_without_any) {
  const auto shown = ask("GET", "/sandbox/misbehaviour").json();
  EXPECT_EQ(shown.at("latency_ms"), 0);
  EXPECT_EQ(shown.at("fail_everything"), false);
  EXPECT_EQ(shown.at("checkin_status"), "ok");
  EXPECT_EQ(shown.at("public_address"), nullptr);
}

TEST_F(MisbehaviourTest, a_change_affects_only_its_keys_and_null_resets_one) {
  steering({{"latency_ms", 1}, {"checkin_status", "suspended"}});
  EXPECT_EQ(steering({{"checkin_status", nullptr}}).json().at("checkin_status"), "ok");
  EXPECT_EQ(service().misbehaviour().latency, 1ms);
}

TEST_F(MisbehaviourTest, an_invalid_setting_changes_nothing) {
  for (const Json& wishes :
       std::vector<Json>{Json{{"latency_ms", -1}}, Json{{"error_share", 1.5}}, Json{{"error_status", 200}},
                         Json{{"error_body", "xml"}}, Json{{"drop", "gently"}}}) {
    EXPECT_EQ(steering(wishes).status, 422) << wishes;
  }
  EXPECT_EQ(steering({{"latency_ms", "1"}}).status, 400);
  EXPECT_EQ(anyCall().status, 200);
}

TEST_F(MisbehaviourTest, exactly_the_requested_number_of_answers_are_errors) {
  steering({{"error_count", 2}});
  EXPECT_EQ(anyCall().status, 500);
  const auto second = anyCall();
  EXPECT_EQ(second.status, 500);
  EXPECT_NE(second.error(), "");
  EXPECT_EQ(anyCall().status, 200);
}

TEST_F(MisbehaviourTest, an_error_may_be_html_and_of_any_status) {
  steering({{"error_count", 1}, {"error_body", "html"}, {"error_status", 503}});
  const auto reply = anyCall();
  EXPECT_EQ(reply.status, 503);
  EXPECT_EQ(reply.contentType, "text/html");
  EXPECT_THAT(reply.body, testing::StartsWith("<html>"));
}

TEST_F(MisbehaviourTest, a_call_that_fails_is_not_carried_out) {
  steering({{"error_count", 1}});
  EXPECT_EQ(ask("POST", "/children", ann_, R"({"name":"Mia"})").status, 500);
  EXPECT_EQ(given("GET", "/children", ann_).at("children"), Json::array());
}

TEST_F(MisbehaviourTest, everything_but_the_control_calls_may_fail) {
  steering({{"fail_everything", true}});
  EXPECT_EQ(anyCall().status, 500);
  EXPECT_EQ(ask("POST", "/device/checkin", {}, "{}").status, 500);
  EXPECT_EQ(steering({{"fail_everything", false}}).status, 200);
  EXPECT_EQ(anyCall().status, 200);
}

TEST_F(MisbehaviourTest, a_share_of_the_answers_are_errors) {
  steering({{"error_share", 0.5}});
  int errors = 0;
  for (int i = 0; i < 40; ++i) errors += anyCall().status == 500 ? 1 : 0;
  EXPECT_GT(errors, 0);
  EXPECT_LT(errors, 40);
}

TEST_F(MisbehaviourTest, it_may_affect_some_paths_only) {
  steering({{"fail_everything", true}, {"only_path", "/auth/"}});
  EXPECT_EQ(anyCall().status, 200);
  EXPECT_EQ(ask("POST", "/auth/refresh", ann_).status, 500);
}

TEST_F(MisbehaviourTest, a_connection_drops_before_the_answer_though_the_call_was_carried_out) {
  for (const std::string version : {"--http1.1", "--http2"}) {
    steering({{"drop_count", 1}});
    const auto reply = ask("POST", "/children", ann_, R"({"name":"Mia"})", {version});
    EXPECT_TRUE(broken.contains(reply.exitStatus)) << version << ' ' << reply.exitStatus;
    EXPECT_EQ(reply.status, 0);
  }
  EXPECT_EQ(given("GET", "/children", ann_).at("children").size(), 2U);
  EXPECT_EQ(anyCall().status, 200);
}

TEST_F(MisbehaviourTest, a_connection_drops_in_the_middle_of_a_body) {
  const auto whole = anyCall().body;
  for (const std::string version : {"--http1.1", "--http2"}) {
    steering({{"drop_count", 1}, {"drop", "in_body"}});
    const auto reply = anyCall({version});
    EXPECT_TRUE(broken.contains(reply.exitStatus)) << version << ' ' << reply.exitStatus;
    EXPECT_LT(reply.body.size(), whole.size());
  }
  EXPECT_EQ(anyCall().body, whole);
}

TEST_F(MisbehaviourTest, late_answers_and_slow_bodies_arrive_whole) {
  const auto whole = anyCall().body;
  for (const std::string version : {"--http1.1", "--http2"}) {
    const auto secondsFor = [&](const Json& wishes) {
      steering(wishes);
      const auto reply = anyCall({version});
      EXPECT_EQ(reply.body, whole) << version;
      steering({{"latency_ms", nullptr}, {"body_ms", nullptr}});
      return reply.seconds;
    };
    EXPECT_GE(secondsFor({{"latency_ms", 120}}), 0.12) << version;
    EXPECT_GE(secondsFor({{"body_ms", 120}}), 0.1) << version;
  }
}

TEST_F(MisbehaviourTest, answers_are_held_until_they_are_released) {
  service().misbehave({.onlyPath = "/children", .hold = true});
  EXPECT_EQ(anyCall({"--max-time", "0.2"}).exitStatus, timedOut);
  Reply held;
  std::thread waiting{[&] { held = anyCall({"--http2"}); }};
  EXPECT_EQ(ask("GET", "/family", ann_).status, 200) << "other paths go on";
  service().misbehave({});
  waiting.join();
  EXPECT_EQ(held.status, 200);
}

TEST_F(MisbehaviourTest, expired_tokens_are_accepted_for_a_refresh) {
  EXPECT_EQ(ask("POST", "/sandbox/expire-tokens").json().at("expired"), 1);
  EXPECT_EQ(anyCall().status, 401);
  const auto refreshed = ask("POST", "/auth/refresh", ann_);
  EXPECT_EQ(refreshed.status, 200);
  EXPECT_EQ(ask("GET", "/children", refreshed.json().at("token")).status, 200);
}

TEST_F(MisbehaviourTest, a_refresh_may_be_refused) {
  steering({{"refuse_refresh", true}});
  EXPECT_EQ(ask("POST", "/auth/refresh", ann_).status, 401);
  EXPECT_EQ(anyCall().status, 200) << "the token itself is good";
}

TEST_F(MisbehaviourTest, the_answer_of_a_checkin_can_be_set) {
  const Json checkin{{"device_id", givenDevice(ann_)}, {"device_type", "ios"}};
  steering({{"checkin_status", "suspended"}});
  EXPECT_EQ(ask("POST", "/device/checkin", {}, checkin.dump()).json().at("status"), "suspended");
  steering({{"without_endpoint", true}});
  EXPECT_EQ(ask("POST", "/device/checkin", {}, checkin.dump()).json().at("doh_endpoint"), nullptr);
}

TEST_F(MisbehaviourTest, a_device_is_given_another_endpoint_at_its_next_checkin) {
  const auto device = givenDevice(ann_);
  const auto endpoint = [&] {
    return given("POST", "/device/checkin", {}, {{"device_id", device}, {"device_type", "ios"}})
        .at("doh_endpoint");
  };
  const auto first = endpoint();
  const auto moved = ask("POST", "/sandbox/endpoint", {}, Json{{"device_id", device}}.dump()).json();
  EXPECT_EQ(moved.at("doh_endpoint"), endpoint());
  EXPECT_NE(endpoint(), first);
  EXPECT_TRUE(service().moveEndpoint(device, "https://elsewhere.example/dns"));
  EXPECT_EQ(endpoint(), "https://elsewhere.example/dns");
  EXPECT_FALSE(service().moveEndpoint("nobody"));
}

TEST_F(MisbehaviourTest, a_pending_code_is_approved_without_any_account) {
  restart({});
  const auto pending = given("POST", "/enrollment/init", {},
                             {{"device_id", "A"}, {"device_name", "Robin's phone"}, {"device_type", "ios"}});
  const auto approved =
      ask("POST", "/sandbox/approve", {}, Json{{"enrollment_code", pending.at("enrollment_code")}}.dump());
  EXPECT_EQ(approved.status, 201);
  EXPECT_NE(approved.json().at("device").at("child_id"), nullptr);
  EXPECT_EQ(approved.json().at("device").at("device_name"), "Robin's phone");
  EXPECT_FALSE(service().approve(pending.at("enrollment_code").get<std::string>())) << "a code works once";
  EXPECT_FALSE(service().approve("AAAAAAAA"));
}

TEST_F(MisbehaviourTest, a_device_is_approved_into_the_existing_family) {
  const auto child = givenChild(ann_, "Mia");
  const auto pending = given("POST", "/enrollment/init", {},
                             {{"device_id", "A"}, {"device_name", "Phone"}, {"device_type", "ios"}});
  EXPECT_TRUE(service().approve(pending.at("enrollment_code").get<std::string>()));
  EXPECT_EQ(given("GET", "/children/" + child, ann_).at("devices")[0].at("id"), pending.at("device_id"));
}

TEST_F(MisbehaviourTest, recorded_requests_are_listed_unchanged) {
  service().clearRequests();
  ask("PUT", "/children/a%20b?x=1", ann_, R"({"name": "Zoë"})");
  ask("POST", "/auth/refresh", "made up");
  const auto requests = service().requests();
  ASSERT_EQ(requests.size(), 2U);
  EXPECT_EQ(requests[0].method, "PUT");
  EXPECT_EQ(requests[0].target, "/api/v1/children/a%20b?x=1");
  EXPECT_EQ(requests[0].body, R"({"name": "Zoë"})");
  EXPECT_EQ(header(requests[0].headers, "Authorization"), "Bearer " + ann_);
  EXPECT_EQ(header(requests[1].headers, "content-type"), "");

  const auto told = ask("GET", "/sandbox/requests").json().at("requests");
  ASSERT_EQ(told.size(), 2U);
  EXPECT_EQ(told[0].at("path"), "/api/v1/children/a%20b?x=1");
  EXPECT_EQ(told[0].at("body"), R"({"name": "Zoë"})");
  EXPECT_EQ(ask("DELETE", "/sandbox/requests").status, 204);
  EXPECT_TRUE(service().requests().empty());
}

TEST_F(MisbehaviourTest, a_reset_restores_the_initial_state) {
  anyCall();
  steering({{"fail_everything", true}});
  EXPECT_EQ(ask("POST", "/sandbox/reset").status, 204);
  EXPECT_TRUE(service().requests().empty());
  EXPECT_EQ(anyCall().status, 401);
  EXPECT_EQ(
      ask("POST", "/auth/login", {}, R"({"email":"ann@example.com","password":"correct horse"})").status,
      401);
  givenAccount("ann@example.com");
}

TEST_F(MisbehaviourTest, the_clock_can_be_put_forward_but_not_back) {
  EXPECT_EQ(ask("POST", "/sandbox/clock", {}, R"({"seconds":86400})").json().at("server_time"),
            "2026-10-09T22:31:00.250Z");
  EXPECT_EQ(anyCall().status, 401) << "the token's day is over";
  EXPECT_EQ(ask("POST", "/sandbox/clock", {}, R"({"seconds":-1})").status, 422);
}

}  // namespace
}  // namespace quillmar::sandbox::test
