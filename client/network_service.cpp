#include "client/network_service.h"

#include <utility>

#include "client/account_calls.h"
#include "client/response_handling.h"
#include "foundation/filled_text.h"
#include "foundation/text.h"
#include "foundation/url.h"
#include "foundation/wipe.h"
#include "platform/settings_store.h"

namespace quillmar {
namespace {

constexpr std::size_t loggedAnswerCharacters = 500;

// The calls of a child's device report every encoding failure as NetworkError::encodingError.
bool hasEncodingError(const CallFacts& call) { return call.rules.judging == Judging::byExactly200; }

}  // namespace

// Kept for a retry. Its body may hold a password.
struct NetworkService::KeptRequest {
  explicit KeptRequest(HttpRequest kept) : request(std::move(kept)) {}
  KeptRequest(const KeptRequest&) = delete;
  KeptRequest& operator=(const KeptRequest&) = delete;
  ~KeptRequest() { request.wipeSecrets(); }

  HttpRequest request;
};

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
  if (const auto stored = settings_.read(settings::apiBaseURL)) {
    return *stored + "/api/v1";
  }
  const auto region = settings_.read(settings::region);
  const auto root = region ? deployments_.root(*region) : std::nullopt;
  return root ? std::optional(*root + "/api/v1") : std::nullopt;
}

std::string NetworkService::defaultEnrollmentURL() const { return deployments_.australia + "/api/v1"; }

Result<HttpRequest> NetworkService::makeRequest(std::string_view method, const std::string& url,
                                                std::optional<Secret> body) {
  if (!URL::parse(url)) {
    return Error(NetworkError::invalidResponse());
  }
  HttpRequest request;
  request.method = method;
  request.url = url;
  if (body) {
    request.setHeader("Content-Type", "application/json");
    request.body = std::move(*body).release();
  }
  return request;
}

Result<HttpRequest> NetworkService::buildRequest(const CallFacts& call, const std::string& path,
                                                 std::optional<Result<Secret>> body) const {
  auto root = baseURL();
  if (!root && call.rules.root == Root::orDefault) {
    root = defaultEnrollmentURL();
  }
  if (!root) {
    tell(call, &CallLines::noRegion);
    return Error(NetworkError::noRegionConfigured());
  }
  const std::string url = *root + path;
  tell(call, &CallLines::url, {url});
  if (call.lines && !call.lines->region.empty()) {
    tell(call, &CallLines::region, {settings_.read(settings::region).value_or("nil")});
  }
  auto request = makeRequest(call.method, url,
                             body && body->ok() ? std::optional(std::move(*body).value()) : std::nullopt);
  if (!request.ok()) {
    tell(call, &CallLines::invalidURL, {url});
  } else if (body && !body->ok()) {
    tell(call, &CallLines::encodeError, {body->error().localizedDescription()});
    return hasEncodingError(call) ? Error(NetworkError::encodingError()) : body->error();
  }
  return request;
}

void NetworkService::sendRequest(const CallFacts& call, HttpRequest request, Completion<Answer> completion) {
  if (call.rules.token == Token::bearer) {
    performRequest(std::move(request), false, std::move(completion));
    return;
  }
  dataTask(std::move(request),
           [judging = call.rules.judging, completion = std::move(completion)](DataTaskResult result) {
             completion(answerOf(std::move(result), judging));
           });
}

void NetworkService::dataTask(HttpRequest request, std::function<void(DataTaskResult)> handle) {
  http_.dataTask(std::move(request),
                 [weak = weak_from_this(), handle = std::move(handle)](DataTaskResult result) {
                   if (const auto self = weak.lock()) {
                     handle(std::move(result));
                   }
                 });
}

Result<void> NetworkService::judgedByStatus(const CallFacts& call, const Result<Answer>& answer) const {
  if (!answer.ok()) {
    const bool isIncomplete = answer.error() == NetworkError::invalidResponse();
    tell(call, isIncomplete ? &CallLines::noAnswer : &CallLines::error,
         {answer.error().localizedDescription()});
    return answer.error();
  }
  const auto& [data, response] = answer.value();
  if (response.status) {
    tell(call, &CallLines::status, {std::to_string(*response.status)});
  }
  if (call.lines && isValidUtf8(data)) {
    tell(call, &CallLines::response, {firstCharacters(data, loggedAnswerCharacters)});
  }
  return judgedBy(call.rules.judging, answer.value());
}

void NetworkService::storeToken(const std::string& token) { settings_.write(settings::authToken, token); }

Result<void> NetworkService::addAuthHeader(HttpRequest& request) const {
  auto token = settings_.read(settings::authToken);
  if (!token) {
    log("[NetworkService] addAuthHeader - NO TOKEN FOUND in UserDefaults");
    return Error(NetworkError::unauthorized());
  }
  log("[NetworkService] addAuthHeader - token found, length: ", std::to_string(characterCount(*token)));
  request.setHeader("Authorization", "Bearer " + *token);
  wipe(*token);
  return success();
}

void NetworkService::performRequest(HttpRequest request, bool isRetry, Completion<Answer> completion) {
  perform(std::make_shared<const KeptRequest>(std::move(request)), isRetry, std::move(completion));
}

void NetworkService::perform(std::shared_ptr<const KeptRequest> kept, bool isRetry,
                             Completion<Answer> completion) {
  HttpRequest authorised = kept->request;
  if (const auto header = addAuthHeader(authorised); !header.ok()) {
    authorised.wipeSecrets();
    completion(header.error());
    return;
  }
  dataTask(std::move(authorised), [this, kept = std::move(kept), isRetry,
                                   completion = std::move(completion)](DataTaskResult result) {
    auto answer = answerOf(std::move(result));
    if (!answer.ok() || answer.value().response.status != 401 || isRetry) {
      completion(std::move(answer));
      return;
    }
    log("[NetworkService] Got 401, attempting token refresh...");
    refreshToken([this, kept, completion](const Result<AuthResponse>& refreshed) {
      if (!refreshed.ok()) {
        log("[NetworkService] Token refresh failed: ", refreshed.error().localizedDescription());
        completion(Error(NetworkError::unauthorized()));
        return;
      }
      log("[NetworkService] Token refreshed successfully, retrying request...");
      perform(kept, true, completion);
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
  auto request = makeRequest(calls::refreshToken.method, *root + std::string(calls::refreshToken.path));
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
  dataTask(std::move(request).value(),
           [this, completion = std::move(completion)](const DataTaskResult& result) {
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
    completion(storeRefreshedToken(answer));
  }
  drainRefreshQueue(std::nullopt, result.data);
}

Result<AuthResponse> NetworkService::storeRefreshedToken(const Result<Answer>& answer) {
  const auto status = answer.value().response.status;
  if (status) {
    log("[NetworkService] RefreshToken response status: ", std::to_string(*status));
  }
  if (status == 401) {
    log("[NetworkService] RefreshToken failed: Token invalid or expired");
    return Error(NetworkError::unauthorized());
  }
  auto account = judged(calls::refreshToken, answer);
  if (!account.ok()) {
    log("[NetworkService] RefreshToken decode/handle error: ", account.error().localizedDescription());
    return account;
  }
  const std::string& token = account.value().token;
  settings_.write(settings::authToken, token);
  settings_.write(settings::authToken, token);
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

void NetworkService::clearSession() {
  settings::forget(settings_, Reset::atLogout);
  settings_.scrub();
}

void NetworkService::tell(const CallFacts& call, std::string_view CallLines::*line,
                          std::initializer_list<std::string_view> values) const {
  if (call.lines && !(call.lines->*line).empty()) {
    tellLine(call, filled(call.lines->*line, values));
  }
}

void NetworkService::tellLine(const CallFacts& call, std::string_view line) const {
  (log_.*call.lines->write)(line);
}

void NetworkService::tellRefusal(const CallFacts& call, const Answer& answer, const Error& error) const {
  tell(call, &CallLines::refusal, {error.localizedDescription()});
  if (isValidUtf8(answer.data)) {
    tell(call, &CallLines::refusedResponse, {answer.data});
  }
}

void NetworkService::log(std::string_view line, std::string_view detail) const {
  log_.print(std::string(line) + std::string(detail));
}

}  // namespace quillmar
