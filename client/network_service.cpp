#include "client/network_service.h"

#include <utility>

#include "client/judging.h"
#include "foundation/text.h"
#include "foundation/url.h"
#include "foundation/wipe.h"

namespace quillmar {

std::shared_ptr<NetworkService> NetworkService::make(HttpSession& http, SettingsStore& settings, Log& log,
                                                     Dispatch& dispatch, Deployments deployments) {
  return std::make_shared<NetworkService>(Passkey(), http, settings, log, dispatch, std::move(deployments));
}

NetworkService::NetworkService(Passkey /*only make() constructs*/, HttpSession& http, SettingsStore& settings,
                               Log& log, Dispatch& dispatch, Deployments deployments)
    : http_(http),
      settings_(settings),
      log_(log),
      dispatch_(dispatch),
      deployments_(std::move(deployments)) {}

std::optional<std::string> NetworkService::baseURL() const {
  if (const auto stored = settings_.string(apiURLKey)) {
    return *stored + "/api/v1";
  }
  const auto region = settings_.string(regionKey);
  const auto root = region ? deployments_.root(*region) : std::nullopt;
  return root ? std::optional(*root + "/api/v1") : std::nullopt;
}

std::string NetworkService::defaultEnrollmentURL() const { return deployments_.australia + "/api/v1"; }

Result<HttpRequest> NetworkService::makeRequest(std::string_view method, const std::string& url,
                                                std::optional<std::string> body) {
  if (!URL::parse(url)) {
    return Error(NetworkError::invalidResponse());
  }
  HttpRequest request;
  request.method = method;
  request.url = url;
  if (body) {
    request.setHeader("Content-Type", "application/json");
    request.body = std::move(body);
  }
  return request;
}

Result<HttpRequest> NetworkService::buildRequest(std::string_view method, const std::string& path,
                                                 const std::optional<Result<std::string>>& body) const {
  const auto root = baseURL();
  if (!root) {
    return Error(NetworkError::noRegionConfigured());
  }
  auto request = makeRequest(method, *root + path,
                             body ? std::optional(body->ok() ? body->value() : std::string()) : std::nullopt);
  return request.ok() && body && !body->ok() ? Result<HttpRequest>(body->error()) : request;
}

void NetworkService::authorisedCall(std::string_view method, const std::string& path,
                                    const std::optional<Result<std::string>>& body,
                                    Completion<Answer> completion) {
  auto request = buildRequest(method, path, body);
  if (!request.ok()) {
    completion(request.error());
    return;
  }
  performRequest(std::move(request).value(), false, std::move(completion));
}

void NetworkService::send(HttpRequest request, std::function<void(DataTaskResult)> handle) {
  http_.dataTask(std::move(request),
                 [weak = weak_from_this(), handle = std::move(handle)](DataTaskResult result) {
                   if (const auto self = weak.lock()) {
                     handle(std::move(result));
                   }
                 });
}

Result<void> NetworkService::addAuthHeader(HttpRequest& request) const {
  auto token = settings_.string(authTokenKey);
  if (!token) {
    log("[NetworkService] addAuthHeader - NO TOKEN FOUND in UserDefaults");
    return Error(NetworkError::unauthorized());
  }
  log("[NetworkService] addAuthHeader - token found, length: ", std::to_string(characterCount(*token)));
  request.setHeader("Authorization", "Bearer " + *token);
  wipe(*token);
  return success();
}

Result<void> NetworkService::validateResponse(const Response& response, std::string_view data) {
  if (!response.status) {
    return Error(NetworkError::invalidResponse());
  }
  const int status = *response.status;
  if (status >= 200 && status <= 299) {
    return success();
  }
  switch (status) {
    case 401:
      return Error(NetworkError::unauthorized());
    case 403:
      return Error(NetworkError::forbidden());
    case 404:
      return Error(NetworkError::notFound());
    default:
      return serverError(data);
  }
}

void NetworkService::performRequest(HttpRequest request, bool isRetry, Completion<Answer> completion) {
  HttpRequest authorised = request;
  if (const auto header = addAuthHeader(authorised); !header.ok()) {
    completion(header.error());
    return;
  }
  send(std::move(authorised), [this, request = std::move(request), isRetry,
                               completion = std::move(completion)](DataTaskResult result) {
    auto answer = answerOf(std::move(result));
    if (!answer.ok() || answer.value().response.status != 401 || isRetry) {
      completion(std::move(answer));
      return;
    }
    log("[NetworkService] Got 401, attempting token refresh...");
    refreshToken([this, request, completion](const Result<AuthResponse>& refreshed) {
      if (!refreshed.ok()) {
        log("[NetworkService] Token refresh failed: ", refreshed.error().localizedDescription());
        completion(Error(NetworkError::unauthorized()));
        return;
      }
      log("[NetworkService] Token refreshed successfully, retrying request...");
      performRequest(request, true, completion);
    });
  });
}

bool NetworkService::isRefreshingToken() const {
  const std::scoped_lock lock(refreshMutex_);
  return isRefreshingToken_;
}

Result<HttpRequest> NetworkService::makeRefreshRequest() const {
  const auto root = baseURL();
  if (!root) {
    log("[NetworkService] RefreshToken failed: No region configured");
    return Error(NetworkError::noRegionConfigured());
  }
  auto request = makeRequest("POST", *root + "/auth/refresh");
  if (!request.ok()) {
    return request;
  }
  HttpRequest authorised = std::move(request).value();
  authorised.setHeader("Content-Type", "application/json");
  if (const auto header = addAuthHeader(authorised); !header.ok()) {
    return header.error();
  }
  return authorised;
}

void NetworkService::refreshToken(Completion<AuthResponse> completion) {
  std::unique_lock lock(refreshMutex_);
  if (isRefreshingToken_) {
    refreshCompletionQueue_.push_back(std::move(completion));
    return;
  }
  auto request = makeRefreshRequest();
  isRefreshingToken_ = request.ok();
  lock.unlock();

  if (!request.ok()) {
    completion(request.error());
    return;
  }
  log("[NetworkService] Attempting token refresh...");
  send(std::move(request).value(), [this, completion = std::move(completion)](const DataTaskResult& result) {
    finishRefresh(result, completion);
  });
}

void NetworkService::finishRefresh(const DataTaskResult& result, const Completion<AuthResponse>& completion) {
  if (result.error) {
    log("[NetworkService] RefreshToken network error: ", result.error->localizedDescription());
    completion(*result.error);
    drainRefreshQueue(result.error, result.data);
    return;
  }
  const auto answer = answerOf(result);
  if (!answer.ok()) {
    log("[NetworkService] RefreshToken: No data or response");
    completion(answer.error());
  } else {
    completion(storeRefreshedToken(answer.value()));
  }
  drainRefreshQueue(std::nullopt, result.data);
}

Result<AuthResponse> NetworkService::storeRefreshedToken(const Answer& answer) {
  if (answer.response.status) {
    log("[NetworkService] RefreshToken response status: ", std::to_string(*answer.response.status));
  }
  if (answer.response.status == 401) {
    log("[NetworkService] RefreshToken failed: Token invalid or expired");
    return Error(NetworkError::unauthorized());
  }
  auto account = validatedRecord<AuthResponse>(answer);
  if (!account.ok()) {
    log("[NetworkService] RefreshToken decode/handle error: ", account.error().localizedDescription());
    return account;
  }
  const std::string& token = account.value().token;
  settings_.set(authTokenKey, token);
  settings_.set(authTokenKey, token);
  settings_.synchronize();
  log("[NetworkService] Token refresh successful, new token length: ", std::to_string(characterCount(token)));
  return account;
}

void NetworkService::drainRefreshQueue(const std::optional<Error>& error,
                                       const std::optional<std::string>& data) {
  std::vector<Completion<AuthResponse>> waiters;
  {
    const std::scoped_lock lock(refreshMutex_);
    isRefreshingToken_ = false;
    waiters.swap(refreshCompletionQueue_);
  }
  for (const auto& waiter : waiters) {
    if (error) {
      waiter(*error);
    } else if (data) {
      waiter(decodeJson<AuthResponse>(*data));
    }
  }
}

void NetworkService::log(std::string_view line, std::string_view detail) const {
  log_.print(std::string(line) + std::string(detail));
}

}  // namespace quillmar
