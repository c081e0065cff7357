#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_set>
#include <utility>
#include <vector>

#include "app/session/environment.h"
#include "app/session/passing_time.h"
#include "client/network_service.h"
#include "console/activity_time_filter.h"
#include "console/edit_child_name_view.h"
#include "console/link_device_view.h"
#include "console/site_rows.h"
#include "console/swipeable_device_row.h"
#include "platform/hop.h"
#include "presentation/error_alert.h"
#include "presentation/screen_model.h"

namespace quillmar {

enum class ChildDetailTab { realTime, sitesBlocked, sitesAllowed };

template <>
inline constexpr std::array rawNames<ChildDetailTab> =
    rawCases<ChildDetailTab>({{ChildDetailTab::realTime, "Real-Time"},
                              {ChildDetailTab::sitesBlocked, "Sites Blocked"},
                              {ChildDetailTab::sitesAllowed, "Sites Allowed"}});

// One of several that a person chooses from: a tab, a chip. Its title is also its value.
struct ChoiceItem {
  std::string title;
  bool isSelected = false;
};

template <>
inline constexpr auto wire<ChoiceItem> = record(required("title", &ChoiceItem::title),
                                                required("isSelected", &ChoiceItem::isSelected));

template <RawEnum E>
std::vector<ChoiceItem> choiceItems(E selected) {
  std::vector<ChoiceItem> items;
  items.reserve(rawNames<E>.size());
  for (const auto& [choice, title] : rawNames<E>) {
    items.push_back({std::string(title), choice == selected});
  }
  return items;
}

// A child: its devices, its filtering policy and what its devices asked for. The child itself is as it was
// when the screen was made, which is why a new name closes the screen. No change is shown before the service
// has answered. While the screen is up, timers ask for the devices every 15 seconds and for the sites of the
// shown tab every 2; a refresh that brings nothing new announces no row and makes none.
class ChildDetailView final : public ScreenModel {
 public:
  // `onUpdate` runs when the child was renamed or deleted, or lost a device.
  ChildDetailView(Environment& environment, ChildProfileWithDevices child, std::function<void()> onUpdate);

  // The screen.

  Published<std::vector<Device>> devices{*this, "devices"};
  // The last one received.
  Published<std::optional<ChildPolicy>> policy{*this, "policy"};
  Published<bool> isLoading{*this, "isLoading", false};
  ErrorAlert errorAlert{*this};
  Sheet<LinkDeviceView> showLinkDevice;
  Input<bool> showDeleteConfirmation{*this, "showDeleteConfirmation", false};
  Sheet<EditChildNameView> showEditName;
  // The name that is being saved.
  Published<std::string> editedName{*this, "editedName"};
  Input<bool> showUnlinkConfirmation{*this, "showUnlinkConfirmation", false};
  Published<std::optional<Device>> deviceToUnlink{*this, "deviceToUnlink"};
  Input<ChildDetailTab> selectedTab{*this, "selectedTab", ChildDetailTab::realTime};

  Derived<std::vector<ChoiceItem>> tabs{*this, "tabs", [this] { return choiceItems(selectedTab()); }};
  Derived<std::string> name{*this, "name", [this] { return child_.name; }};
  Derived<std::string> avatarLetter{*this, "avatarLetter", [this] { return computeAvatarLetter(); }};
  Derived<std::string> avatarColor{*this, "avatarColor", [this] { return computeAvatarColor(); }};
  // Absent where the birth year is not known.
  Derived<std::optional<std::string>> ageText{*this, "ageText", [this] { return computeAgeText(); }};
  Derived<std::string> onlineText{*this, "onlineText", [this] { return computeOnlineText(); }};
  Derived<std::string> onlineDotColor{*this, "onlineDotColor", [this] { return computeOnlineDotColor(); }};

  Text doneTitle{*this, "doneTitle", "Done"};
  Text editIcon{*this, "editIcon", "pencil"};
  Text cancelTitle{*this, "cancelTitle", "Cancel"};

  Action<> done{*this, "done", [this] { dismiss(); }};
  Action<> editName{*this, "editName", [this] { showEditName = true; }};

  // Devices.

  Rows<SwipeableDeviceRow> deviceRows{*this, "deviceRows"};

  Text devicesTitle{*this, "devicesTitle", "Devices"};
  Text noDevicesText{*this, "noDevicesText", "No devices linked yet"};
  Text linkDeviceTitle{*this, "linkDeviceTitle", "Link Device"};
  Text linkDeviceIcon{*this, "linkDeviceIcon", "plus.circle.fill"};
  Text unlinkAlertTitle{*this, "unlinkAlertTitle", "Unlink Device?"};
  Derived<std::string> unlinkAlertText{*this, "unlinkAlertText", [this] { return computeUnlinkText(); }};
  Text unlinkTitle{*this, "unlinkTitle", "Unlink"};

  Action<> linkDevice{*this, "linkDevice", [this] { showLinkDevice = true; }};
  Action<> unlinkSelectedDevice{*this, "unlinkSelectedDevice", [this] { unlinkSelected(); },
                                [this] { return showUnlinkConfirmation(); }};
  Action<> cancelUnlinking{*this, "cancelUnlinking", [this] { showUnlinkConfirmation = false; },
                           [this] { return showUnlinkConfirmation(); }};

  // The policy.

  Input<bool> isBlocked{*this, "isBlocked", false};
  // What goes with the toggle.
  Published<std::string> blockMode{*this, "blockMode", "blacklist"};
  Published<std::vector<std::string>> blockedDomains{*this, "blockedDomains"};
  Published<std::vector<std::string>> allowedDomains{*this, "allowedDomains"};
  // The text fields, for an allowed site and for a blocked one.
  Input<std::string> newDomain{*this, "newDomain"};
  Input<std::string> newBlockedDomain{*this, "newBlockedDomain"};

  Rows<PolicySiteRow> allowedRows{*this, "allowedRows"};
  Rows<PolicySiteRow> blockedRows{*this, "blockedRows"};
  Derived<std::int64_t> allowedCount{*this, "allowedCount", [this] { return std::ssize(allowedDomains()); }};
  Derived<std::int64_t> blockedCount{*this, "blockedCount", [this] { return std::ssize(blockedDomains()); }};

  Text controlsTitle{*this, "controlsTitle", "Internet Controls"};
  Text blockTitle{*this, "blockTitle", "Block the Internet"};
  Text blockCaption{*this, "blockCaption", "Block all sites except allowed list"};
  // Absent where the internet is not blocked.
  Derived<std::optional<std::string>> blockWarning{*this, "blockWarning",
                                                   [this] { return computeBlockWarning(); }};
  Text blockWarningIcon{*this, "blockWarningIcon", "exclamationmark.triangle.fill"};
  Text allowedTitle{*this, "allowedTitle", "Allowed Sites"};
  Text noAllowedText{
      *this, "noAllowedText",
      "No sites allowed yet. Default sites (Quillmar, Microsoft, Apple, Google) are always allowed."};
  Text allowedPlaceholder{*this, "allowedPlaceholder", "Add allowed site (e.g., example.com)"};
  Text blockedTitle{*this, "blockedTitle", "Blocked Sites"};
  Text blockedCaption{*this, "blockedCaption", "Sites in this list will always be blocked"};
  Text noBlockedText{*this, "noBlockedText", "No blocked sites yet"};
  Text blockedPlaceholder{*this, "blockedPlaceholder", "Add blocked site (e.g., example.com)"};
  Text addIcon{*this, "addIcon", "plus.circle.fill"};

  Action<> addAllowedSite{*this, "addAllowedSite", [this] { addAllowed(); },
                          [this] { return !newDomain().empty(); }};
  Action<> addBlockedSite{*this, "addBlockedSite", [this] { addBlocked(); },
                          [this] { return !newBlockedDomain().empty(); }};
  Action<std::string> removeAllowedSite{*this, "removeAllowedSite",
                                        [this](const std::string& domain) { removeAllowed(domain); }};
  Action<std::string> removeBlockedSite{*this, "removeBlockedSite",
                                        [this](const std::string& domain) { removeBlocked(domain); }};

  // A placeholder without any effect.
  Text screenTimeTitle{*this, "screenTimeTitle", "Screen Time Limits"};
  Text screenTimeBadge{*this, "screenTimeBadge", "Coming Soon"};
  Text screenTimeText{*this, "screenTimeText", "Schedule internet access times"};
  Text screenTimeRowTitle{*this, "screenTimeRowTitle", "Block Internet"};
  Text screenTimeRowValue{*this, "screenTimeRowValue", "9:00 PM - 7:00 AM"};

  Text deleteProfileTitle{*this, "deleteProfileTitle", "Delete Child Profile"};
  Text deleteProfileIcon{*this, "deleteProfileIcon", "trash"};
  Derived<std::string> deleteAlertTitle{*this, "deleteAlertTitle",
                                        [this] { return "Delete " + child_.name + "?"; }};
  Text deleteAlertText{*this, "deleteAlertText",
                       "This will remove the child profile and unlink all their devices. The devices will "
                       "remain but won't be associated with this child."};
  Text deleteTitle{*this, "deleteTitle", "Delete"};

  Action<> deleteProfile{*this, "deleteProfile", [this] { showDeleteConfirmation = true; }};
  Action<> deleteChildProfile{*this, "deleteChildProfile", [this] { deleteChild(); },
                              [this] { return showDeleteConfirmation(); }};
  Action<> cancelDeletion{*this, "cancelDeletion", [this] { showDeleteConfirmation = false; },
                          [this] { return showDeleteConfirmation(); }};

  // What the devices asked for: each site once, with its newest entry, the newest first.

  Published<std::vector<DNSLog>> recentLogs{*this, "recentLogs"};  // at most 10
  Published<bool> isLoadingRecentLogs{*this, "isLoadingRecentLogs", false};
  Input<ActivityTimeFilter> blockedTimeFilter{*this, "blockedTimeFilter", ActivityTimeFilter::realTime};
  Published<std::vector<DNSLog>> blockedLogs{*this, "blockedLogs"};
  Published<bool> isLoadingBlockedLogs{*this, "isLoadingBlockedLogs", false};
  Input<ActivityTimeFilter> allowedTimeFilter{*this, "allowedTimeFilter", ActivityTimeFilter::realTime};
  Published<std::vector<DNSLog>> allowedLogs{*this, "allowedLogs"};
  Published<bool> isLoadingAllowedLogs{*this, "isLoadingAllowedLogs", false};

  // A row is its site's for as long as the site is in the list.
  Rows<RecentActivityRow> recentActivityRows{*this, "recentActivityRows"};
  Rows<BlockedSiteRow> blockedSiteRows{*this, "blockedSiteRows"};
  Rows<AllowedSiteRow> allowedSiteRows{*this, "allowedSiteRows"};
  Rows<PermanentAllowedSiteRow> permanentAllowedSiteRows{*this, "permanentAllowedSiteRows"};

  Text recentTitle{*this, "recentTitle", "Recent Activity"};
  Text swipeToAllowText{*this, "swipeToAllowText", "Swipe right to allow"};
  Text swipeToBlockText{*this, "swipeToBlockText", "Swipe right to block"};
  Derived<bool> showsRecentCaption{*this, "showsRecentCaption", [this] { return !recentLogs().empty(); }};
  Text recentHelp{
      *this, "recentHelp",
      "Sites visited in the last 60 seconds will appear here. Swipe right to add to allowed list."};
  Derived<std::string> noRecentText{*this, "noRecentText",
                                    [this] { return emptyHeading("No recent activity"); }};

  Derived<std::vector<ChoiceItem>> blockedFilters{*this, "blockedFilters",
                                                  [this] { return choiceItems(blockedTimeFilter()); }};
  Text blockedLogsTitle{*this, "blockedLogsTitle", "Blocked Sites"};
  Derived<std::string> noBlockedLogsHeading{*this, "noBlockedLogsHeading",
                                            [this] { return emptyHeading("No sites blocked"); }};
  Derived<std::string> noBlockedLogsText{*this, "noBlockedLogsText",
                                         [this] { return emptySpan(blockedTimeFilter()); }};

  Derived<std::vector<ChoiceItem>> allowedFilters{*this, "allowedFilters",
                                                  [this] { return choiceItems(allowedTimeFilter()); }};
  Text allowedLogsTitle{*this, "allowedLogsTitle", "Sites Visited"};
  Derived<std::string> noAllowedLogsHeading{*this, "noAllowedLogsHeading",
                                            [this] { return emptyHeading("No sites visited"); }};
  Derived<std::string> noAllowedLogsText{*this, "noAllowedLogsText",
                                         [this] { return emptySpan(allowedTimeFilter()); }};
  Text permanentTitle{*this, "permanentTitle", "Sites You've Allowed"};
  Text permanentCaption{*this, "permanentCaption", "These sites are always allowed. Swipe left to remove."};
  Text noPermanentHeading{*this, "noPermanentHeading", "No sites manually allowed yet"};
  Text noPermanentText{*this, "noPermanentText",
                       "Default sites (Quillmar, Microsoft, Apple, Google) are always allowed."};

  // Steps by name.

  void reloadChild();
  // An empty name is not sent.
  void saveChildName(const std::string& newName);
  bool isDomainAllowed(std::string_view domain) const;
  void allowFromLog(const DNSLog& log);
  void blockFromLog(const DNSLog& log);
  void fetchRecentActivity();
  void fetchBlockedLogs();
  void fetchAllowedLogs();

  bool isRecentActivityTimerRunning() const { return recentActivityTimer_ != nullptr; }
  bool isBlockedLogsTimerRunning() const { return blockedLogsTimer_ != nullptr; }
  bool isAllowedLogsTimerRunning() const { return allowedLogsTimer_ != nullptr; }
  bool isDeviceStatusTimerRunning() const { return deviceStatusTimer_ != nullptr; }

 private:
  struct Fetch;

  void onAppear() override;
  void onDisappear() override;

  void loadChildData();
  void show(const ChildProfileWithDevices& answer);
  void setDevices(std::vector<Device> answer);
  void startDeviceStatusTimer();
  void refreshDeviceStatus();
  void showDeviceRows();
  void showPassingTime();
  void askToUnlink(const Device& device);
  void unlinkSelected();
  void deleteChild();
  void showFailure(const Error& error);
  // For a call whose failure goes to the alert. Runs on the main thread, while this screen is there.
  template <class T, class Success>
  Completion<T> completion(Success success);
  NetworkService& service() { return *environment_.networkService(); }
  const DateStyles& dateStyles();

  std::string computeAvatarLetter() const;
  std::string computeAvatarColor() const;
  std::optional<std::string> computeAgeText();
  std::string computeOnlineText() const;
  std::string computeOnlineDotColor() const;
  std::string computeUnlinkText() const;

  void updatePolicy();
  void addAllowed();
  void addBlocked();
  void removeAllowed(const std::string& domain);
  void removeBlocked(const std::string& domain);
  void rememberAllowed();
  void showAllowedRows();
  void showBlockedRows();
  std::optional<std::string> computeBlockWarning() const;

  void startActivityUpdates();
  void startRecentActivityTimer();
  void startBlockedLogsTimer();
  void startAllowedLogsTimer();
  void restartBlockedLogs();
  void restartAllowedLogs();
  void stopAllTimers();
  void stopActivityTimers();
  void fetch(const Fetch& list);
  void finishFetch(const Fetch& list, Result<std::vector<DNSLog>> result);
  template <class Row>
  void showLogRows(Rows<Row>& rows, const std::vector<DNSLog>& logs,
                   void (ChildDetailView::*onSwipe)(const DNSLog&));
  template <class Row>
  void updateTimes(Rows<Row>& rows);
  std::string timeText(const DNSLog& log);
  void showRecentRows();
  void showBlockedSiteRows();
  void showAllowedSiteRows();
  void markAllowedRows();
  std::string emptyHeading(std::string_view withDevices) const;
  static std::string emptySpan(ActivityTimeFilter filter);

  Environment& environment_;
  Dispatch& dispatch_;
  const ChildProfileWithDevices child_;
  const std::function<void()> onUpdate_;
  std::optional<DateStyles> dateStyles_;
  // The allowed sites in lower case.
  std::unordered_set<std::string> allowed_;
  std::unique_ptr<Timer> recentActivityTimer_;
  std::unique_ptr<Timer> blockedLogsTimer_;
  std::unique_ptr<Timer> allowedLogsTimer_;
  std::unique_ptr<Timer> deviceStatusTimer_;
  PassingTime passingTime_;
  std::vector<Subscription> reactions_;
};

template <class T, class Success>
Completion<T> ChildDetailView::completion(Success success) {
  return hoppingToMain(dispatch_, weakly([this, success = std::move(success)](const Result<T>& result) {
                         if (!result.ok()) {
                           showFailure(result.error());
                         } else if constexpr (std::is_void_v<T>) {
                           success();
                         } else {
                           success(result.value());
                         }
                       }));
}

}  // namespace quillmar
