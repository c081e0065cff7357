#include <array>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/client/client_test.h"

namespace quillmar {
namespace {

using testing::Pair;
using Answer = NetworkService::Answer;

class TokenRefreshTest : public ClientTest {
 protected:
  const std::string attempting = "[NetworkService] Attempting token refresh...";
  const std::string withOldToken = "[NetworkService] addAuthHeader - token found, length: 12";

  Outcome<AuthResponse> refresh() {
    auto refreshed = outcome<AuthResponse>();
    service->refreshToken(refreshed.completion());
    return refreshed;
  }
  // Adds to `order` when `who` completes.
  void refreshNoting(const std::string& who) {
    service->refreshToken([this, who](const Result<AuthResponse>&) {
      order.push_back(who + (service->isRefreshingToken() ? " while refreshing" : " when done"));
    });
  }
  // A refresh fails at once, and for this cause.
  void expectUnsent(const NetworkError& cause) {
    const auto refreshed = refresh();
    EXPECT_EQ(refreshed.error(), cause);
    EXPECT_FALSE(service->isRefreshingToken());
    EXPECT_THAT(http.requests(), IsEmpty());
  }
  void answerRefresh(DataTaskResult result) { http.answer("POST", "/auth/refresh", std::move(result)); }
  void answerRefresh(int status, std::string body = {}) {
    answerRefresh(httpAnswer(status, std::move(body)));
  }

  Outcome<Answer> perform(const std::string& path) {
    auto answered = outcome<Answer>();
    service->performRequest({.method = "GET", .url = *service->baseURL() + path, .headers = {}, .body = {}},
                            false, answered.completion());
    return answered;
  }

  std::vector<std::string> order;
};

TEST_F(TokenRefreshTest, without_a_root_nothing_is_sent) {
  removeRoot();
  expectUnsent(NetworkError::noRegionConfigured());
  EXPECT_THAT(printed(), ElementsAre("[NetworkService] RefreshToken failed: No region configured"));
}

TEST_F(TokenRefreshTest, with_an_invalid_root_url_nothing_is_sent) {
  breakRoot();
  expectUnsent(NetworkError::invalidResponse());
  EXPECT_THAT(printed(), IsEmpty());
}

TEST_F(TokenRefreshTest, without_a_token_nothing_is_sent) {
  removeToken();
  expectUnsent(NetworkError::unauthorized());
  EXPECT_THAT(printed(), ElementsAre("[NetworkService] addAuthHeader - NO TOKEN FOUND in UserDefaults"));
}

TEST_F(TokenRefreshTest, a_refresh_that_could_not_start_does_not_block_the_next) {
  removeToken();
  const auto first = refresh();
  settings.set(NetworkService::authTokenKey, oldToken);
  answerRefresh(200, authBody(newToken));
  const auto second = refresh();
  settle();
  EXPECT_TRUE(second.succeeded());
  EXPECT_EQ(first.calls(), 1);
}

TEST_F(TokenRefreshTest, it_is_a_post_with_the_old_token_and_no_body) {
  const auto refreshed = refresh();
  ASSERT_THAT(http.requests(), SizeIs(1));
  const HttpRequest sent = http.requests()[0];
  EXPECT_EQ(sent.method, "POST");
  EXPECT_EQ(sent.url, "https://au.example/api/v1/auth/refresh");
  EXPECT_EQ(sent.body, std::nullopt);
  EXPECT_EQ(sent.timeout, std::chrono::seconds(60));
  EXPECT_THAT(sent.headers, ElementsAre(Pair("Content-Type", "application/json"),
                                        Pair("Authorization", "Bearer " + oldToken)));
  EXPECT_THAT(printed(), ElementsAre(withOldToken, attempting));
  EXPECT_TRUE(service->isRefreshingToken());
  EXPECT_TRUE(refreshed.isPending());
}

TEST_F(TokenRefreshTest, an_empty_token_is_sent) {
  settings.set(NetworkService::authTokenKey, "");
  const auto refreshed = refresh();
  ASSERT_THAT(http.requests(), SizeIs(1));
  EXPECT_EQ(header(http.requests()[0], "Authorization"), "Bearer ");
}

TEST_F(TokenRefreshTest, success_stores_the_token_and_nothing_else) {
  answerRefresh(200, authBody(newToken));
  const int writes = settings.writes();
  const auto before = settings.all();
  const auto refreshed = refresh();
  settle();
  EXPECT_EQ(refreshed.value(), authResponse(newToken));
  EXPECT_FALSE(refreshed.onMainThread());
  EXPECT_EQ(refreshed.calls(), 1);
  EXPECT_FALSE(service->isRefreshingToken());
  EXPECT_EQ(storedToken(), newToken);
  EXPECT_EQ(settings.writes(), writes + 2);
  EXPECT_EQ(settings.synchronizations(), 1);
  EXPECT_EQ(settings.all().size(), before.size());
  EXPECT_THAT(printed(),
              ElementsAre(withOldToken, attempting, "[NetworkService] RefreshToken response status: 200",
                          "[NetworkService] Token refresh successful, new token length: 20"));
}

TEST_F(TokenRefreshTest, any_status_from_200_to_299_is_a_success) {
  answerRefresh(299, authBody(newToken));
  const auto refreshed = refresh();
  settle();
  EXPECT_TRUE(refreshed.succeeded());
  EXPECT_EQ(storedToken(), newToken);
}

TEST_F(TokenRefreshTest, the_length_in_the_log_counts_characters) {
  answerRefresh(200, authBody("né👨‍👩‍👧"));
  const auto refreshed = refresh();
  settle();
  EXPECT_EQ(printed().back(), "[NetworkService] Token refresh successful, new token length: 3");
}

TEST_F(TokenRefreshTest, an_empty_new_token_is_stored) {
  answerRefresh(200, authBody(""));
  const auto refreshed = refresh();
  settle();
  EXPECT_TRUE(refreshed.succeeded());
  EXPECT_EQ(storedToken(), "");
}

// The result of a failed refresh for its first caller, the log and the waiters.
struct BadEnd {
  std::string name;
  DataTaskResult answer;
  std::vector<std::string> lines;
  std::string firstHears;
  // nullopt: the waiters never complete.
  std::optional<std::string> waitersHear;
};

void PrintTo(const BadEnd& end, std::ostream* out) { *out << end.name; }

DataTaskResult errorBesideAnswer() {
  DataTaskResult result = httpAnswer(200, authBody(newToken));
  result.error = TransportError{Kind::networkConnectionLost, {}};
  return result;
}

const std::string missing(missingText);
const std::string malformed(malformedText);

const std::vector<BadEnd> badEnds{
    {"a_transport_error",
     transportFailure(Kind::timedOut),
     {"[NetworkService] RefreshToken network error: The request timed out."},
     "The request timed out.",
     "The request timed out."},
    {"an_error_beside_an_answer",
     errorBesideAnswer(),
     {"[NetworkService] RefreshToken network error: The network connection was lost."},
     "The network connection was lost.",
     "The network connection was lost."},
    {"no_data",
     answerWithoutData(200),
     {"[NetworkService] RefreshToken: No data or response"},
     "Invalid response from server",
     std::nullopt},
    {"nothing_at_all",
     {},
     {"[NetworkService] RefreshToken: No data or response"},
     "Invalid response from server",
     std::nullopt},
    {"no_response",
     answerWithoutResponse("{}"),
     {"[NetworkService] RefreshToken: No data or response"},
     "Invalid response from server",
     missing},
    {"an_answer_that_is_not_http",
     answerThatIsNotHttp("{}"),
     {"[NetworkService] RefreshToken decode/handle error: Invalid response from server"},
     "Invalid response from server",
     missing},
    {"a_refusal",
     httpAnswer(401, R"({"error":"expired"})"),
     {"[NetworkService] RefreshToken response status: 401",
      "[NetworkService] RefreshToken failed: Token invalid or expired"},
     "Please log in again",
     missing},
    {"a_refusal_without_a_word",
     httpAnswer(401),
     {"[NetworkService] RefreshToken response status: 401",
      "[NetworkService] RefreshToken failed: Token invalid or expired"},
     "Please log in again",
     malformed},
    {"a_ban",
     httpAnswer(403, R"({"error":"banned"})"),
     {"[NetworkService] RefreshToken response status: 403",
      "[NetworkService] RefreshToken decode/handle error: Access denied"},
     "Access denied",
     missing},
    {"a_missing_page",
     httpAnswer(404, "<html>"),
     {"[NetworkService] RefreshToken response status: 404",
      "[NetworkService] RefreshToken decode/handle error: Resource not found"},
     "Resource not found",
     malformed},
    {"a_failing_service",
     httpAnswer(500, R"({"error":"Down"})"),
     {"[NetworkService] RefreshToken response status: 500",
      "[NetworkService] RefreshToken decode/handle error: Down"},
     "Down",
     missing},
    {"a_success_without_the_account",
     httpAnswer(200, R"({"token":"secret-token-renewed","email":"e","name":"n"})"),
     {"[NetworkService] RefreshToken response status: 200",
      "[NetworkService] RefreshToken decode/handle error: " + missing},
     missing,
     missing},
    {"a_success_that_is_no_json",
     httpAnswer(200, "ok"),
     {"[NetworkService] RefreshToken response status: 200",
      "[NetworkService] RefreshToken decode/handle error: " + malformed},
     malformed,
     malformed},
    {"an_empty_success",
     httpAnswer(204),
     {"[NetworkService] RefreshToken response status: 204",
      "[NetworkService] RefreshToken decode/handle error: " + malformed},
     malformed,
     malformed},
};

class BadRefreshTest : public TokenRefreshTest, public testing::WithParamInterface<BadEnd> {
 protected:
  void SetUp() override { answerRefresh(GetParam().answer); }
};

TEST_P(BadRefreshTest, is_reported_to_its_caller_and_logged) {
  const auto refreshed = refresh();
  log.clear();
  settle();
  EXPECT_EQ(refreshed.errorText(), GetParam().firstHears);
  EXPECT_EQ(refreshed.calls(), 1);
  EXPECT_FALSE(refreshed.onMainThread());
  EXPECT_EQ(printed(), GetParam().lines);
}

TEST_P(BadRefreshTest, reaches_each_waiter_once_or_never) {
  const auto first = refresh();
  const std::vector waiters{refresh(), refresh()};
  log.clear();
  settle();
  EXPECT_EQ(first.errorText(), GetParam().firstHears);
  for (const auto& waiter : waiters) {
    EXPECT_EQ(waiter.calls(), GetParam().waitersHear ? 1 : 0);
    if (GetParam().waitersHear) {
      EXPECT_EQ(waiter.errorText(), *GetParam().waitersHear);
    }
  }
  EXPECT_EQ(printed(), GetParam().lines);
  EXPECT_EQ(refreshes(), 1);
}

TEST_P(BadRefreshTest, completes_its_caller_before_the_flag_is_cleared_and_the_waiters_after) {
  refreshNoting("first");
  refreshNoting("second");
  settle();
  ASSERT_THAT(order, SizeIs(GetParam().waitersHear ? 2 : 1));
  EXPECT_EQ(order.front(), "first while refreshing");
  EXPECT_TRUE(order.size() == 1 || order.back() == "second when done");
}

TEST_P(BadRefreshTest, leaves_the_session_unchanged) {
  settings.set(NetworkService::parentIdKey, "p1");
  const auto before = settings.all();
  const int writes = settings.writes();
  const auto refreshed = refresh();
  settle();
  EXPECT_EQ(settings.all(), before);
  EXPECT_EQ(settings.writes(), writes);
  EXPECT_EQ(settings.synchronizations(), 0);
}

TEST_P(BadRefreshTest, does_not_block_the_next_refresh) {
  const auto first = refresh();
  const auto waiter = refresh();
  settle();
  EXPECT_FALSE(service->isRefreshingToken());
  const int calls = waiter.calls();

  answerRefresh(200, authBody(newToken));
  const auto next = refresh();
  settle();
  EXPECT_TRUE(next.succeeded());
  EXPECT_EQ(first.calls(), 1);
  // Waiters that did not complete then are dropped and do not complete now.
  EXPECT_EQ(waiter.calls(), calls);
}

INSTANTIATE_TEST_SUITE_P(Ends, BadRefreshTest, testing::ValuesIn(badEnds),
                         [](const auto& tested) { return tested.param.name; });

TEST_F(TokenRefreshTest, waiters_of_a_failed_refresh_read_its_body_whatever_the_status) {
  answerRefresh(401, authBody("secret-odd"));
  const auto first = refresh();
  const auto waiter = refresh();
  settle();
  EXPECT_EQ(first.error(), NetworkError::unauthorized());
  EXPECT_EQ(waiter.value(), authResponse("secret-odd"));
  EXPECT_EQ(storedToken(), oldToken);
}

TEST_F(TokenRefreshTest, a_second_refresh_waits_for_the_first_and_sends_and_logs_nothing) {
  const auto first = refresh();
  log.clear();
  const auto second = refresh();
  EXPECT_THAT(printed(), IsEmpty());
  EXPECT_EQ(refreshes(), 1);
  EXPECT_TRUE(second.isPending());
  answerRefresh(200, authBody(newToken));
  settle();
  EXPECT_EQ(first.value(), authResponse(newToken));
  EXPECT_EQ(second.value(), authResponse(newToken));
  EXPECT_FALSE(second.onMainThread());
  EXPECT_EQ(refreshes(), 1);
}

TEST_F(TokenRefreshTest, a_waiting_refresh_needs_neither_root_nor_token) {
  const auto first = refresh();
  removeRoot();
  removeToken();
  const auto second = refresh();
  EXPECT_TRUE(second.isPending());
  answerRefresh(200, authBody(newToken));
  settle();
  EXPECT_TRUE(second.succeeded());
}

TEST_F(TokenRefreshTest, the_first_caller_completes_then_the_flag_is_cleared_then_the_waiters_complete) {
  refreshNoting("first");
  refreshNoting("second");
  refreshNoting("third");
  answerRefresh(200, authBody(newToken));
  settle();
  EXPECT_THAT(order, ElementsAre("first while refreshing", "second when done", "third when done"));
}

TEST_F(TokenRefreshTest, the_token_is_stored_before_any_completion_runs) {
  std::vector<std::string> seen;
  const auto look = [&](const Result<AuthResponse>&) { seen.push_back(storedToken().value_or("none")); };
  service->refreshToken(look);
  service->refreshToken(look);
  answerRefresh(200, authBody(newToken));
  settle();
  EXPECT_THAT(seen, ElementsAre(newToken, newToken));
}

TEST_F(TokenRefreshTest, a_refresh_requested_in_the_first_completion_completes_with_the_waiters) {
  auto late = outcome<AuthResponse>();
  service->refreshToken([&](const Result<AuthResponse>&) {
    service->refreshToken(late.completion());
    EXPECT_TRUE(late.isPending());
  });
  answerRefresh(200, authBody(newToken));
  settle();
  EXPECT_EQ(late.value(), authResponse(newToken));
  EXPECT_EQ(late.calls(), 1);
  EXPECT_EQ(refreshes(), 1);
}

TEST_F(TokenRefreshTest, a_refresh_requested_by_a_waiter_is_a_new_one) {
  auto late = outcome<AuthResponse>();
  const auto first = refresh();
  service->refreshToken([&](const Result<AuthResponse>&) { service->refreshToken(late.completion()); });
  answerRefresh(200, authBody(newToken));
  answerRefresh(200, authBody("secret-third"));
  settle();
  EXPECT_EQ(late.value(), authResponse("secret-third"));
  EXPECT_EQ(refreshes(), 2);
  EXPECT_EQ(header(http.requests()[1], "Authorization"), "Bearer " + newToken);
}

TEST_F(TokenRefreshTest, waiters_wait_for_a_refresh_started_by_a_waiter) {
  auto late = outcome<AuthResponse>();
  const auto first = refresh();
  service->refreshToken([&](const Result<AuthResponse>&) { service->refreshToken(late.completion()); });
  const auto lastOfTheOld = refresh();
  http.hold("POST", "/auth/refresh");
  settle();
  http.complete(0, httpAnswer(200, authBody(newToken)));
  settle();
  EXPECT_TRUE(lastOfTheOld.succeeded());
  EXPECT_TRUE(late.isPending());
  EXPECT_TRUE(service->isRefreshingToken());
}

// Several requests with 401 at once.

TEST_F(TokenRefreshTest, three_401s_at_once_cause_one_refresh_and_one_retry_each) {
  const std::vector<std::string> paths{"/one", "/two", "/three"};
  std::vector<Outcome<Answer>> answers;
  for (const auto& path : paths) {
    http.answer("GET", path, 401);
    http.answer("GET", path, 200, "yes " + path);
    answers.push_back(perform(path));
  }
  answerRefresh(200, authBody(newToken));
  http.hold("POST", "/auth/refresh");
  settle();
  EXPECT_THAT(http.calls(), ElementsAre("GET /one", "GET /two", "GET /three", "POST /auth/refresh"));
  http.releaseAll();
  settle();

  EXPECT_THAT(http.calls(), ElementsAre("GET /one", "GET /two", "GET /three", "POST /auth/refresh",
                                        "GET /one", "GET /two", "GET /three"));
  for (std::size_t i = 0; i < paths.size(); ++i) {
    EXPECT_EQ(answers[i].value().data, "yes " + paths[i]);
    EXPECT_EQ(answers[i].calls(), 1);
    EXPECT_EQ(header(http.requests()[i], "Authorization"), "Bearer " + oldToken);
    EXPECT_EQ(header(http.requests()[i + 4], "Authorization"), "Bearer " + newToken);
  }
  EXPECT_EQ(log.countPrinted("[NetworkService] Got 401, attempting token refresh..."), 3);
  EXPECT_EQ(log.countPrinted("[NetworkService] Token refreshed successfully, retrying request..."), 3);
  EXPECT_EQ(log.countPrinted(attempting), 1);
}

TEST_F(TokenRefreshTest, three_401s_and_a_failed_refresh_are_unauthorized_three_times) {
  std::vector<Outcome<Answer>> answers;
  for (const auto* path : {"/one", "/two", "/three"}) {
    http.answer("GET", path, 401);
    answers.push_back(perform(path));
  }
  answerRefresh(401, R"({"error":"expired"})");
  settle();
  for (const auto& answered : answers) {
    EXPECT_EQ(answered.error(), NetworkError::unauthorized());
    EXPECT_EQ(answered.calls(), 1);
  }
  EXPECT_THAT(http.calls(), ElementsAre("GET /one", "GET /two", "GET /three", "POST /auth/refresh"));
  EXPECT_EQ(log.countPrinted("[NetworkService] Token refresh failed: Please log in again"), 1);
  EXPECT_EQ(log.countPrinted("[NetworkService] Token refresh failed: " + missing), 2);
}

TEST_F(TokenRefreshTest, after_a_refresh_with_neither_error_nor_body_only_the_first_request_is_answered) {
  http.answer("GET", "/one", 401);
  http.answer("GET", "/two", 401);
  answerRefresh(answerWithoutData(200));
  const auto one = perform("/one");
  const auto two = perform("/two");
  http.hold("POST", "/auth/refresh");
  settle();
  http.releaseAll();
  settle();
  EXPECT_EQ(one.error(), NetworkError::unauthorized());
  EXPECT_TRUE(two.isPending());
  EXPECT_FALSE(service->isRefreshingToken());
}

// A session whose tasks complete when the test says so, even inside another completion.
class HandSession final : public HttpSession {
 public:
  void dataTask(HttpRequest request, Completion completion) override {
    requests.push_back(std::move(request));
    completions.push_back(std::move(completion));
  }

  std::vector<HttpRequest> requests;
  std::vector<Completion> completions;
};

TEST_F(TokenRefreshTest, a_request_with_401_during_the_first_completion_is_retried_after_the_waiters) {
  HandSession session;
  service =
      NetworkService::make(session, settings, log, platform.dispatch, Deployments::all("https://au.example"));
  const auto answered = perform("/one");
  service->refreshToken([&](const Result<AuthResponse>&) {
    const HttpSession::Completion refuse = session.completions[0];
    refuse(httpAnswer(401));
    EXPECT_THAT(session.requests, SizeIs(2));
  });
  ASSERT_THAT(session.requests, SizeIs(2));
  const HttpSession::Completion endRefresh = session.completions[1];
  endRefresh(httpAnswer(200, authBody(newToken)));

  ASSERT_THAT(session.requests, SizeIs(3));
  EXPECT_EQ(session.requests[2].url, "https://au.example/api/v1/one");
  EXPECT_EQ(header(session.requests[2], "Authorization"), "Bearer " + newToken);
  EXPECT_TRUE(answered.isPending());
  session.completions[2](httpAnswer(200, "yes"));
  EXPECT_EQ(answered.value().data, "yes");
  EXPECT_FALSE(service->isRefreshingToken());
}

TEST_F(TokenRefreshTest, answers_after_the_service_is_destroyed_are_dropped) {
  HandSession session;
  service =
      NetworkService::make(session, settings, log, platform.dispatch, Deployments::all("https://au.example"));
  const auto answered = perform("/one");
  const auto first = refresh();
  const auto waiter = refresh();
  service.reset();
  for (const auto& completion : session.completions) {
    completion(httpAnswer(200, authBody(newToken)));
  }
  EXPECT_TRUE(answered.isPending());
  EXPECT_TRUE(first.isPending());
  EXPECT_TRUE(waiter.isPending());
  EXPECT_EQ(storedToken(), oldToken);
}

}  // namespace
}  // namespace quillmar
