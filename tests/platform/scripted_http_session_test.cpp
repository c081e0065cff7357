#include "testing/scripted_http_session.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "testing/virtual_dispatch.h"

namespace quillmar {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Kind = TransportError::Kind;

class ScriptedHttpSessionTest : public testing::Test {
 protected:
  void send(const std::string& method, const std::string& target) {
    http.dataTask({.method = method,
                   .url = "https://h.example" + target,
                   .headers = {{"Authorization", "Bearer t"}},
                   .body = "{}"},
                  [this](DataTaskResult result) {
                    EXPECT_FALSE(dispatch.isMainThread());
                    results.push_back(std::move(result));
                  });
  }
  std::vector<std::string> outcomes() {
    dispatch.settle();
    std::vector<std::string> texts;
    for (const DataTaskResult& result : results) {
      texts.push_back(result.error
                          ? result.error->localizedDescription()
                          : std::to_string(result.response->status.value()) + ' ' + result.data.value());
    }
    return texts;
  }

  VirtualDispatch dispatch;
  ScriptedHttpSession http{dispatch};
  std::vector<DataTaskResult> results;
};

TEST_F(ScriptedHttpSessionTest, records_everything_that_is_sent_and_completes_later_off_the_main_thread) {
  http.answer("POST", "/auth/login", 200, "ok");
  send("POST", "/api/v1/auth/login");
  EXPECT_THAT(results, IsEmpty());
  EXPECT_THAT(outcomes(), ElementsAre("200 ok"));
  ASSERT_THAT(http.requests(), SizeIs(1));
  EXPECT_EQ(http.requests()[0].body, "{}");
  EXPECT_EQ(header(http.requests()[0], "authorization"), "Bearer t");
  EXPECT_EQ(header(http.requests()[0], "Accept"), std::nullopt);
}

TEST_F(ScriptedHttpSessionTest, a_script_written_after_the_call_counts) {
  send("GET", "/api/v1/children");
  http.answer("GET", "/children", 204);
  EXPECT_THAT(outcomes(), ElementsAre("204 "));
}

TEST_F(ScriptedHttpSessionTest, queued_answers_are_used_once_each_and_then_the_lasting_one) {
  http.answerAlways("GET", "/children", 200, "later");
  http.answer("GET", "/children", 500);
  http.fail("GET", "/children", Kind::timedOut);
  for (int i = 0; i < 4; ++i) {
    send("GET", "/api/v1/children");
  }
  EXPECT_THAT(outcomes(), ElementsAre("500 ", "The request timed out.", "200 later", "200 later"));
}

TEST_F(ScriptedHttpSessionTest, what_no_script_names_can_not_connect) {
  http.answerAlways("GET", "/children", 200);
  send("POST", "/api/v1/children");
  send("GET", "/api/v1/children/1");
  EXPECT_THAT(outcomes(),
              ElementsAre("Could not connect to the server.", "Could not connect to the server."));
}

TEST_F(ScriptedHttpSessionTest, a_path_with_a_query_goes_before_one_without) {
  http.answerAlways("GET", "/logs", 200, "any");
  http.answerAlways("GET", "/logs?limit=5", 200, "five");
  send("GET", "/api/v1/logs?limit=6");
  send("GET", "/api/v1/logs?limit=5");
  EXPECT_THAT(outcomes(), ElementsAre("200 any", "200 five"));
  EXPECT_EQ(http.count("GET", "/logs"), 2U);
  EXPECT_EQ(http.count("GET", "/logs?limit=5"), 1U);
  EXPECT_THAT(http.calls(), ElementsAre("GET /logs?limit=6", "GET /logs?limit=5"));
}

TEST_F(ScriptedHttpSessionTest, held_requests_are_completed_in_the_chosen_order) {
  http.hold();
  http.answerAlways("GET", "/a", 200, "a");
  send("GET", "/a");
  send("GET", "/b");
  EXPECT_THAT(outcomes(), IsEmpty());
  ASSERT_THAT(http.held(), SizeIs(2));
  http.complete(1, httpAnswer(200, "b"));
  http.release();
  EXPECT_THAT(outcomes(), ElementsAre("200 b", "200 a"));
  EXPECT_THAT(http.held(), IsEmpty());
}

TEST_F(ScriptedHttpSessionTest, only_the_named_request_is_held_and_releasing_all_ends_it) {
  http.answerEverythingElse(httpAnswer(200));
  http.hold("GET", "/a");
  send("GET", "/a");
  send("GET", "/b");
  EXPECT_THAT(outcomes(), SizeIs(1));
  http.releaseAll();
  send("GET", "/a");
  EXPECT_THAT(outcomes(), SizeIs(3));
}

TEST_F(ScriptedHttpSessionTest, odd_ends_are_delivered_as_they_are) {
  http.answer("GET", "/a", answerWithoutData(200));
  http.answer("GET", "/a", answerWithoutResponse("x"));
  http.answer("GET", "/a", answerThatIsNotHttp("x"));
  for (int i = 0; i < 3; ++i) {
    send("GET", "/a");
  }
  dispatch.settle();
  ASSERT_THAT(results, SizeIs(3));
  EXPECT_FALSE(results[0].data);
  EXPECT_FALSE(results[1].response);
  EXPECT_FALSE(results[2].response->status);
}

TEST_F(ScriptedHttpSessionTest, latency_delays_answers_in_virtual_time) {
  http.answerEverythingElse(httpAnswer(200));
  http.setLatency(Duration(300));
  send("GET", "/a");
  dispatch.advance(Duration(299));
  EXPECT_THAT(results, IsEmpty());
  dispatch.advance(Duration(1));
  EXPECT_THAT(results, SizeIs(1));
}

}  // namespace
}  // namespace quillmar
