#include "client/enrollment_calls.h"

#include <string>
#include <vector>

#include "tests/client/client_test.h"

namespace quillmar {
namespace {

// The child's side.

class ChildEnrollmentCallsTest : public ClientTest {
 protected:
  Outcome<EnrollmentStatusResponse> poll(const std::string& deviceId) {
    auto polled = outcome<EnrollmentStatusResponse>();
    wasSent = service->getEnrollmentStatus(deviceId, polled.completion());
    return polled;
  }

  bool wasSent = false;
};

TEST_F(ChildEnrollmentCallsTest, a_poll_with_an_invalid_url_returns_false_and_never_completes) {
  for (const std::string id : {"d 1", "d\n1", "dé", "d%zz", "d#1#2"}) {
    const auto polled = poll(id);
    settle();
    EXPECT_FALSE(wasSent) << id;
    EXPECT_TRUE(polled.isPending()) << id;
  }
  EXPECT_THAT(http.requests(), IsEmpty());
  EXPECT_THAT(printed(), IsEmpty());
}

TEST_F(ChildEnrollmentCallsTest, the_id_is_not_encoded_in_the_path) {
  const auto polled = poll("a%20b/c?d");
  EXPECT_TRUE(wasSent);
  ASSERT_THAT(http.requests(), SizeIs(1));
  EXPECT_EQ(http.requests()[0].url, "https://au.example/api/v1/enrollment/status/a%20b/c?d");
}

TEST_F(ChildEnrollmentCallsTest, a_new_device_polls_the_default_root_and_an_enrolled_one_the_stored_root) {
  removeRoot();
  removeToken();
  const auto fresh = poll("d1");
  settings.set(NetworkService::apiURLKey, "https://own.example");
  const auto enrolled = poll("d1");
  ASSERT_THAT(http.requests(), SizeIs(2));
  EXPECT_EQ(http.requests()[0].url, "https://au.example/api/v1/enrollment/status/d1");
  EXPECT_EQ(http.requests()[1].url, "https://own.example/api/v1/enrollment/status/d1");
}

TEST_F(ChildEnrollmentCallsTest, an_unknown_region_uses_the_default_root) {
  settings.set(NetworkService::regionKey, "nowhere");
  service->send(calls::initEnrollment, {"d1", "Tablet", "ios"},
                outcome<InitEnrollmentResponse>().completion());
  ASSERT_THAT(http.requests(), SizeIs(1));
  EXPECT_EQ(http.requests()[0].url, "https://au.example/api/v1/enrollment/init");
}

TEST_F(ChildEnrollmentCallsTest, a_known_region_takes_precedence_over_the_default) {
  settings.set(NetworkService::regionKey, "singapore");
  const auto polled = poll("d1");
  ASSERT_THAT(http.requests(), SizeIs(1));
  EXPECT_EQ(http.requests()[0].url, "https://sg.example/api/v1/enrollment/status/d1");
}

TEST_F(ChildEnrollmentCallsTest, the_answers_are_returned_whole) {
  http.answer("POST", "/enrollment/init", 200,
              R"({"enrollment_code":"ABC123","device_id":"d2","expires_at":"e"})");
  http.answer(
      "GET", "/enrollment/status/d2", 200,
      R"({"status":"completed","device_id":"d2","doh_endpoint":"E","doh_base_url":"B","api_base_url":"A"})");
  auto init = outcome<InitEnrollmentResponse>();
  service->send(calls::initEnrollment, {"d1", "Tablet", "ios"}, init.completion());
  const auto status = poll("d2");
  settle();
  EXPECT_EQ(init.value(),
            (InitEnrollmentResponse{.enrollmentCode = "ABC123", .deviceId = "d2", .expiresAt = "e"}));
  EXPECT_EQ(status.value(), (EnrollmentStatusResponse{.status = "completed",
                                                      .deviceId = "d2",
                                                      .dohEndpoint = "E",
                                                      .dohBaseUrl = "B",
                                                      .apiBaseUrl = "A"}));
}

TEST_F(ChildEnrollmentCallsTest, neither_call_logs_or_stores_anything) {
  http.answer("POST", "/enrollment/init", 500, R"({"error":"x"})");
  http.answer("GET", "/enrollment/status/d1", 200,
              R"({"status":"completed","device_id":"d1","api_base_url":"A"})");
  const auto before = settings.all();
  service->send(calls::initEnrollment, {"d1", "Tablet", "ios"},
                outcome<InitEnrollmentResponse>().completion());
  const auto polled = poll("d1");
  settle();
  EXPECT_TRUE(polled.succeeded());
  EXPECT_THAT(printed(), IsEmpty());
  EXPECT_EQ(settings.all(), before);
}

// The parent's side.

class CompleteEnrollmentTest : public ClientTest {
 protected:
  Outcome<CompleteEnrollmentResponse> complete(const std::string& deviceName = "Tablet", bool isRetry = false,
                                               const std::optional<std::string>& childId = {}) {
    auto completed = outcome<CompleteEnrollmentResponse>();
    service->completeEnrollment({"ABC123", deviceName, childId}, isRetry, completed.completion());
    return completed;
  }
  // The log lines from the answer on.
  std::vector<std::string> linesAfter(DataTaskResult result, bool isRetry = false) {
    http.answer("POST", "/enrollment/complete", std::move(result));
    const auto completed = complete("Tablet", isRetry);
    log.clear();
    settle();
    EXPECT_EQ(completed.calls(), 1);
    return printed();
  }
  static std::string line(const std::string& rest) { return "[NetworkService] completeEnrollment - " + rest; }

  const std::vector<std::string> start{line("baseURL: https://au.example/api/v1, isRetry: false"),
                                       line("token exists: true"),
                                       "[NetworkService] addAuthHeader - token found, length: 12",
                                       line("request URL: https://au.example/api/v1/enrollment/complete")};
};

TEST_F(CompleteEnrollmentTest, a_missing_token_is_logged_as_an_auth_header_error) {
  removeToken();
  const auto completed = complete();
  EXPECT_EQ(completed.error(), NetworkError::unauthorized());
  EXPECT_THAT(printed(), ElementsAre(line("baseURL: https://au.example/api/v1, isRetry: false"),
                                     line("token exists: false"),
                                     "[NetworkService] addAuthHeader - NO TOKEN FOUND in UserDefaults",
                                     line("auth header error: Please log in again")));
}

TEST_F(CompleteEnrollmentTest, a_body_that_cannot_be_encoded_is_logged_as_an_auth_header_error) {
  const auto completed = complete(notUtf8);
  EXPECT_EQ(completed.errorText(), unwritableText);
  EXPECT_EQ(printed().back(), line("auth header error: " + std::string(unwritableText)));
  EXPECT_THAT(printed(), SizeIs(4));
}

TEST_F(CompleteEnrollmentTest, a_missing_token_is_reported_before_a_bad_body) {
  removeToken();
  EXPECT_EQ(complete(notUtf8).error(), NetworkError::unauthorized());
}

TEST_F(CompleteEnrollmentTest, an_invalid_root_url_is_rejected_before_the_token_is_read) {
  breakRoot();
  EXPECT_EQ(complete().error(), NetworkError::invalidResponse());
  EXPECT_THAT(printed(), ElementsAre(line("baseURL: https://not a url/api/v1, isRetry: false"),
                                     line("token exists: true")));
}

TEST_F(CompleteEnrollmentTest, an_empty_token_is_a_token) {
  settings.set(NetworkService::authTokenKey, "");
  complete();
  EXPECT_TRUE(log.hasPrinted(line("token exists: true")));
  EXPECT_THAT(http.requests(), SizeIs(1));
}

TEST_F(CompleteEnrollmentTest, a_child_is_sent_only_if_given) {
  complete();
  complete("Tablet", false, "c1");
  ASSERT_THAT(http.requests(), SizeIs(2));
  EXPECT_EQ(http.requests()[0].body, R"({"enrollment_code":"ABC123","device_name":"Tablet"})");
  EXPECT_EQ(http.requests()[1].body,
            R"({"enrollment_code":"ABC123","device_name":"Tablet","child_id":"c1"})");
}

TEST_F(CompleteEnrollmentTest, the_start_is_logged) {
  complete();
  EXPECT_EQ(printed(), start);
}

TEST_F(CompleteEnrollmentTest, a_transport_error_is_logged) {
  EXPECT_THAT(linesAfter(transportFailure(Kind::timedOut)),
              ElementsAre(line("network error: The request timed out.")));
}

TEST_F(CompleteEnrollmentTest, a_missing_part_is_logged_without_a_status) {
  for (const auto& part : {answerWithoutData(401), answerWithoutResponse("x"), DataTaskResult{}}) {
    EXPECT_THAT(linesAfter(part), ElementsAre(line("no data or response")));
  }
}

TEST_F(CompleteEnrollmentTest, an_answer_that_is_not_http_logs_neither_status_nor_body) {
  EXPECT_THAT(linesAfter(answerThatIsNotHttp("x")), ElementsAre(line("error: Invalid response from server")));
}

TEST_F(CompleteEnrollmentTest, a_body_that_is_not_utf8_is_not_logged) {
  EXPECT_THAT(linesAfter(httpAnswer(500, notUtf8)),
              ElementsAre(line("status: 500"), line("error: Unknown error")));
}

TEST_F(CompleteEnrollmentTest, a_failure_is_logged_with_status_and_whole_body) {
  const std::string body = R"({"error":"Expired","pad":")" + std::string(1000, 'x') + R"("})";
  EXPECT_THAT(linesAfter(httpAnswer(410, body)),
              ElementsAre(line("status: 410"), line("response: " + body), line("error: Expired")));
}

TEST_F(CompleteEnrollmentTest, an_answer_that_does_not_decode_is_logged) {
  EXPECT_THAT(linesAfter(httpAnswer(200, "{}")), ElementsAre(line("status: 200"), line("response: {}"),
                                                             line("error: " + std::string(missingText))));
}

TEST_F(CompleteEnrollmentTest, a_success_is_logged_and_returned_whole) {
  http.answer("POST", "/enrollment/complete", 201, completedBody());
  const auto completed = complete();
  settle();
  EXPECT_EQ(completed.value().message, "done");
  EXPECT_EQ(completed.value().device.id, "d1");
  EXPECT_EQ(completed.value().dohEndpoint, "https://doh.example/d1");
  auto lines = start;
  lines.insert(lines.end(), {line("status: 201"), line("response: " + completedBody()), line("success")});
  EXPECT_EQ(printed(), lines);
}

TEST_F(CompleteEnrollmentTest, a_401_restarts_the_call_after_a_refresh) {
  http.answer("POST", "/enrollment/complete", 401, "no");
  http.answer("POST", "/enrollment/complete", 200, completedBody());
  http.answer("POST", "/auth/refresh", 200, authBody(newToken));
  const auto completed = complete("Tablet", false, "c1");
  log.clear();
  settle();
  EXPECT_TRUE(completed.succeeded());
  EXPECT_THAT(
      printed(),
      ElementsAre(line("status: 401"), line("response: no"), line("Got 401, attempting token refresh..."),
                  "[NetworkService] addAuthHeader - token found, length: 12",
                  "[NetworkService] Attempting token refresh...",
                  "[NetworkService] RefreshToken response status: 200",
                  "[NetworkService] Token refresh successful, new token length: 20",
                  line("Token refreshed, retrying request..."),
                  line("baseURL: https://au.example/api/v1, isRetry: true"), line("token exists: true"),
                  "[NetworkService] addAuthHeader - token found, length: 20",
                  line("request URL: https://au.example/api/v1/enrollment/complete"), line("status: 200"),
                  line("response: " + completedBody()), line("success")));
  EXPECT_EQ(http.requests()[2].body,
            R"({"enrollment_code":"ABC123","device_name":"Tablet","child_id":"c1"})");
}

TEST_F(CompleteEnrollmentTest, the_retry_reads_the_root_again) {
  http.answer("POST", "/enrollment/complete", 401);
  http.answer("POST", "/auth/refresh", 200, authBody(newToken));
  http.hold("POST", "/auth/refresh");
  const auto completed = complete();
  settle();
  removeRoot();
  http.releaseAll();
  settle();
  EXPECT_EQ(completed.error(), NetworkError::noRegionConfigured());
  EXPECT_EQ(http.count("POST", "/enrollment/complete"), 1);
}

TEST_F(CompleteEnrollmentTest, a_second_401_is_unauthorized_after_two_posts_and_one_refresh) {
  http.answerAlways("POST", "/enrollment/complete", 401, "no");
  http.answerAlways("POST", "/auth/refresh", 200, authBody(newToken));
  const auto completed = complete();
  settle();
  EXPECT_EQ(completed.error(), NetworkError::unauthorized());
  EXPECT_EQ(completed.calls(), 1);
  EXPECT_THAT(http.calls(),
              ElementsAre("POST /enrollment/complete", "POST /auth/refresh", "POST /enrollment/complete"));
  EXPECT_EQ(printed().back(), line("error: Please log in again"));
}

TEST_F(CompleteEnrollmentTest, a_call_started_as_a_retry_does_not_refresh) {
  EXPECT_THAT(linesAfter(httpAnswer(401, "no"), true),
              ElementsAre(line("status: 401"), line("response: no"), line("error: Please log in again")));
  EXPECT_EQ(refreshes(), 0);
}

TEST_F(CompleteEnrollmentTest, a_failed_refresh_is_logged_with_its_message_and_is_unauthorized) {
  http.answer("POST", "/enrollment/complete", 401, "no");
  http.answer("POST", "/auth/refresh", 500, R"({"error":"Down"})");
  const auto completed = complete();
  settle();
  EXPECT_EQ(completed.error(), NetworkError::unauthorized());
  EXPECT_EQ(printed().back(), line("Token refresh failed: Down"));
}

TEST_F(CompleteEnrollmentTest, a_running_refresh_is_shared) {
  auto refreshed = outcome<AuthResponse>();
  service->refreshToken(refreshed.completion());
  http.hold("POST", "/auth/refresh");
  http.answer("POST", "/enrollment/complete", 401);
  http.answer("POST", "/enrollment/complete", 200, completedBody());
  http.answer("POST", "/auth/refresh", 200, authBody(newToken));
  const auto completed = complete();
  settle();
  http.releaseAll();
  settle();
  EXPECT_TRUE(completed.succeeded());
  EXPECT_TRUE(refreshed.succeeded());
  EXPECT_EQ(refreshes(), 1);
}

class ManualEnrollmentTest : public ClientTest {
 protected:
  const std::string withToken = "[NetworkService] addAuthHeader - token found, length: 12";

  Outcome<ManualEnrollmentResponse> enroll(DataTaskResult result) {
    http.answer("POST", "/enrollment/manual", std::move(result));
    auto enrolled = outcome<ManualEnrollmentResponse>();
    service->send(calls::manualEnrollment, television, enrolled.completion());
    settle();
    return enrolled;
  }
};

TEST_F(ManualEnrollmentTest, a_success_is_returned_whole_and_its_body_is_not_logged) {
  const auto enrolled = enroll(httpAnswer(201, manualBody()));
  EXPECT_EQ(enrolled.value().dnsServer, "192.0.2.1");
  EXPECT_THAT(enrolled.value().setupInstructions.steps, ElementsAre("one", "two"));
  EXPECT_EQ(enrolled.value().device.id, "d1");
  EXPECT_THAT(printed(), ElementsAre(withToken));
}

TEST_F(ManualEnrollmentTest, a_refused_answer_is_logged) {
  EXPECT_EQ(enroll(httpAnswer(409, R"({"error":"Known"})")).error(), NetworkError::serverError("Known"));
  EXPECT_THAT(printed(),
              ElementsAre(withToken, R"([NetworkService] Manual enrollment response: {"error":"Known"})"));
}

TEST_F(ManualEnrollmentTest, an_answer_that_does_not_decode_is_logged) {
  EXPECT_EQ(enroll(httpAnswer(200, "{}")).errorText(), missingText);
  EXPECT_THAT(printed(), ElementsAre(withToken, "[NetworkService] Manual enrollment response: {}"));
}

TEST_F(ManualEnrollmentTest, a_body_that_is_not_utf8_is_not_logged) {
  EXPECT_EQ(enroll(httpAnswer(500, notUtf8)).error(), NetworkError::serverError("Unknown error"));
  EXPECT_THAT(printed(), ElementsAre(withToken));
}

TEST_F(ManualEnrollmentTest, a_transport_error_is_not_logged) {
  enroll(transportFailure(Kind::timedOut)).error();
  EXPECT_THAT(printed(), ElementsAre(withToken));
}

TEST_F(ManualEnrollmentTest, address_and_child_are_sent_if_given) {
  ManualEnrollmentRequest device = television;
  device.deviceIP = "";
  device.childId = "c1";
  service->send(calls::manualEnrollment, device, outcome<ManualEnrollmentResponse>().completion());
  ASSERT_THAT(http.requests(), SizeIs(1));
  EXPECT_EQ(http.requests()[0].body,
            R"({"device_name":"TV","device_type":"smart-tv","device_ip":"","child_id":"c1"})");
}

}  // namespace
}  // namespace quillmar
