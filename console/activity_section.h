#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "console/child_detail_tab.h"
#include "console/choice_item.h"
#include "console/site_list.h"

namespace quillmar {

// The domains that a child's devices queried, one list per tab. Only the visible tab's list is refreshed.
class ActivitySection {
  // First: the other members register with it.
  ScreenModel& screen_;
  const DevicesSection& devices_;

 public:
  ActivitySection(ChildPage& page, const DevicesSection& devices, PolicySection& policy);

  // The last minute, blocked and allowed, at most 10 sites.
  SiteList<RecentActivityRow> recent;
  SiteList<BlockedSiteRow> blocked;
  SiteList<AllowedSiteRow> allowed;
  Input<ActivityTimeFilter> blockedTimeFilter{screen_, "blockedTimeFilter", ActivityTimeFilter::realTime};
  Input<ActivityTimeFilter> allowedTimeFilter{screen_, "allowedTimeFilter", ActivityTimeFilter::realTime};

  Text recentTitle{screen_, "recentTitle", "Recent Activity"};
  Text swipeToAllowText{screen_, "swipeToAllowText", "Swipe right to allow"};
  Text swipeToBlockText{screen_, "swipeToBlockText", "Swipe right to block"};
  Derived<bool> showsRecentCaption{screen_, "showsRecentCaption", [this] { return !recent.logs().empty(); }};
  Text recentHelp{
      screen_, "recentHelp",
      "Sites visited in the last 60 seconds will appear here. Swipe right to add to allowed list."};
  Derived<std::string> noRecentText{screen_, "noRecentText",
                                    [this] { return emptyHeading("No recent activity"); }};

  Derived<std::vector<ChoiceItem>> blockedFilters{screen_, "blockedFilters",
                                                  [this] { return choiceItems(blockedTimeFilter()); }};
  Text blockedLogsTitle{screen_, "blockedLogsTitle", "Blocked Sites"};
  Derived<std::string> noBlockedLogsHeading{screen_, "noBlockedLogsHeading",
                                            [this] { return emptyHeading("No sites blocked"); }};
  Derived<std::string> noBlockedLogsText{screen_, "noBlockedLogsText",
                                         [this] { return emptySpan(blockedTimeFilter()); }};

  Derived<std::vector<ChoiceItem>> allowedFilters{screen_, "allowedFilters",
                                                  [this] { return choiceItems(allowedTimeFilter()); }};
  Text allowedLogsTitle{screen_, "allowedLogsTitle", "Sites Visited"};
  Derived<std::string> noAllowedLogsHeading{screen_, "noAllowedLogsHeading",
                                            [this] { return emptyHeading("No sites visited"); }};
  Derived<std::string> noAllowedLogsText{screen_, "noAllowedLogsText",
                                         [this] { return emptySpan(allowedTimeFilter()); }};

  // Refreshes only this tab's list.
  void start(ChildDetailTab tab);
  void stop();
  // Updates texts like "5 min ago".
  void updateTimes();

 private:
  void startList();
  std::string emptyHeading(std::string_view withDevices) const;
  static std::string emptySpan(ActivityTimeFilter filter);

  // The visible tab.
  std::optional<ChildDetailTab> tab_;
  std::vector<Subscription> reactions_;
};

}  // namespace quillmar
