#include "client/device_calls.h"

#include <memory>
#include <utility>
#include <vector>

#include "client/arrivals.h"
#include "client/network_service.h"
#include "client/recent_logs.h"
#include "foundation/date_format.h"
#include "platform/dispatch_group.h"

namespace quillmar {
namespace {

Result<std::vector<DNSLog>> logsOf(Result<DNSLogsResponse> answer) {
  return answer.ok() ? Result(std::move(answer).value().logs) : Result<std::vector<DNSLog>>(answer.error());
}

struct DeviceAnswer {
  std::size_t device = 0;
  Result<NetworkService::Answer> answer;
};

}  // namespace

void NetworkService::getRecentDeviceLogs(const std::vector<std::string>& deviceIds, Duration since,
                                         std::size_t limit, Completion<std::vector<DNSLog>> completion) {
  if (deviceIds.empty()) {
    completion(std::vector<DNSLog>());
    return;
  }
  const HttpSession::Batch batch(http_);
  const DispatchGroup group;
  const auto arrivals = std::make_shared<Arrivals<DeviceAnswer>>();
  const auto start = formatISO8601(dispatch_.now() - since);
  for (std::size_t device = 0; device < deviceIds.size(); ++device) {
    group.enter();
    auto collect = [group, arrivals, device](Result<Answer> answer) {
      arrivals->add({device, std::move(answer)});
      group.leave();
    };
    run(calls::getRecentDeviceLogs, {deviceIds[device], limit / deviceIds.size(), start}, NoBody(),
        Completion<Answer>(std::move(collect)));
  }
  group.notify(dispatch_.main(), [weak = weak_from_this(), devices = deviceIds.size(), arrivals, limit,
                                  completion = std::move(completion)] {
    const auto self = weak.lock();
    if (!self) {
      return;
    }
    RecentLogs recent(devices);
    for (const auto& [device, answer] : arrivals->take()) {
      recent.add(device, logsOf(self->judged(calls::getRecentDeviceLogs, answer)));
    }
    completion(recent.takeNewest(limit));
  });
}

}  // namespace quillmar
