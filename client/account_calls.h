#pragma once

#include "client/call.h"
#include "client/records/account.h"

namespace quillmar::calls {

extern const CallLog<RegisterRequest, AuthResponse> registerLog;
extern const CallLog<LoginRequest, AuthResponse> loginLog;

inline constexpr Call<RegisterRequest, AuthResponse> registerAccount{
    "POST", "/auth/register", {.token = Token::fromAnswer}, &registerLog};
inline constexpr Call<LoginRequest, AuthResponse> login{
    "POST", "/auth/login", {.token = Token::fromAnswer}, &loginLog};
inline constexpr Call<DeleteAccountRequest, void> deleteAccount{"DELETE", "/auth/account"};
inline constexpr CallRow<NoBody, AuthResponse> refreshToken{"POST", "/auth/refresh"};

}  // namespace quillmar::calls
