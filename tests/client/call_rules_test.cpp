// The rules that all calls share, checked for each call. Rules of a single call are tested elsewhere.

#include <algorithm>
#include <string>
#include <vector>

#include "tests/client/call_table.h"

namespace quillmar {
namespace {

using testing::ElementsAreArray;
using Headers = std::vector<std::pair<std::string, std::string>>;

class CallRulesTest : public ClientTest, public testing::WithParamInterface<ContractCall> {
 protected:
  Outcome<void> start() {
    auto ended = outcome<void>();
    GetParam().start(*service, ended.completion());
    return ended;
  }
  // Runs the call with this answer to its only request.
  Outcome<void> callAnswered(DataTaskResult result) {
    http.answer(GetParam().method, GetParam().path, std::move(result));
    const auto ended = start();
    settle();
    EXPECT_EQ(ended.calls(), 1);
    EXPECT_EQ(ended.onMainThread(), GetParam().ending == Ending::onMainQueue);
    return ended;
  }
  // Expects the call to fail without a request: at once on the caller's thread, or later on the main queue.
  Error failsUnsent(const std::function<void(NetworkService&, Completion<void>)>& call) {
    auto ended = outcome<void>();
    call(*service, ended.completion());
    EXPECT_EQ(ended.isPending(), GetParam().ending == Ending::onMainQueue);
    settle();
    EXPECT_EQ(ended.calls(), 1);
    EXPECT_TRUE(ended.onMainThread());
    EXPECT_THAT(http.requests(), IsEmpty());
    return ended.error();
  }
  void expectRefusal(int status, const std::optional<std::string>& words) {
    const auto ended = callAnswered(httpAnswer(status, words ? R"({"error":")" + *words + "\"}" : "<html>"));
    if (const auto expected = refusal(GetParam(), status, words)) {
      EXPECT_EQ(ended.error(), *expected) << status;
    } else {
      EXPECT_EQ(ended.errorText(), words ? missingText : malformedText) << status;
    }
  }
  Headers headersWith(const std::string& token) const {
    Headers headers;
    if (GetParam().body) {
      headers.emplace_back("Content-Type", "application/json");
    }
    if (isAuthorised()) {
      headers.emplace_back("Authorization", "Bearer " + token);
    }
    return headers;
  }
  bool isAuthorised() const { return GetParam().token == Token::bearer; }
  bool hasRecord() const { return !GetParam().answer.empty(); }
  std::string callName() const { return GetParam().method + ' ' + GetParam().path; }
};

// Failures before anything is sent, on the caller's thread.

TEST_P(CallRulesTest, without_a_root_nothing_is_sent_unless_the_call_has_a_default) {
  removeRoot();
  if (GetParam().root == Root::orDefault) {
    EXPECT_TRUE(start().isPending());
    ASSERT_THAT(http.requests(), SizeIs(1));
    EXPECT_EQ(http.requests()[0].url, "https://au.example/api/v1" + GetParam().path);
  } else {
    EXPECT_EQ(failsUnsent(GetParam().start), NetworkError::noRegionConfigured());
  }
  EXPECT_THAT(printed(), ElementsAreArray(GetParam().noRootLines));
}

TEST_P(CallRulesTest, with_an_invalid_root_url_nothing_is_sent) {
  breakRoot();
  if (GetParam().name == "getEnrollmentStatus") {
    const auto ended = start();
    settle();
    EXPECT_TRUE(ended.isPending());
    EXPECT_THAT(http.requests(), IsEmpty());
  } else {
    EXPECT_EQ(failsUnsent(GetParam().start), NetworkError::invalidResponse());
  }
}

TEST_P(CallRulesTest, without_a_token_only_calls_that_need_no_token_are_sent) {
  removeToken();
  if (!isAuthorised()) {
    EXPECT_TRUE(start().isPending());
    EXPECT_THAT(http.calls(), ElementsAre(callName()));
    return;
  }
  const auto error = failsUnsent(GetParam().start);
  EXPECT_EQ(error, NetworkError::unauthorized());
  EXPECT_EQ(error.localizedDescription(), "Please log in again");
  EXPECT_TRUE(log.hasPrinted("[NetworkService] addAuthHeader - NO TOKEN FOUND in UserDefaults"));
}

TEST_P(CallRulesTest, a_body_that_cannot_be_encoded_is_not_sent) {
  if (!GetParam().startUnwritable) {
    return;
  }
  EXPECT_EQ(failsUnsent(GetParam().startUnwritable).localizedDescription(), GetParam().unwritableEnd);
}

// The request.

TEST_P(CallRulesTest, the_request_matches_the_contract_exactly) {
  const auto ended = start();
  ASSERT_THAT(http.requests(), SizeIs(1));
  const HttpRequest sent = http.requests()[0];
  EXPECT_EQ(sent.method, GetParam().method);
  EXPECT_EQ(sent.url, "https://au.example/api/v1" + GetParam().path);
  EXPECT_EQ(sent.body, GetParam().body);
  EXPECT_EQ(sent.timeout, std::chrono::seconds(60));
  EXPECT_EQ(sent.headers, headersWith(oldToken));
  EXPECT_TRUE(ended.isPending());
}

TEST_P(CallRulesTest, a_stored_root_is_used) {
  settings.set(NetworkService::apiURLKey, "https://own.example");
  const auto ended = start();
  ASSERT_THAT(http.requests(), SizeIs(1));
  EXPECT_EQ(http.requests()[0].url, "https://own.example/api/v1" + GetParam().path);
}

// The outcome.

TEST_P(CallRulesTest, a_transport_error_is_passed_on_and_never_retried) {
  for (const auto kind : {Kind::timedOut, Kind::cannotConnectToHost, Kind::badServerResponse}) {
    EXPECT_EQ(callAnswered(transportFailure(kind)).error(), (TransportError{kind, {}}));
  }
  EXPECT_THAT(http.calls(), ElementsAre(callName(), callName(), callName()));
}

TEST_P(CallRulesTest, an_answer_with_a_missing_part_is_invalid) {
  for (const auto& part : {answerWithoutData(200), answerWithoutData(401), DataTaskResult{}}) {
    EXPECT_EQ(callAnswered(part).error(), NetworkError::invalidResponse());
  }
  for (const auto& part :
       {answerWithoutResponse(GetParam().answer), answerThatIsNotHttp(GetParam().answer)}) {
    const auto ended = callAnswered(part);
    if (GetParam().judging == Judging::byBody) {
      ended.value();
    } else {
      EXPECT_EQ(ended.error(), NetworkError::invalidResponse());
    }
  }
  EXPECT_EQ(refreshes(), 0);
}

TEST_P(CallRulesTest, a_200_is_a_success) {
  callAnswered(httpAnswer(200, GetParam().answer)).value();
  EXPECT_THAT(http.calls(), ElementsAre(callName()));
}

TEST_P(CallRulesTest, another_2xx_is_a_success_unless_the_call_requires_200) {
  for (const int status : {201, 299}) {
    const auto ended = callAnswered(httpAnswer(status, GetParam().answer));
    if (GetParam().judging == Judging::byExactly200) {
      EXPECT_EQ(ended.error(), NetworkError::serverError("Unknown error"));
    } else {
      ended.value();
    }
  }
}

TEST_P(CallRulesTest, a_204_is_a_success_only_for_calls_without_a_record) {
  const auto ended = callAnswered(httpAnswer(204, ""));
  if (GetParam().judging == Judging::byExactly200) {
    EXPECT_EQ(ended.error(), NetworkError::serverError("Unknown error"));
  } else if (hasRecord()) {
    EXPECT_EQ(ended.errorText(), malformedText);
  } else {
    ended.value();
  }
}

TEST_P(CallRulesTest, only_calls_with_a_record_read_the_body_of_a_success) {
  for (const auto& [body, text] :
       {std::pair{"<html>", malformedText}, {"", malformedText}, {"{}", missingText}}) {
    const auto ended = callAnswered(httpAnswer(200, body));
    const bool isRead = hasRecord() && !(GetParam().acceptsEmptyObject && body == std::string_view("{}"));
    if (isRead) {
      EXPECT_EQ(ended.errorText(), text);
    } else {
      ended.value();
    }
  }
}

TEST_P(CallRulesTest, an_error_status_has_the_services_message) {
  for (const int status : {302, 400, 403, 404, 409, 422, 500, 503}) {
    expectRefusal(status, "In its own words");
    expectRefusal(status, std::nullopt);
  }
  EXPECT_EQ(refreshes(), 0);
}

TEST_P(CallRulesTest, a_302_with_the_record_is_a_success_only_for_calls_that_accept_below_400) {
  const auto ended = callAnswered(httpAnswer(302, GetParam().answer));
  if (GetParam().judging == Judging::below400 || GetParam().judging == Judging::byBody) {
    ended.value();
  } else {
    EXPECT_EQ(ended.error(), NetworkError::serverError("Unknown error"));
  }
}

TEST_P(CallRulesTest, a_401_of_a_call_without_a_token_starts_no_refresh) {
  if (isAuthorised()) {
    return;
  }
  expectRefusal(401, "own");
  EXPECT_THAT(http.calls(), ElementsAre(callName()));
}

TEST_P(CallRulesTest, a_401_of_a_call_with_a_token_is_retried_once_with_the_same_body) {
  if (!isAuthorised()) {
    return;
  }
  http.answer("POST", "/auth/refresh", 200, authBody(newToken));
  http.answer(GetParam().method, GetParam().path, 401, R"({"error":"own"})");
  callAnswered(httpAnswer(200, GetParam().answer)).value();
  EXPECT_THAT(http.calls(), ElementsAre(callName(), "POST /auth/refresh", callName()));
  EXPECT_EQ(http.requests()[2].body, GetParam().body);
  EXPECT_EQ(http.requests()[2].headers, headersWith(newToken));
}

TEST_P(CallRulesTest, a_401_after_the_refresh_is_unauthorized) {
  if (!isAuthorised()) {
    return;
  }
  http.answer("POST", "/auth/refresh", 200, authBody(newToken));
  http.answer(GetParam().method, GetParam().path, 401);
  EXPECT_EQ(callAnswered(httpAnswer(401, R"({"error":"own"})")).error(), NetworkError::unauthorized());
  EXPECT_THAT(http.calls(), ElementsAre(callName(), "POST /auth/refresh", callName()));
}

TEST_P(CallRulesTest, a_401_and_a_failed_refresh_end_as_unauthorized) {
  if (!isAuthorised()) {
    return;
  }
  http.fail("POST", "/auth/refresh", Kind::timedOut);
  EXPECT_EQ(callAnswered(httpAnswer(401)).error(), NetworkError::unauthorized());
  EXPECT_THAT(http.calls(), ElementsAre(callName(), "POST /auth/refresh"));
  EXPECT_EQ(storedToken(), oldToken);
}

TEST_P(CallRulesTest, an_answer_after_the_service_is_destroyed_is_dropped) {
  const auto ended = start();
  http.answer(GetParam().method, GetParam().path, 200, GetParam().answer);
  const auto before = settings.all();
  const auto lines = printed();
  service.reset();
  settle();
  EXPECT_TRUE(ended.isPending());
  EXPECT_EQ(settings.all(), before);
  EXPECT_EQ(printed(), lines);
}

TEST_P(CallRulesTest, only_two_calls_write_to_the_system_log) {
  callAnswered(httpAnswer(200, GetParam().answer));
  callAnswered(httpAnswer(500));
  callAnswered(transportFailure(Kind::timedOut));
  EXPECT_EQ(!log.systemLines().empty(), GetParam().leavesTrail);
}

INSTANTIATE_TEST_SUITE_P(Calls, CallRulesTest, testing::ValuesIn(allCalls()),
                         [](const auto& tested) { return tested.param.name; });

}  // namespace
}  // namespace quillmar
