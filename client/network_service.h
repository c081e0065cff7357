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
#include "client/records/child.h"
#include "client/records/device.h"
#include "client/records/device_policy.h"
#include "client/records/dns_log.h"
#include "client/records/enrollment.h"
#include "client/records/family.h"
#include "client/records/home_network.h"
#include "foundation/result.h"
#include "platform/dispatch.h"
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
                                              Dispatch& dispatch, Deployments deployments);

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

  // Children. No segment of a path is encoded, so that a domain with a blank fails with `invalidResponse`.
  // `getChildren` and `createChild` leave a trail in the system log.
  void getChildren(Completion<ChildrenResponse> completion);
  void createChild(const CreateChildRequest& child, Completion<ChildProfileWithDevices> completion);
  void getChild(const std::string& childId, Completion<ChildProfileWithDevices> completion);
  void updateChild(const std::string& childId, const UpdateChildRequest& changes,
                   Completion<ChildProfile> completion);
  void deleteChild(const std::string& childId, Completion<void> completion);
  void linkDevice(const std::string& childId, const std::string& deviceId, Completion<void> completion);
  void unlinkDevice(const std::string& childId, const std::string& deviceId, Completion<void> completion);
  void updateChildPolicy(const std::string& childId, bool isBlocked, const std::string& blockMode,
                         Completion<ChildPolicy> completion);
  void addChildBlockedDomain(const std::string& childId, const std::string& domain,
                             Completion<ChildPolicy> completion);
  void removeChildBlockedDomain(const std::string& childId, const std::string& domain,
                                Completion<ChildPolicy> completion);
  void addChildAllowedDomain(const std::string& childId, const std::string& domain,
                             Completion<ChildPolicy> completion);
  void removeChildAllowedDomain(const std::string& childId, const std::string& domain,
                                Completion<ChildPolicy> completion);

  // Devices, their policies and their logs. Here a domain in a path is percent-encoded.
  void deleteDevice(const std::string& deviceId, Completion<void> completion);
  void updateDevice(const std::string& deviceId, const UpdateDeviceRequest& changes,
                    Completion<Device> completion);
  void getDevicePolicy(const std::string& deviceId, Completion<DevicePolicy> completion);
  void updateDevicePolicy(const std::string& deviceId, bool isBlocked, const std::string& blockMode,
                          Completion<DevicePolicy> completion);
  void addBlockedDomain(const std::string& deviceId, const std::string& domain, Completion<void> completion);
  void removeBlockedDomain(const std::string& deviceId, const std::string& domain,
                           Completion<void> completion);
  void addAllowedDomain(const std::string& deviceId, const std::string& domain, Completion<void> completion);
  void removeAllowedDomain(const std::string& deviceId, const std::string& domain,
                           Completion<void> completion);
  void getDeviceLogs(const std::string& deviceId, int limit, int offset,
                     Completion<std::vector<DNSLog>> completion);
  // The newest `limit` entries of all the devices since that long ago, newest first. Asks each device for an
  // equal share of `limit`. Fails only where no device gave anything and one failed. Unlike every other call
  // it completes on the main queue, or at once on the caller's thread where there is no device.
  void getRecentDeviceLogs(const std::vector<std::string>& deviceIds, Duration since, std::size_t limit,
                           Completion<std::vector<DNSLog>> completion);

  // The home network.
  void getHomeNetwork(Completion<HomeNetworkResponse> completion);
  void createHomeNetwork(const std::optional<std::string>& name, bool confirm,
                         Completion<CreateHomeNetworkResponse> completion);
  void updateHomeNetworkIP(Completion<UpdateHomeNetworkIPResponse> completion);

  // The family. `validateInvite` and `joinFamily` go out without a token.
  void getFamily(Completion<FamilyResponse> completion);
  void createInvitation(const std::optional<std::string>& inviteeName,
                        Completion<CreateInvitationResponse> completion);
  void revokeInvitation(const std::string& invitationId, Completion<void> completion);
  void validateInvite(const std::string& inviteCode, Completion<ValidateInviteResponse> completion);
  void updateMemberPermissions(const std::string& memberId, const UpdateMemberPermissionsRequest& changes,
                               Completion<void> completion);
  void removeMember(const std::string& memberId, Completion<void> completion);
  void joinFamily(const JoinFamilyRequest& account, Completion<JoinFamilyResponse> completion);

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
  NetworkService(Passkey, HttpSession& http, SettingsStore& settings, Log& log, Dispatch& dispatch,
                 Deployments deployments);

 private:
  struct Words;
  struct Trail;

  static Result<HttpRequest> makeRequest(std::string_view method, const std::string& url,
                                         std::optional<std::string> body = {});
  // The request of a call: the root, then the URL, then the body must be good.
  Result<HttpRequest> buildRequest(std::string_view method, const std::string& path,
                                   const std::optional<Result<std::string>>& body) const;
  void authorisedCall(std::string_view method, const std::string& path,
                      const std::optional<Result<std::string>>& body, Completion<Answer> completion);
  template <Record T>
  Result<T> judgeOnTrail(const Trail& trail, const Result<Answer>& answer);
  // `handle` runs only if this service is still there by then, so that it may use `this`.
  void send(HttpRequest request, std::function<void(DataTaskResult)> handle);
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
  Dispatch& dispatch_;
  const Deployments deployments_;

  mutable std::mutex refreshMutex_;
  bool isRefreshingToken_ = false;
  std::vector<Completion<AuthResponse>> refreshCompletionQueue_;
};

}  // namespace quillmar
