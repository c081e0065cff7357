#include "tests/client/call_table.h"

#include <optional>
#include <string>
#include <vector>

#include "client/account_calls.h"
#include "client/enrollment_calls.h"

namespace quillmar {
namespace {

const std::string encodingFailed = "Failed to encode request";
const std::string unwritable(unwritableText);

}  // namespace

std::vector<ContractCall> accountCalls() {
  return {
      {.name = "registerAccount",
       .method = "POST",
       .path = "/auth/register",
       .body =
           R"({"email":"zoe@example.org","password":"secret-password","phone":"+61400000000","name":"Zoe Lee"})",
       .bodyRecord = "RegisterRequest",
       .token = Token::none,
       .answer = authBody(newToken),
       .answerRecord = "AuthResponse",
       .noRootLines = {"[NetworkService] Register failed: No region configured"},
       .start =
           [](NetworkService& service, Completion<void> end) {
             service.send(calls::registerAccount, newAccount, ending<AuthResponse>(end));
           },
       .startUnwritable =
           [](NetworkService& service, Completion<void> end) {
             RegisterRequest account = newAccount;
             account.name = notUtf8;
             service.send(calls::registerAccount, account, ending<AuthResponse>(end));
           },
       .unwritableEnd = unwritable},
      {.name = "login",
       .method = "POST",
       .path = "/auth/login",
       .body = R"({"email":"zoe@example.org","password":"secret-password"})",
       .bodyRecord = "LoginRequest",
       .token = Token::none,
       .answer = authBody(newToken),
       .answerRecord = "AuthResponse",
       .noRootLines = {"[NetworkService] Login failed: No region configured"},
       .start =
           [](NetworkService& service, Completion<void> end) {
             service.send(calls::login, {.email = "zoe@example.org", .password = password},
                          ending<AuthResponse>(end));
           },
       .startUnwritable =
           [](NetworkService& service, Completion<void> end) {
             service.send(calls::login, {.email = "zoe@example.org", .password = notUtf8},
                          ending<AuthResponse>(end));
           },
       .unwritableEnd = unwritable},
      {.name = "deleteAccount",
       .method = "DELETE",
       .path = "/auth/account",
       .body = R"({"password":"secret-password"})",
       .bodyRecord = "DeleteAccountRequest",
       .start = [](NetworkService& service,
                   Completion<void> end) { service.send(calls::deleteAccount, {password}, end); },
       .startUnwritable = [](NetworkService& service,
                             Completion<void> end) { service.send(calls::deleteAccount, {notUtf8}, end); },
       .unwritableEnd = unwritable},
      {.name = "initEnrollment",
       .method = "POST",
       .path = "/enrollment/init",
       .body = R"({"device_id":"d1","device_name":"Tablet","device_type":"ios"})",
       .bodyRecord = "InitEnrollmentRequest",
       .token = Token::none,
       .root = Root::orDefault,
       .judging = Judging::byExactly200,
       .answer = R"({"enrollment_code":"ABC123","device_id":"d1","expires_at":"e"})",
       .answerRecord = "InitEnrollmentResponse",
       .start =
           [](NetworkService& service, Completion<void> end) {
             service.send(calls::initEnrollment, {"d1", "Tablet", "ios"},
                          ending<InitEnrollmentResponse>(end));
           },
       .startUnwritable =
           [](NetworkService& service, Completion<void> end) {
             service.send(calls::initEnrollment, {"d1", notUtf8, "ios"}, ending<InitEnrollmentResponse>(end));
           },
       .unwritableEnd = encodingFailed},
      {.name = "getEnrollmentStatus",
       .method = "GET",
       .path = "/enrollment/status/d1",
       .pattern = "/enrollment/status/{}",
       .token = Token::none,
       .root = Root::orDefault,
       .judging = Judging::byExactly200,
       .answer = R"({"status":"pending","device_id":"d1"})",
       .answerRecord = "EnrollmentStatusResponse",
       .start =
           [](NetworkService& service, Completion<void> end) {
             service.getEnrollmentStatus("d1", ending<EnrollmentStatusResponse>(end));
           }},
      {.name = "completeEnrollment",
       .method = "POST",
       .path = "/enrollment/complete",
       .body = R"({"enrollment_code":"ABC123","device_name":"Tablet"})",
       .bodyRecord = "CompleteEnrollmentRequest",
       .answer = completedBody(),
       .answerRecord = "CompleteEnrollmentResponse",
       .noRootLines = {"[NetworkService] completeEnrollment failed: No region configured"},
       .start =
           [](NetworkService& service, Completion<void> end) {
             service.completeEnrollment({"ABC123", "Tablet", std::nullopt}, false,
                                        ending<CompleteEnrollmentResponse>(end));
           },
       .startUnwritable =
           [](NetworkService& service, Completion<void> end) {
             service.completeEnrollment({"ABC123", notUtf8, std::nullopt}, false,
                                        ending<CompleteEnrollmentResponse>(end));
           },
       .unwritableEnd = unwritable},
      {.name = "manualEnrollment",
       .method = "POST",
       .path = "/enrollment/manual",
       .body = R"({"device_name":"TV","device_type":"smart-tv"})",
       .bodyRecord = "ManualEnrollmentRequest",
       .answer = manualBody(),
       .answerRecord = "ManualEnrollmentResponse",
       .start =
           [](NetworkService& service, Completion<void> end) {
             service.send(calls::manualEnrollment, television, ending<ManualEnrollmentResponse>(end));
           },
       .startUnwritable =
           [](NetworkService& service, Completion<void> end) {
             ManualEnrollmentRequest device = television;
             device.deviceName = notUtf8;
             service.send(calls::manualEnrollment, device, ending<ManualEnrollmentResponse>(end));
           },
       .unwritableEnd = unwritable},
      {.name = "checkin",
       .method = "POST",
       .path = "/device/checkin",
       .body = R"({"device_id":"d1","device_type":"ios"})",
       .bodyRecord = "CheckinRequest",
       .token = Token::none,
       .judging = Judging::byExactly200,
       .answer = R"({"status":"ok"})",
       .answerRecord = "CheckinResponse",
       .noRootLines = {"[NetworkService] checkin failed: No region configured"},
       .start = [](NetworkService& service,
                   Completion<void> end) { service.checkin("d1", "ios", ending<CheckinResponse>(end)); },
       .startUnwritable =
           [](NetworkService& service, Completion<void> end) {
             service.checkin(notUtf8, "ios", ending<CheckinResponse>(end));
           },
       .unwritableEnd = encodingFailed},
  };
}

std::vector<ContractCall> allCalls() {
  std::vector<ContractCall> all = accountCalls();
  for (const auto& more : {childCalls(), deviceCalls(), familyCalls()}) {
    all.insert(all.end(), more.begin(), more.end());
  }
  return all;
}

ContractCall refreshCall() {
  return {.name = "refreshToken",
          .method = "POST",
          .path = "/auth/refresh",
          .answer = authBody(newToken),
          .answerRecord = "AuthResponse",
          .start = [](NetworkService& service, Completion<void> end) {
            service.refreshToken(ending<AuthResponse>(end));
          }};
}

std::optional<NetworkError> refusal(const ContractCall& call, int status,
                                    const std::optional<std::string>& words) {
  switch (call.judging) {
    case Judging::by2xx:
      if (status == 401 || status == 403 || status == 404) {
        return status == 401   ? NetworkError::unauthorized()
               : status == 403 ? NetworkError::forbidden()
                               : NetworkError::notFound();
      }
      [[fallthrough]];
    case Judging::byExactly200:
      return NetworkError::serverError(words.value_or("Unknown error"));
    case Judging::below400:
      if (status < 400) {
        return std::nullopt;
      }
      return NetworkError::serverError(status == 409 ? "Email already registered"
                                                     : words.value_or("Failed to join family"));
    case Judging::byBody:
      break;
  }
  return std::nullopt;
}

}  // namespace quillmar
