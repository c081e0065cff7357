#include "client/device_calls.h"

#include <utility>

#include "client/network_service.h"
#include "client/recent_logs.h"
#include "foundation/date_format.h"
#include "platform/dispatch_group.h"

namespace quillmar {
namespace {

Result<std::vector<DNSLog>> logsOf(Result<DNSLogsResponse> answer) {
  return answer.ok() ? Result(std::move(answer).value().logs) : Result<std::vector<DNSLog>>(answer.error());
}

}  // namespace

void NetworkService::getRecentDeviceLogs(const std::vector<std::string>& deviceIds, Duration since,
                                         std::size_t limit, Completion<std::vector<DNSLog>> completion) {
  if (deviceIds.empty()) {
    completion(std::vector<DNSLog>());
    return;
  }
  const DispatchGroup group;
  const auto collected = std::make_shared<RecentLogs>(deviceIds.size());
  const auto start = formatISO8601(dispatch_.now() - since);
  for (std::size_t device = 0; device < deviceIds.size(); ++device) {
    group.enter();
    auto collect = [group, collected, device](Result<DNSLogsResponse> answer) {
      collected->add(device, logsOf(std::move(answer)));
      group.leave();
    };
    run(calls::getRecentDeviceLogs, {deviceIds[device], limit / deviceIds.size(), start}, NoBody(),
        Completion<DNSLogsResponse>(std::move(collect)));
  }
  group.notify(dispatch_.main(), [collected, limit, completion = std::move(completion)] {
    completion(collected->takeNewest(limit));
  });
}

}  // namespace quillmar
