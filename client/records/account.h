#pragma once

#include <optional>
#include <string>

#include "foundation/record.h"
#include "foundation/secret.h"

namespace quillmar {

struct RegisterRequest {
  std::string email;
  Secret password;
  std::string phone;
  std::string name;
  std::optional<std::string> region;  // raw value of Region
};

template <>
inline constexpr auto wire<RegisterRequest> = record(required("email", &RegisterRequest::email),
                                                     required("password", &RegisterRequest::password),
                                                     required("phone", &RegisterRequest::phone),
                                                     required("name", &RegisterRequest::name),
                                                     optional("region", &RegisterRequest::region));

struct LoginRequest {
  std::string email;
  Secret password;
};

template <>
inline constexpr auto wire<LoginRequest> = record(required("email", &LoginRequest::email),
                                                  required("password", &LoginRequest::password));

struct DeleteAccountRequest {
  Secret password;
};

template <>
inline constexpr auto wire<DeleteAccountRequest> = record(required("password",
                                                                   &DeleteAccountRequest::password));

// The answer of registration, login and refresh; a refresh includes the account too.
struct AuthResponse {
  Secret token;
  std::string parentId;
  std::string email;
  std::optional<std::string> phone;
  std::string name;
  std::optional<std::string> region;
  std::optional<std::string> dohServerId;
  std::optional<std::string> dohBaseURL;
};

template <>
inline constexpr auto wire<AuthResponse> = record(required("token", &AuthResponse::token),
                                                  required("parent_id", &AuthResponse::parentId),
                                                  required("email", &AuthResponse::email),
                                                  optional("phone", &AuthResponse::phone),
                                                  required("name", &AuthResponse::name),
                                                  optional("region", &AuthResponse::region),
                                                  optional("doh_server_id", &AuthResponse::dohServerId),
                                                  optional("doh_base_url", &AuthResponse::dohBaseURL));

}  // namespace quillmar
