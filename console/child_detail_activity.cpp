// What the child's devices asked for.

#include <chrono>
#include <limits>

#include "console/child_detail_view.h"
#include "console/keyed_rows.h"
#include "console/root_domain.h"
#include "presentation/relative_timestamp.h"

namespace quillmar {
namespace {

constexpr auto logsPeriod = std::chrono::seconds(2);
constexpr std::size_t shownRecentSites = 10;
constexpr std::size_t allSites = std::numeric_limits<std::size_t>::max();

// The newest entry of each site, of either kind or of one; the filter comes first, so that a site may be
// among the blocked and the visited ones. The entries come newest first.
std::vector<DNSLog> newestOfEachSite(std::vector<DNSLog> logs, std::optional<bool> wasBlocked,
                                     std::size_t limit) {
  std::unordered_set<std::string> seen;
  std::vector<DNSLog> newest;
  for (auto& log : logs) {
    const bool isWanted = !wasBlocked || log.wasBlocked == *wasBlocked;
    if (isWanted && newest.size() < limit && seen.insert(rootDomain(log)).second) {
      newest.push_back(std::move(log));
    }
  }
  return newest;
}

}  // namespace

struct ChildDetailView::Fetch {
  Published<std::vector<DNSLog>>& logs;
  Published<bool>& isLoading;
  std::chrono::seconds since;
  std::size_t limit;
  std::optional<bool> wasBlocked;
  std::size_t kept;
  std::string_view failureLine;
  void (ChildDetailView::*showRows)();
};

void ChildDetailView::startActivityUpdates() {
  stopActivityTimers();
  switch (selectedTab()) {
    case ChildDetailTab::realTime:
      startRecentActivityTimer();
      break;
    case ChildDetailTab::sitesBlocked:
      restartBlockedLogs();
      break;
    case ChildDetailTab::sitesAllowed:
      restartAllowedLogs();
      break;
  }
}

void ChildDetailView::startRecentActivityTimer() {
  fetchRecentActivity();
  recentActivityTimer_ = dispatch_.scheduleRepeating(logsPeriod, [this] { fetchRecentActivity(); });
}

void ChildDetailView::startBlockedLogsTimer() {
  blockedLogsTimer_ = dispatch_.scheduleRepeating(logsPeriod, [this] { fetchBlockedLogs(); });
}

void ChildDetailView::startAllowedLogsTimer() {
  allowedLogsTimer_ = dispatch_.scheduleRepeating(logsPeriod, [this] { fetchAllowedLogs(); });
}

void ChildDetailView::restartBlockedLogs() {
  if (selectedTab() != ChildDetailTab::sitesBlocked) {
    return;
  }
  fetchBlockedLogs();
  blockedLogsTimer_.reset();
  if (blockedTimeFilter() == ActivityTimeFilter::realTime) {
    startBlockedLogsTimer();
  }
}

void ChildDetailView::restartAllowedLogs() {
  if (selectedTab() != ChildDetailTab::sitesAllowed) {
    return;
  }
  fetchAllowedLogs();
  allowedLogsTimer_.reset();
  if (allowedTimeFilter() == ActivityTimeFilter::realTime) {
    startAllowedLogsTimer();
  }
}

void ChildDetailView::stopActivityTimers() {
  recentActivityTimer_.reset();
  blockedLogsTimer_.reset();
  allowedLogsTimer_.reset();
}

void ChildDetailView::stopAllTimers() {
  stopActivityTimers();
  deviceStatusTimer_.reset();
}

void ChildDetailView::fetchRecentActivity() {
  fetch({recentLogs, isLoadingRecentLogs, span(ActivityTimeFilter::realTime), 20, std::nullopt,
         shownRecentSites,
         "[ChildDetailView] Failed to fetch recent activity: ", &ChildDetailView::showRecentRows});
}

void ChildDetailView::fetchBlockedLogs() {
  fetch({blockedLogs, isLoadingBlockedLogs, span(blockedTimeFilter()), 100, true, allSites,
         "[ChildDetailView] Failed to fetch blocked logs: ", &ChildDetailView::showBlockedSiteRows});
}

void ChildDetailView::fetchAllowedLogs() {
  fetch({allowedLogs, isLoadingAllowedLogs, span(allowedTimeFilter()), 100, false, allSites,
         "[ChildDetailView] Failed to fetch allowed logs: ", &ChildDetailView::showAllowedSiteRows});
}

void ChildDetailView::fetch(const Fetch& list) {
  if (devices().empty()) {
    setIfChanged(list.logs, {});
    (this->*list.showRows)();
    return;
  }
  list.isLoading = true;
  std::vector<std::string> ids;
  for (const Device& device : devices()) {
    ids.push_back(device.id);
  }
  // It completes on the main queue.
  service().getRecentDeviceLogs(
      ids, list.since, list.limit,
      weakly([this, list](Result<std::vector<DNSLog>> result) { finishFetch(list, std::move(result)); }));
}

void ChildDetailView::finishFetch(const Fetch& list, Result<std::vector<DNSLog>> result) {
  list.isLoading = false;
  if (!result.ok()) {
    environment_.platform().log.system(std::string(list.failureLine) + result.error().localizedDescription());
    return;
  }
  setIfChanged(list.logs, newestOfEachSite(std::move(result).value(), list.wasBlocked, list.kept));
  (this->*list.showRows)();
}

template <class Row>
void ChildDetailView::showLogRows(Rows<Row>& rows, const std::vector<DNSLog>& logs,
                                  void (ChildDetailView::*onSwipe)(const DNSLog&)) {
  showInRows(
      rows, logs, [](const DNSLog& log) { return rootDomain(log); },
      [this, onSwipe](const DNSLog& log) {
        return std::make_shared<Row>(
            log, weakly([this, onSwipe](const DNSLog& swiped) { (this->*onSwipe)(swiped); }));
      },
      [this](Row& row, const DNSLog& log) {
        row.show(log, timeText(log));
        if constexpr (std::is_base_of_v<AllowableRow, Row>) {
          setIfChanged(row.isAlreadyAllowed, isDomainAllowed(row.site()));
        }
      });
}

std::string ChildDetailView::timeText(const DNSLog& log) {
  return relativeTimestamp(log.timestamp, dispatch_.now(), dateStyles());
}

template <class Row>
void ChildDetailView::updateTimes(Rows<Row>& rows) {
  for (std::size_t i = 0; i < rows.size(); ++i) {
    setIfChanged(rows[i].timeText, timeText(rows[i].log()));
  }
}

void ChildDetailView::showPassingTime() {
  showDeviceRows();
  updateTimes(recentActivityRows);
  updateTimes(blockedSiteRows);
  updateTimes(allowedSiteRows);
}

void ChildDetailView::showRecentRows() {
  showLogRows(recentActivityRows, recentLogs(), &ChildDetailView::allowFromLog);
}

void ChildDetailView::showBlockedSiteRows() {
  showLogRows(blockedSiteRows, blockedLogs(), &ChildDetailView::allowFromLog);
}

void ChildDetailView::showAllowedSiteRows() {
  showLogRows(allowedSiteRows, allowedLogs(), &ChildDetailView::blockFromLog);
}

void ChildDetailView::markAllowedRows() {
  showRecentRows();
  showBlockedSiteRows();
}

std::string ChildDetailView::emptyHeading(std::string_view withDevices) const {
  return devices().empty() ? "Link a device to see activity" : std::string(withDevices);
}

std::string ChildDetailView::emptySpan(ActivityTimeFilter filter) {
  return filter == ActivityTimeFilter::realTime ? "in the last 60 seconds" : "during this time period";
}

}  // namespace quillmar
