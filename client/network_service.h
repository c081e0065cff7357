#pragma once

#include <concepts>
#include <cstddef>
#include <functional>
#include <initializer_list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "client/call.h"
#include "client/deployments.h"
#include "client/network_error.h"
#include "foundation/date.h"
#include "foundation/json.h"
#include "foundation/result.h"
#include "foundation/secret.h"
#include "platform/http_session.h"
#include "platform/settings.h"

namespace quillmar {

class Dispatch;
struct AuthResponse;
struct CheckinResponse;
struct CompleteEnrollmentRequest;
struct CompleteEnrollmentResponse;
struct DNSLog;
struct EnrollmentStatusResponse;

template <class T>
using Completion = std::function<void(Result<T>)>;

// The one client of the cloud service. Calls may be made from any thread and return at once. A completion
// runs exactly once: on the caller's thread if nothing was sent, else on the HTTP session's thread. There are
// three exceptions, whose completion never runs: a status poll whose URL does not parse, a call that waits
// for a refresh which ends with neither an error nor a body, and a call whose service is destroyed first.
class NetworkService : public std::enable_shared_from_this<NetworkService> {
 public:
  static constexpr std::string_view regionKey = settings::region;
  static constexpr std::string_view apiURLKey = settings::apiBaseURL;
  static constexpr std::string_view authTokenKey = settings::authToken;
  static constexpr std::string_view parentIdKey = settings::parentId;
  static constexpr std::string_view parentEmailKey = settings::parentEmail;
  static constexpr std::string_view parentNameKey = settings::parentName;

  static std::shared_ptr<NetworkService> make(HttpSession& http, SettingsStore& settings, Log& log,
                                              Dispatch& dispatch, Deployments deployments);

  // The root of every call, read anew each time; nullopt without a stored root or a known region.
  std::optional<std::string> baseURL() const;
  // The root for a device that is not enrolled yet.
  std::string defaultEnrollmentURL() const;

  // Sends a call with its path arguments, its body and its completion. `call` is a row of
  // "client/child_calls.h" and its like. Without arguments or a body these parameters are left out.
  template <Record Body, class T, std::size_t places>
  void send(const Call<Body, T, places>& call, const PathArguments<places>& arguments, const Body& body,
            std::type_identity_t<Completion<T>> completion) {
    run(call, arguments, body, std::move(completion));
  }
  template <Record Body, class T>
  void send(const Call<Body, T>& call, const Body& body, std::type_identity_t<Completion<T>> completion) {
    run(call, {}, body, std::move(completion));
  }
  template <class T, std::size_t places>
  void send(const Call<NoBody, T, places>& call, const PathArguments<places>& arguments,
            std::type_identity_t<Completion<T>> completion) {
    run(call, arguments, NoBody(), std::move(completion));
  }
  template <class T>
  void send(const Call<NoBody, T>& call, std::type_identity_t<Completion<T>> completion) {
    run(call, {}, NoBody(), std::move(completion));
  }

  // Calls with steps of their own.

  void refreshToken(Completion<AuthResponse> completion);
  // False if the URL does not parse: nothing is sent and the completion never runs.
  bool getEnrollmentStatus(const std::string& deviceId, Completion<EnrollmentStatusResponse> completion);
  void completeEnrollment(const CompleteEnrollmentRequest& enrollment, bool isRetry,
                          Completion<CompleteEnrollmentResponse> completion);
  void checkin(const std::string& deviceId, const std::string& deviceType,
               Completion<CheckinResponse> completion);
  // The newest `limit` entries of all devices within `since`, newest first. Each device is asked for an equal
  // share of `limit`. Fails only if some device failed and no device returned an entry. Unlike the other
  // calls it completes on the main queue, or at once on the caller's thread if there are no devices. It also
  // decodes on the main queue: moving hundreds of texts to another core costs more than decoding them there.
  void getRecentDeviceLogs(const std::vector<std::string>& deviceIds, Duration since, std::size_t limit,
                           Completion<std::vector<DNSLog>> completion);

  // Removes the token and the account of this session.
  void clearSession();

  // Steps that several calls share.

  struct Answer {
    std::string data;
    Response response;
  };

  // Fails with `unauthorized` if no token is stored; an empty token counts as stored.
  Result<void> addAuthHeader(HttpRequest& request) const;
  static Result<void> validateResponse(const Response& response, std::string_view data);
  // Sends with the token stored at that moment. A first 401 causes one refresh and one retry.
  void performRequest(HttpRequest request, bool isRetry, Completion<Answer> completion);

  bool isRefreshingToken() const;

 private:
  struct Passkey {};

 public:
  NetworkService(Passkey, HttpSession& http, SettingsStore& settings, Log& log, Dispatch& dispatch,
                 Deployments deployments);

 private:
  static std::optional<Result<Secret>> encoded(const NoBody& /*nothing*/) { return std::nullopt; }
  template <Record Body>
  static std::optional<Result<Secret>> encoded(const Body& body) {
    auto json = encodeJson(body);
    return json.ok() ? Result<Secret>(std::move(json).value()) : Result<Secret>(json.error());
  }

  // The steps of a call, from its arguments to its completion. R is the call's answer, or `Answer`: what the
  // service has sent, to be judged later.
  template <class Body, class T, std::size_t places, class R>
  void run(const CallRow<Body, T, places>& call, const PathArguments<places>& arguments, const Body& body,
           Completion<R> completion);
  template <class Body, class T, std::size_t places>
  Result<HttpRequest> requestOf(const CallRow<Body, T, places>& call, const PathArguments<places>& arguments,
                                const Body& body) const;
  template <class Body, class T, std::size_t places>
  Completion<Answer> answering(const CallRow<Body, T, places>& call, Completion<T> completion);
  template <class Body, class T, std::size_t places>
  Result<T> judged(const CallRow<Body, T, places>& call, const Result<Answer>& answer);
  template <class Body, class T, std::size_t places>
  void noteSuccess(const CallRow<Body, T, places>& call, const T& record);

  // The steps that do not depend on the types. The root is checked first, then the URL, then the body.
  Result<HttpRequest> buildRequest(const CallFacts& call, const std::string& path,
                                   std::optional<Result<Secret>> body) const;
  static Result<HttpRequest> makeRequest(std::string_view method, const std::string& url,
                                         std::optional<Secret> body = {});
  void sendRequest(const CallFacts& call, HttpRequest request, Completion<Answer> completion);
  struct KeptRequest;
  void perform(std::shared_ptr<const KeptRequest> kept, bool isRetry, Completion<Answer> completion);
  // Runs `handle` only if this service still exists, so `handle` may use `this`.
  void dataTask(HttpRequest request, std::function<void(DataTaskResult)> handle);
  // Whether this call counts the answer as a success.
  Result<void> judgedByStatus(const CallFacts& call, const Result<Answer>& answer) const;
  void storeToken(const std::string& token);

  void tell(const CallFacts& call, std::string_view CallLines::*line,
            std::initializer_list<std::string_view> values = {}) const;
  void tellLine(const CallFacts& call, std::string_view line) const;
  void tellRefusal(const CallFacts& call, const Answer& answer, const Error& error) const;
  void log(std::string_view line, std::string_view detail = {}) const;

  Result<HttpRequest> makeRefreshRequest() const;
  void finishRefresh(const DataTaskResult& result, const Completion<AuthResponse>& completion);
  Result<AuthResponse> storeRefreshedToken(const Result<Answer>& answer);
  void drainRefreshQueue(const std::optional<Error>& error, const std::optional<std::string>& data);

  Result<CheckinResponse> judgeCheckin(const DataTaskResult& result);
  Result<Answer> completionAnswer(const DataTaskResult& result);
  Result<CompleteEnrollmentResponse> judgeCompletion(const Result<Answer>& answer);

  HttpSession& http_;
  SettingsStore& settings_;
  Log& log_;
  Dispatch& dispatch_;
  const Deployments deployments_;

  mutable std::mutex refreshMutex_;
  bool isRefreshingToken_ = false;
  std::vector<Completion<AuthResponse>> refreshCompletionQueue_;
};

template <class Body, class T, std::size_t places, class R>
void NetworkService::run(const CallRow<Body, T, places>& call, const PathArguments<places>& arguments,
                         const Body& body, Completion<R> completion) {
  auto request = requestOf(call, arguments, body);
  if (!request.ok()) {
    completion(request.error());
  } else if constexpr (std::same_as<R, Answer>) {
    sendRequest(call, std::move(request).value(), std::move(completion));
  } else {
    sendRequest(call, std::move(request).value(), answering(call, std::move(completion)));
  }
}

template <class Body, class T, std::size_t places>
Result<HttpRequest> NetworkService::requestOf(const CallRow<Body, T, places>& call,
                                              const PathArguments<places>& arguments,
                                              const Body& body) const {
  auto request = buildRequest(call, filledPath(call.path, arguments.values()), encoded(body));
  if (request.ok() && call.log && call.log->sending) {
    tellLine(call, call.log->sending(request.value().url, body));
  }
  return request;
}

template <class Body, class T, std::size_t places>
Completion<NetworkService::Answer> NetworkService::answering(const CallRow<Body, T, places>& call,
                                                             Completion<T> completion) {
  return [this, call, completion = std::move(completion)](const Result<Answer>& answer) {
    completion(judged(call, answer));
  };
}

template <class Body, class T, std::size_t places>
Result<T> NetworkService::judged(const CallRow<Body, T, places>& call, const Result<Answer>& answer) {
  auto success = judgedByStatus(call, answer);
  if constexpr (std::same_as<T, void>) {
    return success;
  } else {
    auto record = success.ok() ? decodeJson<T>(answer.value().data) : Result<T>(success.error());
    if (record.ok()) {
      noteSuccess(call, record.value());
    } else if (answer.ok()) {
      tellRefusal(call, answer.value(), record.error());
    }
    return record;
  }
}

template <class Body, class T, std::size_t places>
void NetworkService::noteSuccess(const CallRow<Body, T, places>& call, const T& record) {
  if constexpr (requires { record.token; }) {
    if (call.rules.token == Token::fromAnswer) {
      storeToken(record.token);
    }
  }
  if (call.log && call.log->success) {
    tellLine(call, call.log->success(record));
  }
}

}  // namespace quillmar
