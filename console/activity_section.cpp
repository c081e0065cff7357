#include "console/activity_section.h"

#include <limits>

namespace quillmar {
namespace {

constexpr std::size_t allSites = std::numeric_limits<std::size_t>::max();

}  // namespace

ActivitySection::ActivitySection(ChildPage& page, const DevicesSection& devices, PolicySection& policy)
    : screen_(page.screen()),
      devices_(devices),
      recent(page, devices, policy,
             {.logs = "recentLogs", .isLoading = "isLoadingRecentLogs", .rows = "recentActivityRows"},
             {.limit = 20,
              .wasBlocked = std::nullopt,
              .mostSites = 10,
              .failureLine = "[ChildDetailView] Failed to fetch recent activity: "}),
      blocked(page, devices, policy,
              {.logs = "blockedLogs", .isLoading = "isLoadingBlockedLogs", .rows = "blockedSiteRows"},
              {.limit = 100,
               .wasBlocked = true,
               .mostSites = allSites,
               .failureLine = "[ChildDetailView] Failed to fetch blocked logs: "}),
      allowed(page, devices, policy,
              {.logs = "allowedLogs", .isLoading = "isLoadingAllowedLogs", .rows = "allowedSiteRows"},
              {.limit = 100,
               .wasBlocked = false,
               .mostSites = allSites,
               .failureLine = "[ChildDetailView] Failed to fetch allowed logs: "}) {
  // The policy's own reaction, registered earlier, has already updated its set of allowed sites.
  reactions_.push_back(policy.allowedDomains.onChange([this] {
    recent.showRows();
    blocked.showRows();
  }));
  const auto restartOn = [this](ChildDetailTab tab) {
    return [this, tab] {
      if (tab_ == tab) {
        startList();
      }
    };
  };
  reactions_.push_back(blockedTimeFilter.onChange(restartOn(ChildDetailTab::sitesBlocked)));
  reactions_.push_back(allowedTimeFilter.onChange(restartOn(ChildDetailTab::sitesAllowed)));
}

void ActivitySection::start(ChildDetailTab tab) {
  stop();
  tab_ = tab;
  startList();
}

void ActivitySection::stop() {
  tab_.reset();
  recent.stop();
  blocked.stop();
  allowed.stop();
}

void ActivitySection::startList() {
  switch (*tab_) {
    case ChildDetailTab::realTime:
      return recent.start(ActivityTimeFilter::realTime);
    case ChildDetailTab::sitesBlocked:
      return blocked.start(blockedTimeFilter());
    case ChildDetailTab::sitesAllowed:
      return allowed.start(allowedTimeFilter());
  }
}

void ActivitySection::updateTimes() {
  recent.updateTimes();
  blocked.updateTimes();
  allowed.updateTimes();
}

std::string ActivitySection::emptyHeading(std::string_view withDevices) const {
  return devices_.devices().empty() ? "Link a device to see activity" : std::string(withDevices);
}

std::string ActivitySection::emptySpan(ActivityTimeFilter filter) {
  return filter == ActivityTimeFilter::realTime ? "in the last 60 seconds" : "during this time period";
}

}  // namespace quillmar
