#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "app/session/passing_time.h"
#include "console/activity_section.h"
#include "console/child_activity_view.h"
#include "console/child_detail_tab.h"
#include "console/child_page.h"
#include "console/choice_item.h"
#include "console/devices_section.h"
#include "console/edit_child_name_view.h"
#include "console/policy_section.h"
#include "presentation/confirmation.h"
#include "presentation/error_alert.h"
#include "presentation/key_commands.h"
#include "presentation/list_filter.h"
#include "presentation/screen_model.h"

namespace quillmar {

// A child's page: profile, devices, filtering policy and activity. The profile is a copy from when the screen
// was made, so renaming closes the screen.
class ChildDetailView final : public ScreenModel {
 public:
  // `onUpdate` runs after the child was renamed or deleted, or lost a device.
  ChildDetailView(Environment& environment, ChildProfileWithDevices child, std::function<void()> onUpdate);

  ErrorAlert errorAlert{*this};

 private:
  // Declared before the sections, which share it.
  ChildPage page_;

 public:
  DevicesSection devicesSection;
  PolicySection policySection;
  ActivitySection activitySection;

  ListFilter filter{*this};
  FilteredRows shownDevices{
      *this,
      {.rows = "shownDevices", .noMatch = "noDeviceMatch", .searched = "deviceDisplayName"},
      devicesSection.deviceRows,
      filter};
  FilteredRows shownRecent{*this,
                           {.rows = "shownRecentSites", .noMatch = "noRecentMatch", .searched = "site"},
                           activitySection.recent.rows,
                           filter};
  FilteredRows shownBlocked{*this,
                            {.rows = "shownBlockedSites", .noMatch = "noBlockedMatch", .searched = "site"},
                            activitySection.blocked.rows,
                            filter};
  FilteredRows shownVisited{*this,
                            {.rows = "shownVisitedSites", .noMatch = "noVisitedMatch", .searched = "site"},
                            activitySection.allowed.rows,
                            filter};
  FilteredRows shownPermanent{
      *this,
      {.rows = "shownPermanentSites", .noMatch = "noPermanentMatch", .searched = "domain"},
      policySection.permanentAllowedSiteRows,
      filter};
  FilteredRows shownAllowedPolicy{
      *this,
      {.rows = "shownAllowedPolicy", .noMatch = "noAllowedPolicyMatch", .searched = "domain"},
      policySection.allowedRows,
      filter};
  FilteredRows shownBlockedPolicy{
      *this,
      {.rows = "shownBlockedPolicy", .noMatch = "noBlockedPolicyMatch", .searched = "domain"},
      policySection.blockedRows,
      filter};

  Published<bool> isLoading{*this, "isLoading", false};
  Confirmation deletionConfirmation{
      *this,
      {.isShown = "showDeleteConfirmation", .confirm = "deleteChildProfile", .cancel = "cancelDeletion"},
      [this] { deleteChild(); }};
  Sheet<EditChildNameView> showEditName;
  // It shares the page and two of its sections, so it ends before them.
  Sheet<ChildActivityView> showAllActivity;
  // The name being saved.
  Published<std::string> editedName{*this, "editedName"};
  Input<ChildDetailTab> selectedTab{*this, "selectedTab", ChildDetailTab::realTime};

  Derived<std::vector<ChoiceItem>> tabs{*this, "tabs", [this] { return choiceItems(selectedTab()); }};
  Derived<std::string> name{*this, "name", [this] { return page_.child().name; }};
  Derived<std::string> avatarLetter{*this, "avatarLetter", [this] { return computeAvatarLetter(); }};
  Derived<std::string> avatarColor{*this, "avatarColor", [this] { return computeAvatarColor(); }};
  // nullopt if the birth year is unknown.
  Derived<std::optional<std::string>> ageText{*this, "ageText", [this] { return computeAgeText(); }};

  Text doneTitle{*this, "doneTitle", "Done"};
  Text editIcon{*this, "editIcon", "pencil"};
  Text cancelTitle{*this, "cancelTitle", "Cancel"};

  Action<> done{*this, "done", [this] { dismiss(); }};
  Text allActivityTitle{*this, "allActivityTitle", "See All Activity"};
  Text allActivityIcon{*this, "allActivityIcon", "chart.bar.fill"};
  Action<> seeAllActivity{*this, "seeAllActivity", [this] { showAllActivity = true; }};
  Action<> editName{*this, "editName", [this] { showEditName = true; }};

  // A placeholder without a function.
  Text screenTimeTitle{*this, "screenTimeTitle", "Screen Time Limits"};
  Text screenTimeBadge{*this, "screenTimeBadge", "Coming Soon"};
  Text screenTimeText{*this, "screenTimeText", "Schedule internet access times"};
  Text screenTimeRowTitle{*this, "screenTimeRowTitle", "Block Internet"};
  Text screenTimeRowValue{*this, "screenTimeRowValue", "9:00 PM - 7:00 AM"};

  Text deleteProfileTitle{*this, "deleteProfileTitle", "Delete Child Profile"};
  Text deleteProfileIcon{*this, "deleteProfileIcon", "trash"};
  Derived<std::string> deleteAlertTitle{*this, "deleteAlertTitle",
                                        [this] { return "Delete " + page_.child().name + "?"; }};
  Text deleteAlertText{*this, "deleteAlertText",
                       "This will remove the child profile and unlink all their devices. The devices will "
                       "remain but won't be associated with this child."};
  Text deleteTitle{*this, "deleteTitle", "Delete"};

  Action<> deleteProfile{*this, "deleteProfile", [this] { deletionConfirmation.ask(); }};
  KeyCommands keys{*this, {{Command::find, filter.open}, {Command::back, done}}};

  void reloadChild();
  // An empty name is not sent.
  void saveChildName(const std::string& newName);

 private:
  void onAppear() override;
  void onDisappear() override;

  void show(const ChildProfileWithDevices& answer);
  void showTab();
  void showPassingTime();
  void deleteChild();

  std::string computeAvatarLetter() const;
  std::string computeAvatarColor() const;
  std::optional<std::string> computeAgeText();

  const std::function<void()> onUpdate_;
  PassingTime passingTime_;
  Subscription tabReaction_;
};

}  // namespace quillmar
