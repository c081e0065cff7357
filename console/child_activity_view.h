#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/session/passing_time.h"
#include "console/activity_bar.h"
#include "console/activity_counts.h"
#include "console/activity_filling.h"
#include "console/activity_log.h"
#include "console/child_page.h"
#include "console/choice_item.h"
#include "console/devices_section.h"
#include "console/policy_section.h"
#include "console/site_rows.h"
#include "foundation/calendar.h"
#include "foundation/raw_enum.h"
#include "foundation/search.h"
#include "presentation/key_commands.h"
#include "presentation/list_filter.h"
#include "presentation/screen_model.h"

namespace quillmar {

enum class ActivityContent { noDevices, waiting, empty, charts };

template <>
inline constexpr std::array rawNames<ActivityContent> =
    rawCases<ActivityContent>({{ActivityContent::noDevices, "noDevices"},
                               {ActivityContent::waiting, "waiting"},
                               {ActivityContent::empty, "empty"},
                               {ActivityContent::charts, "charts"}});

// The bar whose rows are shown: an hour, a site or all new sites; or none.
struct ChosenBar {
  std::optional<std::size_t> hour = std::nullopt;
  std::optional<std::uint32_t> site = std::nullopt;
  // The kind of the site's requests.
  std::optional<bool> wasBlocked = std::nullopt;
  bool isFirstSeen = false;

  bool operator==(const ChosenBar&) const = default;
};

// All activity of a child as charts: the last seven days, the hours of one of them, its sites, and the rows
// behind each bar. It shares the policy and the alert of the child's page, over which it opens.
class ChildActivityView final : public ScreenModel {
 public:
  ChildActivityView(ChildPage& page, DevicesSection& devices, PolicySection& policy);

 private:
  // Declared before the members that read them.
  ChildPage& page_;
  const DevicesSection& devices_;
  PolicySection& policy_;
  const Calendar calendar_;
  ActivityLog log_;

 public:
  ActivityFilling filling;

  Derived<ActivityContent> content{*this, "content", [this] { return computeContent(); }};
  Derived<std::string> title{*this, "title", [this] { return page_.child().name + "'s Activity"; }};
  Text doneTitle{*this, "doneTitle", "Done"};
  Text noDevicesText{*this, "noDevicesText", "Link a device to see activity"};
  Text emptyHeading{*this, "emptyHeading", "No activity yet"};
  Text emptyText{*this, "emptyText", "Requests of the devices will appear here."};
  // Entries that no chart contains, if there are any.
  Published<std::optional<std::string>> unreadableText{*this, "unreadableText"};
  Text allowedLegend{*this, "allowedLegend", "Allowed"};
  Text blockedLegend{*this, "blockedLegend", "Blocked"};

  // All devices, then each of them.
  Derived<std::vector<ChoiceItem>> deviceChoices{*this, "deviceChoices",
                                                 [this] { return computeDeviceChoices(); }};
  Derived<bool> hasDeviceChoices{*this, "hasDeviceChoices",
                                 [this] { return filling.deviceNames().size() > 1; }};

  Text daysTitle{*this, "daysTitle", "Last 7 Days"};
  Published<std::string> daysNumber{*this, "daysNumber"};
  // The numbers at the top and at the middle of the chart.
  Published<std::string> daysTop{*this, "daysTop"};
  Published<std::string> daysMiddle{*this, "daysMiddle"};
  Rows<ActivityBar> dayBars{*this, "dayBars"};

  Published<std::string> hoursTitle{*this, "hoursTitle"};
  Published<std::string> hoursNumber{*this, "hoursNumber"};
  Published<std::string> hoursTop{*this, "hoursTop"};
  Published<std::string> hoursMiddle{*this, "hoursMiddle"};
  Rows<ActivityBar> hourBars{*this, "hourBars"};
  Derived<bool> hasChosenHour{*this, "hasChosenHour", [this] { return chosen_.hour.has_value(); }};

  Text visitedTitle{*this, "visitedTitle", "Most Visited"};
  Text noVisitedText{*this, "noVisitedText", "No sites visited"};
  Rows<ActivityBar> visitedBars{*this, "visitedBars"};
  Text blockedTitle{*this, "blockedTitle", "Most Blocked"};
  Text noBlockedText{*this, "noBlockedText", "No sites blocked"};
  Rows<ActivityBar> blockedBars{*this, "blockedBars"};

  Published<std::string> newSitesTitle{*this, "newSitesTitle"};
  Published<std::string> newSitesCaption{*this, "newSitesCaption"};
  Text noNewSitesText{*this, "noNewSitesText", "No new sites"};
  Rows<ActivityBar> newSiteBars{*this, "newSiteBars"};
  // nullopt if all new sites have a bar.
  Published<std::optional<std::string>> allNewSitesTitle{*this, "allNewSitesTitle"};

  Published<std::string> rowsTitle{*this, "rowsTitle"};
  Published<std::string> rowsCount{*this, "rowsCount"};
  // The action of a swipe.
  Text rowsCaption{*this, "rowsCaption", "Swipe right to allow a blocked site, or to block an allowed one"};
  Text wholeDayTitle{*this, "wholeDayTitle", "Show Whole Day"};
  ListFilter filter{*this};
  // The first of those that the filter lets through.
  Rows<LogRow> siteRows{*this, "siteRows"};
  SelectedRows shownSites{*this, "shownSites", siteRows, filter};
  // The rows are the names of one site.
  Published<bool> showsNames{*this, "showsNames", false};
  Published<bool> hasMoreRows{*this, "hasMoreRows", false};
  Text moreRowsTitle{*this, "moreRowsTitle", "Show More"};
  Derived<std::string> noRowsText{
      *this, "noRowsText",
      [this] { return std::string(shownSites.listSize() == 0 ? "No requests" : noMatchText); }};

  Action<> done{*this, "done", [this] { dismiss(); }};
  // 0: all devices together.
  Action<std::int64_t> chooseDevice{*this, "chooseDevice",
                                    [this](std::int64_t choice) { chooseDeviceAt(choice); }};
  Action<> showNewSites{*this, "showNewSites", [this] { choose({.isFirstSeen = true}); }};
  Action<> showWholeDay{*this, "showWholeDay", [this] { choose({}); },
                        [this] { return !(chosen_ == ChosenBar()); }};
  Action<> showMoreRows{*this, "showMoreRows", [this] { showMore(); }, [this] { return hasMoreRows(); }};
  KeyCommands keys{
      *this, {{Command::refresh, filling.tryAgain}, {Command::find, filter.open}, {Command::back, done}}};

 private:
  void onAppear() override;
  void onDisappear() override;

  ActivityContent computeContent() const;
  std::vector<ChoiceItem> computeDeviceChoices() const;

  void chooseDeviceAt(std::int64_t choice);
  void chooseDay(LocalDay day);
  // Chosen again, it shows the whole day.
  void choose(const ChosenBar& bar);
  void showMore();
  void followDate();

  // Recomputes everything, for another day or device.
  void recount();
  void countNews();
  // Selects the items of the chosen bar.
  void selectItems();

  void showCharts();
  void showDays();
  void showHours();
  void showSites(Rows<ActivityBar>& bars, const std::vector<SiteCount>& sites,
                 std::optional<bool> wasBlocked);
  void showNewSiteBars();
  // A selection is shown in the rows of the former one, as far as there are any: making rows is what takes a
  // front end long.
  enum class RowsFor { sameSelection, otherSelection };
  void showRows(RowsFor selection = RowsFor::sameSelection);
  // Shows the first rows of another selection.
  void selectRows();
  std::string keyOf(const ActivityItem& item) const;
  void gatherSpareRows(const std::vector<ActivityItem>& items);
  bool matches(const ActivityItem& item) const;
  void showRow(LogRow& row, const ActivityItem& item) const;
  std::shared_ptr<LogRow> rowFor(const ActivityItem& item);

  ActivityScope scope() const;
  ActivitySpan span() const;
  // Whether entries from before the chosen day are loaded.
  bool knowsEarlierDays() const;
  std::string numberText(const ActivityCount& count) const;
  std::string requestsText(std::uint32_t count) const;
  std::string percentText(std::uint32_t count, std::uint32_t of) const;
  std::string dayName(LocalDay day) const;
  std::string hourName(std::size_t hour) const;
  // "Today", "on Monday, October 3".
  std::string whenText() const;
  std::string computeRowsTitle() const;

  LocalDay today_;
  LocalDay chosenDay_;
  std::optional<std::uint32_t> chosenDevice_;
  ChosenBar chosen_;
  std::size_t mostRows_;
  // The search keys of the items' texts, created on demand.
  mutable std::vector<SearchKey> searchKeys_;
  // The rows that another selection leaves over, those of blocked sites and those of allowed ones.
  std::vector<std::shared_ptr<LogRow>> spareBlocked_;
  std::vector<std::shared_ptr<LogRow>> spareAllowed_;
  std::vector<LocalDay> days_;
  std::optional<ActivityCounts> counts_;
  std::optional<ActivityItems> items_;
  PassingTime passingTime_;
  std::vector<Subscription> reactions_;
};

}  // namespace quillmar
