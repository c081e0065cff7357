#include "client/account_calls.h"

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "tests/client/client_test.h"

namespace quillmar {
namespace {

using testing::ElementsAreArray;

// Registration and login differ only in path, body and log lines.
struct Way {
  std::string name;
  std::string path;
  std::string word;
  std::vector<std::string> firstLines;
  std::string invalidURL;
  std::function<void(NetworkService&, Completion<AuthResponse>)> start;
};

void PrintTo(const Way& way, std::ostream* out) { *out << way.name; }

const std::vector<Way> ways{
    {"register",
     "/auth/register",
     "Register",
     {"[NetworkService] Register URL: https://au.example/api/v1/auth/register",
      "[NetworkService] Region from UserDefaults: australia"},
     "[NetworkService] Invalid URL: ",
     [](NetworkService& service, Completion<AuthResponse> end) {
       service.send(calls::registerAccount, newAccount, end);
     }},
    {"login",
     "/auth/login",
     "Login",
     {"[NetworkService] Login URL: https://au.example/api/v1/auth/login"},
     "[NetworkService] Invalid login URL: ",
     [](NetworkService& service, Completion<AuthResponse> end) {
       service.send(calls::login, {.email = "zoe@example.org", .password = password}, end);
     }},
};

class AuthenticationTest : public ClientTest, public testing::WithParamInterface<Way> {
 protected:
  Outcome<AuthResponse> start() {
    auto ended = outcome<AuthResponse>();
    GetParam().start(*service, ended.completion());
    return ended;
  }
  Outcome<AuthResponse> callAnswered(DataTaskResult result) {
    http.answer("POST", GetParam().path, std::move(result));
    const auto ended = start();
    log.clear();
    settle();
    EXPECT_EQ(ended.calls(), 1);
    return ended;
  }
  std::string line(const std::string& rest) const { return "[NetworkService] " + GetParam().word + rest; }
};

TEST_P(AuthenticationTest, the_start_is_logged) {
  const auto ended = start();
  EXPECT_THAT(printed(), ElementsAreArray(GetParam().firstLines));
}

TEST_P(AuthenticationTest, an_invalid_root_url_is_logged) {
  breakRoot();
  const auto ended = start();
  EXPECT_EQ(printed().front(), line(" URL: https://not a url/api/v1" + GetParam().path));
  EXPECT_EQ(printed().back(), GetParam().invalidURL + "https://not a url/api/v1" + GetParam().path);
}

TEST_P(AuthenticationTest, a_transport_error_is_logged) {
  callAnswered(transportFailure(Kind::timedOut)).error();
  EXPECT_THAT(printed(), ElementsAre(line(" network error: The request timed out.")));
}

TEST_P(AuthenticationTest, an_answer_without_data_or_response_is_logged) {
  for (const auto& part : {answerWithoutData(200), answerWithoutResponse("x"), DataTaskResult{}}) {
    callAnswered(part).error();
    EXPECT_THAT(printed(), ElementsAre(line(": No data or response")));
  }
}

TEST_P(AuthenticationTest, an_answer_that_is_not_http_has_no_status_to_log) {
  callAnswered(answerThatIsNotHttp("file")).error();
  EXPECT_THAT(printed(), ElementsAre(line(" decode/handle error: Invalid response from server"),
                                     "[NetworkService] Response body: file"));
}

TEST_P(AuthenticationTest, a_refusal_is_logged_with_its_body_and_starts_no_refresh) {
  EXPECT_EQ(callAnswered(httpAnswer(401, R"({"error":"wrong"})")).errorText(), "Please log in again");
  EXPECT_THAT(printed(),
              ElementsAre(line(" response status: 401"), line(" decode/handle error: Please log in again"),
                          R"([NetworkService] Response body: {"error":"wrong"})"));
  EXPECT_EQ(refreshes(), 0);
  EXPECT_EQ(storedToken(), oldToken);
}

TEST_P(AuthenticationTest, a_server_error_is_logged_with_its_body) {
  EXPECT_EQ(callAnswered(httpAnswer(400, R"({"error":"Taken"})")).error(),
            NetworkError::serverError("Taken"));
  EXPECT_THAT(printed(), ElementsAre(line(" response status: 400"), line(" decode/handle error: Taken"),
                                     R"([NetworkService] Response body: {"error":"Taken"})"));
}

TEST_P(AuthenticationTest, an_empty_body_is_logged_as_empty) {
  callAnswered(httpAnswer(500)).error();
  EXPECT_THAT(printed(),
              ElementsAre(line(" response status: 500"), line(" decode/handle error: Unknown error"),
                          "[NetworkService] Response body: "));
}

TEST_P(AuthenticationTest, a_body_that_is_not_utf8_is_not_logged) {
  callAnswered(httpAnswer(500, notUtf8)).error();
  EXPECT_THAT(printed(),
              ElementsAre(line(" response status: 500"), line(" decode/handle error: Unknown error")));
}

TEST_P(AuthenticationTest, a_success_without_a_token_stores_nothing) {
  const auto before = settings.all();
  const std::string body = R"({"parent_id":"p1","email":"e","name":"n"})";
  EXPECT_EQ(callAnswered(httpAnswer(200, body)).errorText(), missingText);
  EXPECT_EQ(settings.all(), before);
  EXPECT_THAT(printed(), ElementsAre(line(" response status: 200"),
                                     line(" decode/handle error: " + std::string(missingText)),
                                     "[NetworkService] Response body: " + body));
}

TEST_P(AuthenticationTest, a_success_stores_the_token_once_and_nothing_else) {
  auto expected = settings.all();
  expected[std::string(NetworkService::authTokenKey)] = newToken;
  const int writes = settings.writes();
  EXPECT_EQ(callAnswered(httpAnswer(201, authBody(newToken))).value(), authResponse(newToken));
  EXPECT_EQ(settings.all(), expected);
  EXPECT_EQ(settings.writes(), writes + 1);
  EXPECT_EQ(settings.synchronizations(), 0);
  EXPECT_THAT(printed(),
              ElementsAre(line(" response status: 201"), line(" success for user: zoe@example.org")));
}

TEST_P(AuthenticationTest, the_token_is_stored_before_the_completion_runs) {
  http.answer("POST", GetParam().path, 200, authBody(newToken));
  std::optional<std::string> seen;
  GetParam().start(*service, [&](const Result<AuthResponse>&) { seen = storedToken(); });
  settle();
  EXPECT_EQ(seen, newToken);
}

INSTANTIATE_TEST_SUITE_P(Ways, AuthenticationTest, testing::ValuesIn(ways),
                         [](const auto& tested) { return tested.param.name; });

class AccountCallsTest : public ClientTest {};

TEST_F(AccountCallsTest, a_registration_sends_the_given_region) {
  RegisterRequest account = newAccount;
  account.region = "singapore";
  service->send(calls::registerAccount, account, outcome<AuthResponse>().completion());
  ASSERT_THAT(http.requests(), SizeIs(1));
  EXPECT_EQ(
      http.requests()[0].body,
      R"({"email":"zoe@example.org","password":"secret-password","phone":"+61400000000","name":"Zoe Lee",)"
      R"("region":"singapore"})");
  EXPECT_EQ(http.requests()[0].url, "https://au.example/api/v1/auth/register");
}

TEST_F(AccountCallsTest, input_is_sent_untrimmed) {
  service->send(calls::login, {.email = " zoe@example.org ", .password = " secret-x\t"},
                outcome<AuthResponse>().completion());
  ASSERT_THAT(http.requests(), SizeIs(1));
  EXPECT_EQ(http.requests()[0].body, R"({"email":" zoe@example.org ","password":" secret-x\t"})");
}

TEST_F(AccountCallsTest, a_bad_url_is_reported_before_a_bad_body) {
  breakRoot();
  auto registered = outcome<AuthResponse>();
  auto loggedIn = outcome<AuthResponse>();
  auto deleted = outcome<void>();
  RegisterRequest account = newAccount;
  account.name = notUtf8;
  service->send(calls::registerAccount, account, registered.completion());
  service->send(calls::login, {.email = notUtf8, .password = password}, loggedIn.completion());
  service->send(calls::deleteAccount, {notUtf8}, deleted.completion());
  EXPECT_EQ(registered.error(), NetworkError::invalidResponse());
  EXPECT_EQ(loggedIn.error(), NetworkError::invalidResponse());
  EXPECT_EQ(deleted.error(), NetworkError::invalidResponse());
}

TEST_F(AccountCallsTest, deleting_the_account_clears_nothing) {
  settings.set(NetworkService::parentIdKey, "p1");
  http.answer("DELETE", "/auth/account", 200);
  const auto before = settings.all();
  auto ended = outcome<void>();
  service->send(calls::deleteAccount, {password}, ended.completion());
  settle();
  ended.value();
  EXPECT_EQ(settings.all(), before);
  EXPECT_THAT(printed(), ElementsAre("[NetworkService] addAuthHeader - token found, length: 12"));
}

TEST_F(AccountCallsTest, an_empty_password_is_sent) {
  service->send(calls::deleteAccount, {""}, outcome<void>().completion());
  ASSERT_THAT(http.requests(), SizeIs(1));
  EXPECT_EQ(http.requests()[0].body, R"({"password":""})");
}

TEST_F(AccountCallsTest, clearing_the_session_removes_its_four_keys_and_no_other) {
  for (const auto key : {NetworkService::parentIdKey, NetworkService::parentEmailKey,
                         NetworkService::parentNameKey, NetworkService::apiURLKey}) {
    settings.set(key, "x");
  }
  settings.set("familyId", "f");
  settings.set("authTokenTimestamp", VirtualDispatch::defaultStart);
  service->clearSession();
  EXPECT_EQ(settings.all(), (std::map<std::string, SettingValue>{
                                {"authTokenTimestamp", VirtualDispatch::defaultStart},
                                {"com.quillmar.apiBaseURL", "x"},
                                {"com.quillmar.region", "australia"},
                                {"familyId", "f"},
                            }));
  EXPECT_EQ(settings.synchronizations(), 0);
  EXPECT_EQ(settings.scrubs(), 1);
  EXPECT_THAT(http.requests(), IsEmpty());
  EXPECT_THAT(printed(), IsEmpty());
}

TEST_F(AccountCallsTest, clearing_an_empty_session_does_nothing) {
  service->clearSession();
  service->clearSession();
  EXPECT_EQ(storedToken(), std::nullopt);
}

}  // namespace
}  // namespace quillmar
