#include <string>
#include <vector>

#include "tests/client/client_test.h"

namespace quillmar {
namespace {

class CheckinTest : public ClientTest {
 protected:
  static std::string line(const std::string& rest) { return "[NetworkService] checkin - " + rest; }

  Outcome<CheckinResponse> checkin(const std::string& deviceId = "12345678-9ABC") {
    auto checked = outcome<CheckinResponse>();
    service->checkin(deviceId, "ios", checked.completion());
    return checked;
  }
  Outcome<CheckinResponse> checkinAnswered(DataTaskResult result) {
    http.answer("POST", "/device/checkin", std::move(result));
    const auto checked = checkin();
    log.clear();
    settle();
    EXPECT_EQ(checked.calls(), 1);
    return checked;
  }
};

TEST_F(CheckinTest, an_invalid_root_url_is_not_logged) {
  breakRoot();
  EXPECT_EQ(checkin().error(), NetworkError::invalidResponse());
  EXPECT_THAT(printed(), IsEmpty());
}

TEST_F(CheckinTest, there_is_no_default_root) {
  removeRoot();
  EXPECT_EQ(checkin().errorText(), "No region configured. Please select a region first.");
}

TEST_F(CheckinTest, an_id_that_cannot_be_encoded_is_logged_with_the_coders_message) {
  EXPECT_EQ(checkin(notUtf8).error(), NetworkError::encodingError());
  EXPECT_THAT(printed(), ElementsAre(line("encode error: " + std::string(unwritableText))));
}

TEST_F(CheckinTest, an_invalid_url_is_reported_before_a_bad_body) {
  breakRoot();
  EXPECT_EQ(checkin(notUtf8).error(), NetworkError::invalidResponse());
}

TEST_F(CheckinTest, the_start_is_logged_with_the_first_characters_of_the_id) {
  checkin();
  EXPECT_THAT(printed(),
              ElementsAre(line("URL: https://au.example/api/v1/device/checkin, deviceId: 12345678...")));
}

TEST_F(CheckinTest, a_short_id_is_logged_whole_and_still_with_dots) {
  checkin("d1");
  checkin("");
  EXPECT_THAT(printed(), ElementsAre(line("URL: https://au.example/api/v1/device/checkin, deviceId: d1..."),
                                     line("URL: https://au.example/api/v1/device/checkin, deviceId: ...")));
}

TEST_F(CheckinTest, characters_of_the_id_are_grapheme_clusters) {
  checkin("1234567e\xCC\x81xyz");
  EXPECT_THAT(
      printed(),
      ElementsAre(line("URL: https://au.example/api/v1/device/checkin, deviceId: 1234567e\xCC\x81...")));
}

TEST_F(CheckinTest, a_transport_error_is_logged) {
  checkinAnswered(transportFailure(Kind::cannotFindHost)).error();
  EXPECT_THAT(printed(),
              ElementsAre(line("network error: A server with the specified hostname could not be found.")));
}

TEST_F(CheckinTest, an_unusable_answer_is_logged_with_its_available_parts) {
  checkinAnswered(answerWithoutData(200)).error();
  EXPECT_THAT(printed(), ElementsAre(line("status: 200"), line("no data or response")));
  checkinAnswered(answerWithoutResponse("x")).error();
  EXPECT_THAT(printed(), ElementsAre(line("no data or response")));
  checkinAnswered(answerThatIsNotHttp("x")).error();
  EXPECT_THAT(printed(), ElementsAre(line("no data or response")));
  checkinAnswered({}).error();
  EXPECT_THAT(printed(), ElementsAre(line("no data or response")));
}

TEST_F(CheckinTest, a_refusal_with_the_services_message_starts_no_refresh) {
  EXPECT_EQ(checkinAnswered(httpAnswer(401, R"({"error":"Gone"})")).error(),
            NetworkError::serverError("Gone"));
  EXPECT_THAT(printed(), ElementsAre(line("status: 401"), line(R"(response: {"error":"Gone"})"),
                                     line("server error: Gone")));
  EXPECT_EQ(refreshes(), 0);
}

TEST_F(CheckinTest, a_refusal_without_a_message_is_logged_as_unknown_and_ends_as_unknown_error) {
  EXPECT_EQ(checkinAnswered(httpAnswer(500, "<html>")).errorText(), "Unknown error");
  EXPECT_THAT(printed(),
              ElementsAre(line("status: 500"), line("response: <html>"), line("server error: Unknown")));
}

TEST_F(CheckinTest, a_201_with_a_good_body_is_a_failure) {
  EXPECT_EQ(checkinAnswered(httpAnswer(201, R"({"status":"ok"})")).errorText(), "Unknown error");
  EXPECT_THAT(printed(), ElementsAre(line("status: 201"), line(R"(response: {"status":"ok"})"),
                                     line("server error: Unknown")));
}

TEST_F(CheckinTest, an_answer_that_does_not_decode_is_logged) {
  EXPECT_EQ(checkinAnswered(httpAnswer(200, "{}")).errorText(), missingText);
  EXPECT_THAT(printed(), ElementsAre(line("status: 200"), line("response: {}"),
                                     line("decode error: " + std::string(missingText))));
}

TEST_F(CheckinTest, a_success_is_logged_with_the_endpoint) {
  const std::string body =
      R"({"status":"ok","doh_endpoint":"https://e","doh_base_url":"B","server_time":"T"})";
  EXPECT_EQ(
      checkinAnswered(httpAnswer(200, body)).value(),
      (CheckinResponse{.status = "ok", .dohEndpoint = "https://e", .dohBaseUrl = "B", .serverTime = "T"}));
  EXPECT_THAT(printed(), ElementsAre(line("status: 200"), line("response: " + body),
                                     line("success, doh_endpoint: https://e")));
}

TEST_F(CheckinTest, an_absent_endpoint_is_logged_as_nil_and_an_empty_one_as_empty) {
  checkinAnswered(httpAnswer(200, R"({"status":"ok"})")).value();
  EXPECT_EQ(printed().back(), line("success, doh_endpoint: nil"));
  checkinAnswered(httpAnswer(200, R"({"status":"ok","doh_endpoint":""})")).value();
  EXPECT_EQ(printed().back(), line("success, doh_endpoint: "));
}

TEST_F(CheckinTest, an_unknown_status_text_is_a_success) {
  EXPECT_EQ(checkinAnswered(httpAnswer(200, R"({"status":"revoked"})")).value().status, "revoked");
}

TEST_F(CheckinTest, an_empty_body_is_logged_as_empty) {
  checkinAnswered(httpAnswer(500)).error();
  EXPECT_THAT(printed(), ElementsAre(line("status: 500"), line("response: "), line("server error: Unknown")));
}

TEST_F(CheckinTest, a_body_that_is_not_utf8_is_not_logged) {
  checkinAnswered(httpAnswer(500, notUtf8)).error();
  EXPECT_THAT(printed(), ElementsAre(line("status: 500"), line("server error: Unknown")));
}

TEST_F(CheckinTest, a_long_body_is_logged_with_its_first_300_characters) {
  const std::string family = "\U0001F468\u200D\U0001F469\u200D\U0001F467";
  std::string shown;
  for (int i = 0; i < 300; ++i) {
    shown += family;
  }
  checkinAnswered(httpAnswer(500, shown + family)).error();
  EXPECT_THAT(printed(),
              ElementsAre(line("status: 500"), line("response: " + shown), line("server error: Unknown")));
  checkinAnswered(httpAnswer(500, std::string(300, 'x'))).error();
  EXPECT_EQ(printed()[1], line("response: " + std::string(300, 'x')));
  checkinAnswered(httpAnswer(500, std::string(301, 'x'))).error();
  EXPECT_EQ(printed()[1], line("response: " + std::string(300, 'x')));
}

TEST_F(CheckinTest, a_checkin_stores_nothing) {
  const int writes = settings.writes();
  checkinAnswered(httpAnswer(200, R"({"status":"ok","doh_endpoint":"https://e","doh_base_url":"B"})"))
      .value();
  EXPECT_EQ(settings.writes(), writes);
}

}  // namespace
}  // namespace quillmar
