#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "console/child_detail_tab.h"
#include "console/choice_item.h"
#include "console/site_list.h"

namespace quillmar {

// What the devices of a child asked for, a list for each tab. Only that of the tab on screen is refreshed.
class ActivitySection {
  // First, since the members register there.
  ScreenModel& screen_;
  const DevicesSection& devices_;

 public:
  ActivitySection(ChildPage& page, const DevicesSection& devices, PolicySection& policy);

  // Of the last minute, blocked or not, at most 10.
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

  // Refreshes the list of this tab, and no other.
  void start(ChildDetailTab tab);
  void stop();
  // "5 min ago" counts from the present.
  void updateTimes();

 private:
  void startList();
  std::string emptyHeading(std::string_view withDevices) const;
  static std::string emptySpan(ActivityTimeFilter filter);

  // The tab on screen.
  std::optional<ChildDetailTab> tab_;
  std::vector<Subscription> reactions_;
};

}  // namespace quillmar
