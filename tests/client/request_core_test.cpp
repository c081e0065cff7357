#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/client/client_test.h"

namespace quillmar {
namespace {

using testing::Pair;
using Answer = NetworkService::Answer;

// Validation of an answer.

struct Judgement {
  std::optional<int> status;
  std::string_view body;
  std::optional<NetworkError> error;
};

class ValidateResponseTest : public testing::TestWithParam<Judgement> {};

TEST_P(ValidateResponseTest, follows_the_status) {
  const auto& [status, body, error] = GetParam();
  const auto judged = NetworkService::validateResponse({status}, body);
  ASSERT_EQ(judged.ok(), !error) << status.value_or(-1);
  if (error) {
    EXPECT_EQ(judged.error(), *error) << status.value_or(-1);
  }
}

constexpr std::string_view saysWhy = R"({"error":"Because"})";

INSTANTIATE_TEST_SUITE_P(
    Answers, ValidateResponseTest,
    testing::Values(Judgement{std::nullopt, saysWhy, NetworkError::invalidResponse()},
                    Judgement{401, saysWhy, NetworkError::unauthorized()},
                    Judgement{403, saysWhy, NetworkError::forbidden()},
                    Judgement{404, saysWhy, NetworkError::notFound()},
                    Judgement{199, saysWhy, NetworkError::serverError("Because")},
                    Judgement{200, saysWhy, {}}, Judgement{200, "", {}}, Judgement{204, "", {}},
                    Judgement{299, "<html>", {}},
                    Judgement{300, saysWhy, NetworkError::serverError("Because")},
                    Judgement{302, "", NetworkError::serverError("Unknown error")},
                    Judgement{400, saysWhy, NetworkError::serverError("Because")},
                    Judgement{402, saysWhy, NetworkError::serverError("Because")},
                    Judgement{409, R"({"error":"Because","code":7})", NetworkError::serverError("Because")},
                    Judgement{429, R"({"error":""})", NetworkError::serverError("")},
                    Judgement{500, saysWhy, NetworkError::serverError("Because")},
                    Judgement{500, "<html>down</html>", NetworkError::serverError("Unknown error")},
                    Judgement{500, R"({"error":5})", NetworkError::serverError("Unknown error")},
                    Judgement{500, R"({"error":null})", NetworkError::serverError("Unknown error")},
                    Judgement{500, R"({"message":"Because"})", NetworkError::serverError("Unknown error")},
                    Judgement{503, "", NetworkError::serverError("Unknown error")}));

// The token of a request.

class AddAuthHeaderTest : public ClientTest {};

TEST_F(AddAuthHeaderTest, without_a_token_it_fails_and_leaves_the_request_alone) {
  removeToken();
  HttpRequest request;
  const auto added = service->addAuthHeader(request);
  ASSERT_FALSE(added.ok());
  EXPECT_EQ(added.error(), NetworkError::unauthorized());
  EXPECT_THAT(request.headers, IsEmpty());
  EXPECT_THAT(printed(), ElementsAre("[NetworkService] addAuthHeader - NO TOKEN FOUND in UserDefaults"));
}

TEST_F(AddAuthHeaderTest, a_token_that_is_not_text_counts_as_missing) {
  settings.set(NetworkService::authTokenKey, true);
  HttpRequest request;
  EXPECT_FALSE(service->addAuthHeader(request).ok());
  EXPECT_THAT(request.headers, IsEmpty());
}

TEST_F(AddAuthHeaderTest, an_empty_token_is_a_token) {
  settings.set(NetworkService::authTokenKey, "");
  HttpRequest request;
  EXPECT_TRUE(service->addAuthHeader(request).ok());
  EXPECT_THAT(request.headers, ElementsAre(Pair("Authorization", "Bearer ")));
  EXPECT_THAT(printed(), ElementsAre("[NetworkService] addAuthHeader - token found, length: 0"));
}

TEST_F(AddAuthHeaderTest, the_log_has_the_tokens_length_in_characters_and_not_the_token) {
  settings.set(NetworkService::authTokenKey, "né👨‍👩‍👧");
  HttpRequest request;
  EXPECT_TRUE(service->addAuthHeader(request).ok());
  EXPECT_THAT(request.headers, ElementsAre(Pair("Authorization", "Bearer né👨‍👩‍👧")));
  EXPECT_THAT(printed(), ElementsAre("[NetworkService] addAuthHeader - token found, length: 3"));
}

TEST_F(AddAuthHeaderTest, it_replaces_an_older_token_and_keeps_the_other_headers) {
  HttpRequest request;
  request.headers = {{"Content-Type", "application/json"}, {"Authorization", "Bearer stale"}};
  EXPECT_TRUE(service->addAuthHeader(request).ok());
  EXPECT_THAT(request.headers, ElementsAre(Pair("Content-Type", "application/json"),
                                           Pair("Authorization", "Bearer " + oldToken)));
}

// The steps of an authorised call.

class PerformRequestTest : public ClientTest {
 protected:
  const std::string refused = "[NetworkService] Got 401, attempting token refresh...";
  const std::string withOldToken = "[NetworkService] addAuthHeader - token found, length: 12";
  const std::string withNewToken = "[NetworkService] addAuthHeader - token found, length: 20";
  const HttpRequest request{.method = "PUT",
                            .url = "https://au.example/api/v1/things/7",
                            .headers = {{"Content-Type", "application/json"}},
                            .body = R"({"a":1})"};

  Outcome<Answer> perform(bool isRetry = false) {
    auto answered = outcome<Answer>();
    service->performRequest(request, isRetry, answered.completion());
    return answered;
  }
  void answerThing(DataTaskResult result) { http.answer("PUT", "/things/7", std::move(result)); }
  std::size_t sendings() const { return http.count("PUT", "/things/7"); }
};

TEST_F(PerformRequestTest, without_a_token_nothing_is_sent_and_the_call_fails_at_once) {
  removeToken();
  const auto answered = perform();
  EXPECT_EQ(answered.error(), NetworkError::unauthorized());
  settle();
  EXPECT_EQ(answered.calls(), 1);
  EXPECT_THAT(http.requests(), IsEmpty());
  EXPECT_THAT(printed(), ElementsAre("[NetworkService] addAuthHeader - NO TOKEN FOUND in UserDefaults"));
}

TEST_F(PerformRequestTest, the_token_is_the_only_thing_added) {
  answerThing(httpAnswer(200, "yes"));
  const auto answered = perform();
  settle();
  ASSERT_THAT(http.requests(), SizeIs(1));
  const HttpRequest sent = http.requests()[0];
  EXPECT_EQ(sent.method, "PUT");
  EXPECT_EQ(sent.url, request.url);
  EXPECT_EQ(sent.body, request.body);
  EXPECT_EQ(sent.timeout, std::chrono::seconds(60));
  EXPECT_THAT(sent.headers, ElementsAre(Pair("Content-Type", "application/json"),
                                        Pair("Authorization", "Bearer " + oldToken)));
  EXPECT_THAT(printed(), ElementsAre(withOldToken));
}

TEST_F(PerformRequestTest, a_transport_error_is_passed_on_unchanged_and_never_retried) {
  for (const auto kind : {Kind::timedOut, Kind::notConnectedToInternet, Kind::cancelled}) {
    answerThing(transportFailure(kind));
    const auto answered = perform();
    settle();
    EXPECT_EQ(answered.error(), (TransportError{kind, {}}));
    EXPECT_FALSE(answered.onMainThread());
  }
  EXPECT_EQ(sendings(), 3);
  EXPECT_EQ(refreshes(), 0);
}

TEST_F(PerformRequestTest, an_error_takes_precedence_over_a_complete_answer) {
  DataTaskResult result = httpAnswer(401, "body");
  result.error = TransportError{Kind::networkConnectionLost, {}};
  answerThing(std::move(result));
  const auto answered = perform();
  settle();
  EXPECT_EQ(answered.error(), (TransportError{Kind::networkConnectionLost, {}}));
  EXPECT_EQ(refreshes(), 0);
}

TEST_F(PerformRequestTest, without_data_or_response_the_answer_is_invalid_even_a_401) {
  for (auto result :
       {answerWithoutData(200), answerWithoutData(401), answerWithoutResponse("body"), DataTaskResult{}}) {
    answerThing(std::move(result));
    const auto answered = perform();
    settle();
    EXPECT_EQ(answered.error(), NetworkError::invalidResponse());
    EXPECT_EQ(answered.calls(), 1);
  }
  EXPECT_EQ(refreshes(), 0);
}

TEST_F(PerformRequestTest, every_answer_but_a_first_401_is_passed_on_with_its_body) {
  for (const int status : {200, 204, 302, 400, 403, 404, 500, 503}) {
    answerThing(httpAnswer(status, "body " + std::to_string(status)));
    const auto answered = perform();
    settle();
    EXPECT_EQ(answered.value().response.status, status);
    EXPECT_EQ(answered.value().data, "body " + std::to_string(status));
    EXPECT_FALSE(answered.onMainThread());
    EXPECT_EQ(answered.calls(), 1);
  }
  EXPECT_EQ(sendings(), 8);
  EXPECT_EQ(refreshes(), 0);
}

TEST_F(PerformRequestTest, an_answer_that_is_not_http_is_passed_on) {
  answerThing(answerThatIsNotHttp("file"));
  const auto answered = perform();
  settle();
  EXPECT_EQ(answered.value().response.status, std::nullopt);
  EXPECT_EQ(answered.value().data, "file");
  EXPECT_EQ(refreshes(), 0);
}

TEST_F(PerformRequestTest, an_empty_body_counts_as_data) {
  answerThing(httpAnswer(200, ""));
  const auto answered = perform();
  settle();
  EXPECT_EQ(answered.value().data, "");
}

TEST_F(PerformRequestTest, a_401_on_a_retry_is_passed_on_and_not_logged) {
  answerThing(httpAnswer(401, "no"));
  const auto answered = perform(true);
  settle();
  EXPECT_EQ(answered.value().response.status, 401);
  EXPECT_EQ(answered.value().data, "no");
  EXPECT_EQ(refreshes(), 0);
  EXPECT_THAT(printed(), ElementsAre(withOldToken));
}

TEST_F(PerformRequestTest, a_first_401_waits_for_the_refresh) {
  answerThing(httpAnswer(401));
  http.hold("POST", "/auth/refresh");
  const auto answered = perform();
  settle();
  EXPECT_TRUE(answered.isPending());
  EXPECT_EQ(refreshes(), 1);
  EXPECT_EQ(sendings(), 1);
}

TEST_F(PerformRequestTest, a_first_401_is_retried_once_with_the_new_token) {
  answerThing(httpAnswer(401));
  answerThing(httpAnswer(200, "yes"));
  http.answer("POST", "/auth/refresh", 200, authBody(newToken));
  const auto answered = perform();
  settle();
  EXPECT_EQ(answered.value().data, "yes");
  EXPECT_EQ(answered.calls(), 1);
  EXPECT_FALSE(answered.onMainThread());
  EXPECT_THAT(http.calls(), ElementsAre("PUT /things/7", "POST /auth/refresh", "PUT /things/7"));

  const HttpRequest repeated = http.requests()[2];
  EXPECT_EQ(repeated.method, "PUT");
  EXPECT_EQ(repeated.url, request.url);
  EXPECT_EQ(repeated.body, request.body);
  EXPECT_THAT(repeated.headers, ElementsAre(Pair("Content-Type", "application/json"),
                                            Pair("Authorization", "Bearer " + newToken)));
  EXPECT_THAT(
      printed(),
      ElementsAre(withOldToken, refused, withOldToken, "[NetworkService] Attempting token refresh...",
                  "[NetworkService] RefreshToken response status: 200",
                  "[NetworkService] Token refresh successful, new token length: 20",
                  "[NetworkService] Token refreshed successfully, retrying request...", withNewToken));
}

TEST_F(PerformRequestTest, a_401_after_the_refresh_is_passed_on_and_starts_no_second_refresh) {
  answerThing(httpAnswer(401));
  answerThing(httpAnswer(401, "still no"));
  http.answer("POST", "/auth/refresh", 200, authBody(newToken));
  const auto answered = perform();
  settle();
  EXPECT_EQ(answered.value().response.status, 401);
  EXPECT_EQ(answered.value().data, "still no");
  EXPECT_EQ(sendings(), 2);
  EXPECT_EQ(refreshes(), 1);
}

TEST_F(PerformRequestTest, a_transport_error_of_the_retry_is_passed_on_unchanged) {
  answerThing(httpAnswer(401));
  answerThing(transportFailure(Kind::timedOut));
  http.answer("POST", "/auth/refresh", 200, authBody(newToken));
  const auto answered = perform();
  settle();
  EXPECT_EQ(answered.error(), (TransportError{Kind::timedOut, {}}));
  EXPECT_EQ(sendings(), 2);
}

TEST_F(PerformRequestTest, a_failed_refresh_is_unauthorized_whatever_its_error) {
  struct Failure {
    DataTaskResult answer;
    std::string text;
  };
  const std::vector<Failure> failures{
      {transportFailure(Kind::timedOut), "The request timed out."},
      {answerWithoutData(200), "Invalid response from server"},
      {httpAnswer(401), "Please log in again"},
      {httpAnswer(403), "Access denied"},
      {httpAnswer(500, R"({"error":"Down"})"), "Down"},
      {httpAnswer(200, R"({"token":"x"})"), std::string(missingText)},
  };
  for (const auto& [answer, text] : failures) {
    answerThing(httpAnswer(401));
    http.answer("POST", "/auth/refresh", answer);
    log.clear();
    const auto answered = perform();
    settle();
    EXPECT_EQ(answered.error(), NetworkError::unauthorized());
    EXPECT_EQ(answered.calls(), 1);
    EXPECT_EQ(printed().back(), "[NetworkService] Token refresh failed: " + text);
    EXPECT_EQ(storedToken(), oldToken);
  }
  EXPECT_EQ(sendings(), failures.size());
}

TEST_F(PerformRequestTest, a_refresh_that_cannot_start_is_unauthorized) {
  answerThing(httpAnswer(401));
  removeRoot();
  const auto answered = perform();
  settle();
  EXPECT_EQ(answered.error(), NetworkError::unauthorized());
  EXPECT_EQ(refreshes(), 0);
  EXPECT_THAT(printed(),
              ElementsAre(withOldToken, refused, "[NetworkService] RefreshToken failed: No region configured",
                          "[NetworkService] Token refresh failed: No region configured. Please select a "
                          "region first."));
}

TEST_F(PerformRequestTest, a_session_that_ended_before_the_401_is_not_refreshed) {
  answerThing(httpAnswer(401));
  const auto answered = perform();
  service->clearSession();
  settle();
  EXPECT_EQ(answered.error(), NetworkError::unauthorized());
  EXPECT_THAT(http.calls(), ElementsAre("PUT /things/7"));
  EXPECT_FALSE(service->isRefreshingToken());
  EXPECT_EQ(printed().back(), "[NetworkService] Token refresh failed: Please log in again");
}

TEST_F(PerformRequestTest, a_session_that_ends_during_the_refresh_still_gets_the_new_token) {
  answerThing(httpAnswer(401));
  answerThing(httpAnswer(200, "yes"));
  http.answer("POST", "/auth/refresh", 200, authBody(newToken));
  http.hold("POST", "/auth/refresh");
  const auto answered = perform();
  settle();
  service->clearSession();
  http.releaseAll();
  settle();
  EXPECT_EQ(answered.value().data, "yes");
  EXPECT_EQ(storedToken(), newToken);
}

TEST_F(PerformRequestTest, the_token_is_read_for_each_request) {
  answerThing(httpAnswer(401));
  answerThing(httpAnswer(200, "yes"));
  http.answer("POST", "/auth/refresh", 200, authBody(newToken));
  const auto answered = perform();
  settings.set(NetworkService::authTokenKey, "secret-other");
  settle();
  EXPECT_TRUE(answered.succeeded());
  EXPECT_EQ(header(http.requests()[0], "Authorization"), "Bearer " + oldToken);
  EXPECT_EQ(header(http.requests()[1], "Authorization"), "Bearer secret-other");
  EXPECT_EQ(header(http.requests()[2], "Authorization"), "Bearer " + newToken);
}

}  // namespace
}  // namespace quillmar
