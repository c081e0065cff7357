#include <utility>

#include "client/judging.h"
#include "client/network_service.h"
#include "client/recent_logs.h"
#include "foundation/date_format.h"
#include "foundation/url.h"
#include "platform/dispatch_group.h"

namespace quillmar {
namespace {

std::string devicePath(const std::string& deviceId, std::string_view rest = {}) {
  return "/devices/" + deviceId + std::string(rest);
}

Completion<DNSLogsResponse> takingLogs(Completion<std::vector<DNSLog>> completion) {
  return [completion = std::move(completion)](Result<DNSLogsResponse> answer) {
    completion(answer.ok() ? Result(std::move(answer).value().logs)
                           : Result<std::vector<DNSLog>>(answer.error()));
  };
}

}  // namespace

void NetworkService::deleteDevice(const std::string& deviceId, Completion<void> completion) {
  authorisedCall("DELETE", devicePath(deviceId), {}, validating(std::move(completion)));
}

void NetworkService::updateDevice(const std::string& deviceId, const UpdateDeviceRequest& changes,
                                  Completion<Device> completion) {
  authorisedCall("PUT", devicePath(deviceId), encodeJson(changes), decoding(std::move(completion)));
}

void NetworkService::getDevicePolicy(const std::string& deviceId, Completion<DevicePolicy> completion) {
  authorisedCall("GET", devicePath(deviceId, "/policy"), {}, decoding(std::move(completion)));
}

void NetworkService::updateDevicePolicy(const std::string& deviceId, bool isBlocked,
                                        const std::string& blockMode, Completion<DevicePolicy> completion) {
  authorisedCall("PUT", devicePath(deviceId, "/policy"),
                 encodeJson(UpdatePolicyRequest{isBlocked, blockMode}), decoding(std::move(completion)));
}

void NetworkService::addBlockedDomain(const std::string& deviceId, const std::string& domain,
                                      Completion<void> completion) {
  authorisedCall("POST", devicePath(deviceId, "/policy/block"), encodeJson(AddDomainRequest{domain}),
                 validating(std::move(completion)));
}

void NetworkService::removeBlockedDomain(const std::string& deviceId, const std::string& domain,
                                         Completion<void> completion) {
  authorisedCall("DELETE", devicePath(deviceId, "/policy/block/" + percentEncodedForPath(domain)), {},
                 validating(std::move(completion)));
}

void NetworkService::addAllowedDomain(const std::string& deviceId, const std::string& domain,
                                      Completion<void> completion) {
  authorisedCall("POST", devicePath(deviceId, "/policy/allow"), encodeJson(AddDomainRequest{domain}),
                 validating(std::move(completion)));
}

void NetworkService::removeAllowedDomain(const std::string& deviceId, const std::string& domain,
                                         Completion<void> completion) {
  authorisedCall("DELETE", devicePath(deviceId, "/policy/allow/" + percentEncodedForPath(domain)), {},
                 validating(std::move(completion)));
}

void NetworkService::getDeviceLogs(const std::string& deviceId, int limit, int offset,
                                   Completion<std::vector<DNSLog>> completion) {
  authorisedCall(
      "GET",
      devicePath(deviceId, "/logs?limit=" + std::to_string(limit) + "&offset=" + std::to_string(offset)), {},
      decoding(takingLogs(std::move(completion))));
}

void NetworkService::getRecentDeviceLogs(const std::vector<std::string>& deviceIds, Duration since,
                                         std::size_t limit, Completion<std::vector<DNSLog>> completion) {
  if (deviceIds.empty()) {
    completion(std::vector<DNSLog>());
    return;
  }
  const DispatchGroup group;
  const auto queue = dispatch_.makeSerialQueue("com.quillmar.logs-fetch");
  const auto collected = std::make_shared<RecentLogs>(deviceIds.size());
  const std::string query = "/logs?limit=" + std::to_string(limit / deviceIds.size()) +
                            "&since=" + percentEncodedForQuery(formatISO8601(dispatch_.now() - since));
  for (std::size_t device = 0; device < deviceIds.size(); ++device) {
    group.enter();
    authorisedCall("GET", devicePath(deviceIds[device], query), {},
                   decoding(takingLogs([group, queue, collected, device](Result<std::vector<DNSLog>> result) {
                     queue->async([group, collected, device, result = std::move(result)]() mutable {
                       collected->add(device, std::move(result));
                       group.leave();
                     });
                   })));
  }
  group.notify(dispatch_.main(), [collected, limit, completion = std::move(completion)] {
    completion(collected->takeNewest(limit));
  });
}

}  // namespace quillmar
