#include "console/site_list.h"

#include <unordered_set>
#include <utility>

#include "presentation/relative_timestamp.h"

namespace quillmar {
namespace {

constexpr auto refreshPeriod = std::chrono::seconds(2);

// The newest entry of each site. Expects the newest entries first. Filters before grouping, so a site can be
// among both the blocked and the visited ones.
std::vector<DNSLog> newestOfEachSite(std::vector<DNSLog> logs, const SiteListQuery& query) {
  std::unordered_set<std::string> seen;
  std::vector<DNSLog> newest;
  for (auto& log : logs) {
    const bool isWanted = !query.wasBlocked || log.wasBlocked == *query.wasBlocked;
    if (isWanted && newest.size() < query.mostSites && seen.insert(rootDomain(log)).second) {
      newest.push_back(std::move(log));
    }
  }
  return newest;
}

}  // namespace

SiteLog::SiteLog(ChildPage& page, const DevicesSection& devices, const SiteListNames& names,
                 const SiteListQuery& query)
    : logs(page.screen(), names.logs),
      isLoading(page.screen(), names.isLoading, false),
      page_(page),
      devices_(devices),
      query_(query) {}

void SiteLog::start(ActivityTimeFilter filter) {
  fetch(filter);
  timer_.reset();
  if (filter == ActivityTimeFilter::realTime) {
    timer_ = page_.dispatch().scheduleRepeating(refreshPeriod, [this, filter] { fetch(filter); });
  }
}

void SiteLog::fetch(ActivityTimeFilter filter) {
  if (devices_.devices().empty()) {
    setIfChanged(logs, {});
    showRows();
    return;
  }
  isLoading = true;
  std::vector<std::string> ids;
  for (const Device& device : devices_.devices()) {
    ids.push_back(device.id);
  }
  // Completes on the main queue.
  page_.service().getRecentDeviceLogs(
      ids, span(filter), query_.limit,
      page_.screen().weakly([this](Result<std::vector<DNSLog>> result) { finish(std::move(result)); }));
}

void SiteLog::finish(Result<std::vector<DNSLog>> result) {
  isLoading = false;
  if (!result.ok()) {
    page_.platform().log.system(std::string(query_.failureLine) + result.error().localizedDescription());
    return;
  }
  setIfChanged(logs, newestOfEachSite(std::move(result).value(), query_));
  showRows();
}

std::string SiteLog::timeText(const DNSLog& log) const {
  return relativeTimestamp(log.timestamp, page_.dispatch().now(), page_.dateStyles());
}

}  // namespace quillmar
