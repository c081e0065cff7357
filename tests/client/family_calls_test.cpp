#include "client/family_calls.h"

#include <string>

#include "client/home_network_calls.h"
#include "tests/client/console_answers.h"

namespace quillmar {
namespace {

class FamilyCallsTest : public ClientTest {
 protected:
  Outcome<JoinFamilyResponse> joined(DataTaskResult result) {
    http.answer("POST", "/family/join", std::move(result));
    auto ended = outcome<JoinFamilyResponse>();
    service->send(calls::joinFamily, newParent, ended.completion());
    settle();
    EXPECT_EQ(ended.calls(), 1);
    return ended;
  }
  Outcome<ValidateInviteResponse> validated(DataTaskResult result) {
    http.answer("GET", "/family/invite/ABC123", std::move(result));
    auto ended = outcome<ValidateInviteResponse>();
    service->send(calls::validateInvite, {"ABC123"}, ended.completion());
    settle();
    EXPECT_EQ(ended.calls(), 1);
    return ended;
  }
};

TEST_F(FamilyCallsTest, a_taken_email_has_a_fixed_message) {
  for (const std::string& body :
       {std::string(R"({"error":"own"})"), std::string("<html>"), std::string(), joinedBody()}) {
    EXPECT_EQ(joined(httpAnswer(409, body)).error(), NetworkError::serverError("Email already registered"));
  }
}

TEST_F(FamilyCallsTest, a_failed_join_has_its_own_message_if_the_service_sends_none) {
  for (const int status : {400, 401, 403, 404, 500}) {
    EXPECT_EQ(joined(httpAnswer(status, "<html>")).error(),
              NetworkError::serverError("Failed to join family"));
    EXPECT_EQ(joined(httpAnswer(status, R"({"error":"own"})")).error(), NetworkError::serverError("own"));
    EXPECT_EQ(joined(httpAnswer(status, R"({"error":null})")).error(),
              NetworkError::serverError("Failed to join family"));
  }
}

TEST_F(FamilyCallsTest, any_status_below_400_succeeds_if_the_record_decodes) {
  for (const int status : {100, 200, 204, 302, 399}) {
    EXPECT_EQ(joined(httpAnswer(status, joinedBody())).value().familyName, "The Lees");
    EXPECT_EQ(joined(httpAnswer(status, R"({"error":"own"})")).errorText(), missingText);
  }
}

TEST_F(FamilyCallsTest, joining_stores_and_logs_nothing) {
  const auto before = settings.all();
  const auto answer = joined(httpAnswer(201, joinedBody())).value();
  EXPECT_EQ(answer.token, newToken);
  EXPECT_EQ(settings.all(), before);
  EXPECT_THAT(printed(), IsEmpty());
}

TEST_F(FamilyCallsTest, input_is_sent_untrimmed) {
  service->send(calls::joinFamily,
                {.inviteCode = " abc ", .email = "", .password = " secret-x\t", .displayName = "Sam "},
                outcome<JoinFamilyResponse>().completion());
  EXPECT_EQ(http.requests().at(0).body,
            R"({"invite_code":" abc ","email":"","password":" secret-x\t","display_name":"Sam "})");
}

TEST_F(FamilyCallsTest, calls_without_an_account_do_not_send_the_stored_token) {
  joined(httpAnswer(401));
  validated(httpAnswer(401, R"({"valid":false})"));
  ASSERT_THAT(http.requests(), SizeIs(2));
  for (const auto& request : http.requests()) {
    EXPECT_EQ(header(request, "Authorization"), std::nullopt);
  }
  EXPECT_EQ(refreshes(), 0);
}

TEST_F(FamilyCallsTest, the_record_says_whether_an_invitation_is_valid) {
  const std::string body = R"({"valid":false,"error":"Expired"})";
  for (const int status : {200, 204, 302, 401, 404, 500}) {
    const auto answer = validated(httpAnswer(status, body)).value();
    EXPECT_FALSE(answer.valid);
    EXPECT_EQ(answer.error, "Expired");
  }
}

TEST_F(FamilyCallsTest, an_invitation_answer_that_is_not_a_record_fails_to_decode) {
  EXPECT_EQ(validated(httpAnswer(404, "<html>")).errorText(), malformedText);
  EXPECT_EQ(validated(httpAnswer(404, R"({"error":"own"})")).errorText(), missingText);
  EXPECT_EQ(validated(httpAnswer(200, "")).errorText(), malformedText);
}

TEST_F(FamilyCallsTest, a_valid_invitation_names_the_family) {
  const auto answer =
      validated(httpAnswer(200, R"({"valid":true,"family_name":"The Lees","invited_by_name":"Zoe Lee",)"
                                R"("expires_at":"e"})"))
          .value();
  EXPECT_EQ(answer.familyName, "The Lees");
  EXPECT_EQ(answer.invitedBy, "Zoe Lee");
}

TEST_F(FamilyCallsTest, a_code_that_is_invalid_in_a_url_is_not_sent) {
  auto ended = outcome<ValidateInviteResponse>();
  service->send(calls::validateInvite, {"{\"code\":\"ABC123\"}"}, ended.completion());
  EXPECT_EQ(ended.error(), NetworkError::invalidResponse());
  EXPECT_THAT(http.requests(), IsEmpty());
}

TEST_F(FamilyCallsTest, codes_and_ids_are_not_encoded_in_the_path) {
  service->send(calls::validateInvite, {"a/b?c"}, outcome<ValidateInviteResponse>().completion());
  service->send(calls::revokeInvitation, {"ABC/123"}, outcome<void>().completion());
  ASSERT_THAT(http.requests(), SizeIs(2));
  EXPECT_EQ(http.requests()[0].url, "https://au.example/api/v1/family/invite/a/b?c");
  EXPECT_EQ(http.requests()[1].url, "https://au.example/api/v1/family/invite/ABC/123");
}

TEST_F(FamilyCallsTest, an_update_of_permissions_sends_only_the_fields_that_are_set) {
  service->send(calls::updateMemberPermissions, {"m1"},
                {.canManageDevices = {}, .canManagePolicies = {}, .isActive = false},
                outcome<void>().completion());
  service->send(calls::updateMemberPermissions, {"m1"}, {}, outcome<void>().completion());
  ASSERT_THAT(http.requests(), SizeIs(2));
  EXPECT_EQ(http.requests()[0].body, R"({"is_active":false})");
  EXPECT_EQ(http.requests()[1].body, "{}");
}

TEST_F(FamilyCallsTest, an_invitation_or_a_network_without_a_name_omits_the_key) {
  service->send(calls::createInvitation, {std::nullopt}, outcome<CreateInvitationResponse>().completion());
  service->send(calls::createHomeNetwork, {std::nullopt, true},
                outcome<CreateHomeNetworkResponse>().completion());
  ASSERT_THAT(http.requests(), SizeIs(2));
  EXPECT_EQ(http.requests()[0].body, "{}");
  EXPECT_EQ(http.requests()[1].body, R"({"confirm":true})");
}

TEST_F(FamilyCallsTest, a_member_without_the_permission_gets_forbidden) {
  http.answer("DELETE", "/family/members/m1", 403, R"({"error":"own"})");
  auto ended = outcome<void>();
  service->send(calls::removeMember, {"m1"}, ended.completion());
  settle();
  EXPECT_EQ(ended.errorText(), "Access denied");
}

TEST_F(FamilyCallsTest, family_calls_log_only_the_token_line) {
  http.answer("GET", "/family", 200, R"({"family":null,"members":[],"is_primary":false})");
  auto ended = outcome<FamilyResponse>();
  service->send(calls::getFamily, ended.completion());
  settle();
  EXPECT_EQ(ended.value().family, std::nullopt);
  EXPECT_THAT(printed(), testing::ElementsAre("[NetworkService] addAuthHeader - token found, length: 12"));
}

}  // namespace
}  // namespace quillmar
