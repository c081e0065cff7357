#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "client/deployments.h"
#include "client/network_error.h"
#include "client/records/account.h"
#include "client/records/checkin.h"
#include "client/records/enrollment.h"
#include "foundation/result.h"
#include "platform/http_session.h"
#include "platform/log.h"
#include "platform/settings_store.h"

namespace quillmar {

template <class T>
using Completion = std::function<void(Result<T>)>;

// The one client of the cloud service. A call may be made from any thread and returns at once. Its completion
// runs exactly once: on the caller's thread when nothing could be sent, else on the HTTP session's thread.
// Three exceptions are never answered: a status poll whose URL does not parse, a call that waits for a
// refresh which ends with neither an error nor a body, and a call whose service has gone meanwhile.
class NetworkService : public std::enable_shared_from_this<NetworkService> {
 public:
  static constexpr std::string_view regionKey = "com.quillmar.region";
  static constexpr std::string_view apiURLKey = "com.quillmar.apiBaseURL";
  static constexpr std::string_view authTokenKey = "authToken";
  static constexpr std::string_view parentIdKey = "parentId";
  static constexpr std::string_view parentEmailKey = "parentEmail";
  static constexpr std::string_view parentNameKey = "parentName";

  static std::shared_ptr<NetworkService> make(HttpSession& http, SettingsStore& settings, Log& log,
                                              Deployments deployments);

  // The root of every call, read afresh each time; nothing without a stored root or a known region.
  std::optional<std::string> baseURL() const;
  // The root of a device that is not enrolled yet.
  std::string defaultEnrollmentURL() const;

  // Accounts.
  void registerAccount(const RegisterRequest& account, Completion<AuthResponse> completion);
  void login(const LoginRequest& credentials, Completion<AuthResponse> completion);
  void deleteAccount(const std::string& password, Completion<void> completion);
  void refreshToken(Completion<AuthResponse> completion);
  // Forgets the token and the account of this session.
  void clearSession();

  // Enrollment and check-in.
  void initEnrollment(const std::string& deviceId, const std::string& deviceName,
                      const std::string& deviceType, Completion<InitEnrollmentResponse> completion);
  // False where nothing was sent, since the URL does not parse; the completion is never called then.
  bool getEnrollmentStatus(const std::string& deviceId, Completion<EnrollmentStatusResponse> completion);
  void completeEnrollment(const std::string& enrollmentCode, const std::string& deviceName,
                          const std::optional<std::string>& childId, bool isRetry,
                          Completion<CompleteEnrollmentResponse> completion);
  void manualEnrollment(const ManualEnrollmentRequest& device,
                        Completion<ManualEnrollmentResponse> completion);
  void checkin(const std::string& deviceId, const std::string& deviceType,
               Completion<CheckinResponse> completion);

  // Steps that the calls share.

  struct Answer {
    std::string data;
    Response response;
  };

  // Fails with `unauthorized` where no token is stored; an empty one counts as stored.
  Result<void> addAuthHeader(HttpRequest& request) const;
  static Result<void> validateResponse(const Response& response, std::string_view data);
  // Sends with the token as it is stored at that moment. A first 401 leads to a refresh and one repetition.
  void performRequest(HttpRequest request, bool isRetry, Completion<Answer> completion);

  bool isRefreshingToken() const;

 private:
  struct Passkey {};

 public:
  NetworkService(Passkey, HttpSession& http, SettingsStore& settings, Log& log, Deployments deployments);

 private:
  struct Words;

  static Result<HttpRequest> makeRequest(std::string_view method, const std::string& url,
                                         std::optional<std::string> body = {});
  // `handle` runs only if this service is still there by then, so that it may use `this`.
  void send(HttpRequest request, std::function<void(const DataTaskResult&)> handle);
  void authenticate(const Words& words, std::string_view path, const Result<std::string>& body,
                    Completion<AuthResponse> completion);
  Result<AuthResponse> handleAuthentication(const Words& words, const DataTaskResult& result);

  Result<HttpRequest> makeRefreshRequest() const;
  void finishRefresh(const DataTaskResult& result, const Completion<AuthResponse>& completion);
  Result<AuthResponse> storeRefreshedToken(const Answer& answer);
  void drainRefreshQueue(const std::optional<Error>& error, const std::optional<std::string>& data);

  std::string enrollmentRoot() const;
  Result<CheckinResponse> judgeCheckin(const DataTaskResult& result);
  Result<Answer> completionAnswer(const DataTaskResult& result);
  Result<CompleteEnrollmentResponse> judgeCompletion(const Answer& answer);

  void log(std::string_view line, std::string_view detail = {}) const;

  HttpSession& http_;
  SettingsStore& settings_;
  Log& log_;
  const Deployments deployments_;

  mutable std::mutex refreshMutex_;
  bool isRefreshingToken_ = false;
  std::vector<Completion<AuthResponse>> refreshCompletionQueue_;
};

}  // namespace quillmar
