#include "client/account_calls.h"

#include "foundation/filled_text.h"

namespace quillmar::calls {

constinit const CallLog<RegisterRequest, AuthResponse> registerLog{
    .lines = {.noRegion = "[NetworkService] Register failed: No region configured",
              .url = "[NetworkService] Register URL: %@",
              .region = "[NetworkService] Region from UserDefaults: %@",
              .invalidURL = "[NetworkService] Invalid URL: %@",
              .error = "[NetworkService] Register network error: %@",
              .noAnswer = "[NetworkService] Register: No data or response",
              .status = "[NetworkService] Register response status: %d",
              .refusal = "[NetworkService] Register decode/handle error: %@",
              .refusedResponse = "[NetworkService] Response body: %@"},
    .success =
        [](const AuthResponse& answer) {
          return filled("[NetworkService] Register success for user: %@", {answer.email});
        },
};

constinit const CallLog<LoginRequest, AuthResponse> loginLog{
    .lines = {.noRegion = "[NetworkService] Login failed: No region configured",
              .url = "[NetworkService] Login URL: %@",
              .invalidURL = "[NetworkService] Invalid login URL: %@",
              .error = "[NetworkService] Login network error: %@",
              .noAnswer = "[NetworkService] Login: No data or response",
              .status = "[NetworkService] Login response status: %d",
              .refusal = "[NetworkService] Login decode/handle error: %@",
              .refusedResponse = "[NetworkService] Response body: %@"},
    .success =
        [](const AuthResponse& answer) {
          return filled("[NetworkService] Login success for user: %@", {answer.email});
        },
};

}  // namespace quillmar::calls
