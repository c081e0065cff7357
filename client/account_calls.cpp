#include <utility>

#include "client/judging.h"
#include "client/network_service.h"
#include "foundation/text.h"

namespace quillmar {

// The log lines of registration and login, which otherwise take the same road.
struct NetworkService::Words {
  std::string_view noRegion;
  std::string_view url;
  std::string_view region;  // empty: the stored region is not logged
  std::string_view invalidURL;
  std::string_view networkError;
  std::string_view noData;
  std::string_view status;
  std::string_view decodeError;
  std::string_view success;
};

void NetworkService::registerAccount(const RegisterRequest& account, Completion<AuthResponse> completion) {
  static constexpr Words words{
      .noRegion = "[NetworkService] Register failed: No region configured",
      .url = "[NetworkService] Register URL: ",
      .region = "[NetworkService] Region from UserDefaults: ",
      .invalidURL = "[NetworkService] Invalid URL: ",
      .networkError = "[NetworkService] Register network error: ",
      .noData = "[NetworkService] Register: No data or response",
      .status = "[NetworkService] Register response status: ",
      .decodeError = "[NetworkService] Register decode/handle error: ",
      .success = "[NetworkService] Register success for user: ",
  };
  authenticate(words, "/auth/register", encodeJson(account), std::move(completion));
}

void NetworkService::login(const LoginRequest& credentials, Completion<AuthResponse> completion) {
  static constexpr Words words{
      .noRegion = "[NetworkService] Login failed: No region configured",
      .url = "[NetworkService] Login URL: ",
      .region = {},
      .invalidURL = "[NetworkService] Invalid login URL: ",
      .networkError = "[NetworkService] Login network error: ",
      .noData = "[NetworkService] Login: No data or response",
      .status = "[NetworkService] Login response status: ",
      .decodeError = "[NetworkService] Login decode/handle error: ",
      .success = "[NetworkService] Login success for user: ",
  };
  authenticate(words, "/auth/login", encodeJson(credentials), std::move(completion));
}

void NetworkService::authenticate(const Words& words, std::string_view path, const Result<std::string>& body,
                                  Completion<AuthResponse> completion) {
  const auto root = baseURL();
  if (!root) {
    log(words.noRegion);
    completion(Error(NetworkError::noRegionConfigured()));
    return;
  }
  const std::string url = *root + std::string(path);
  log(words.url, url);
  if (!words.region.empty()) {
    log(words.region, settings_.string(regionKey).value_or("nil"));
  }
  auto request = makeRequest("POST", url, body.ok() ? body.value() : std::string());
  if (!request.ok()) {
    log(words.invalidURL, url);
    completion(request.error());
    return;
  }
  if (!body.ok()) {
    completion(body.error());
    return;
  }
  send(std::move(request).value(),
       [this, &words, completion = std::move(completion)](const DataTaskResult& result) {
         completion(handleAuthentication(words, result));
       });
}

Result<AuthResponse> NetworkService::handleAuthentication(const Words& words, const DataTaskResult& result) {
  if (result.error) {
    log(words.networkError, result.error->localizedDescription());
    return *result.error;
  }
  const auto answer = answerOf(result);
  if (!answer.ok()) {
    log(words.noData);
    return answer.error();
  }
  if (const auto status = answer.value().response.status) {
    log(words.status, std::to_string(*status));
  }
  auto account = validatedRecord<AuthResponse>(answer.value());
  if (!account.ok()) {
    log(words.decodeError, account.error().localizedDescription());
    if (isValidUtf8(answer.value().data)) {
      log("[NetworkService] Response body: ", answer.value().data);
    }
    return account;
  }
  settings_.set(authTokenKey, account.value().token);
  log(words.success, account.value().email);
  return account;
}

void NetworkService::clearSession() {
  for (const auto key : {authTokenKey, parentIdKey, parentEmailKey, parentNameKey}) {
    settings_.remove(key);
  }
  settings_.scrub();
}

void NetworkService::deleteAccount(const std::string& password, Completion<void> completion) {
  authorisedCall("DELETE", "/auth/account",
                 checkedJson(writeJson(Value::Map{{"password", password}}), "deleteAccount"),
                 validating(std::move(completion)));
}

}  // namespace quillmar
