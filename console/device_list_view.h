#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/session/appearance_manager.h"
#include "app/session/environment.h"
#include "app/session/passing_time.h"
#include "client/records/child.h"
#include "console/add_child_view.h"
#include "console/add_device_sheet.h"
#include "console/child_dashboard_card.h"
#include "console/child_detail_view.h"
#include "console/settings_view.h"
#include "family/family_members_view.h"
#include "family/home_network_view.h"
#include "identity/auth_state.h"
#include "presentation/confirmation.h"
#include "presentation/error_alert.h"
#include "presentation/key_commands.h"
#include "presentation/list_filter.h"
#include "presentation/screen_model.h"
#include "presentation/timely.h"

namespace quillmar {

enum class DashboardContent { loading, list, empty };

template <>
inline constexpr std::array rawNames<DashboardContent> =
    rawCases<DashboardContent>({{DashboardContent::loading, "loading"},
                                {DashboardContent::list, "list"},
                                {DashboardContent::empty, "empty"}});

// The dashboard of a signed-in parent: the children, a summary of their devices, and the way to all other
// screens. While visible it refreshes silently every 30 seconds. No load reports a failure: a failed
// foreground load empties the screen, a failed silent one changes nothing.
class DeviceListView final : public ScreenModel {
 public:
  static constexpr double refreshInterval = 30.0;  // seconds

  explicit DeviceListView(Environment& environment);

  // In the service's order.
  Published<std::vector<ChildProfileWithDevices>> children{*this, "children"};
  // A row belongs to one child, by id, as long as the child is in the list.
  Rows<ChildDashboardCard> cards{*this, "cards"};
  ListFilter filter{*this};
  FilteredRows shownCards{
      *this, {.rows = "shownCards", .noMatch = "noCardMatch", .searched = "name"}, cards, filter};
  // Loading, with nothing to show yet.
  Published<bool> isLoading{*this, "isLoading", false};
  ErrorAlert errorAlert{*this};
  Confirmation logoutConfirmation{
      *this,
      {.isShown = "showLogoutConfirmation", .confirm = "confirmLogout", .cancel = "cancelLogout"},
      [this] { endSession(); }};
  // The child whose detail is shown, or for whom a device is added.
  Published<std::optional<ChildProfileWithDevices>> selectedChild{*this, "selectedChild"};
  Published<std::optional<ChildProfileWithDevices>> childForNewDevice{*this, "childForNewDevice"};
  Published<bool> cardsAppeared{*this, "cardsAppeared", false};
  Published<bool> isBackgroundRefreshing{*this, "isBackgroundRefreshing", false};
  // When the last load of either kind ended, successful or not.
  Published<Date> lastRefreshTime;

  Sheet<AddChildView> showAddChild;
  // Shown exactly while a child is selected.
  Page<ChildDetailView> showChildDetail;
  Page<SettingsView> showSettings;
  Page<HomeNetworkView> showHomeNetwork;
  Page<FamilyMembersView> showFamilyMembers;
  // Not shown without a selected child.
  Sheet<AddDeviceSheet> showAddDevice;

  Derived<DashboardContent> content{*this, "content", [this] { return computeContent(); }};
  // In points, on a regular window.
  Derived<double> maximumContentWidth{*this, "maximumContentWidth", [this] { return computeWidth(); }};
  Derived<std::int64_t> totalChildren{*this, "totalChildren", [this] { return countChildren(); }};
  Derived<std::int64_t> totalDevices{*this, "totalDevices", [this] { return countDevices(); }};
  Derived<std::int64_t> onlineDevices{*this, "onlineDevices", [this] { return countOnlineDevices(); }};
  // The labels beside the counts.
  Derived<std::string> childrenLabel{
      *this, "childrenLabel", [this] { return std::string("Child") + (countChildren() == 1 ? "" : "ren"); }};
  Derived<std::string> devicesLabel{
      *this, "devicesLabel", [this] { return std::string("Device") + (countDevices() == 1 ? "" : "s"); }};
  Text onlineLabel{*this, "onlineLabel", "Online"};
  // nullopt during a silent refresh, when a spinner is shown instead.
  Derived<std::optional<std::string>> statusIcon{
      *this, "statusIcon", [this] {
        return isBackgroundRefreshing() ? std::nullopt : std::optional<std::string>("arrow.clockwise");
      }};
  // Empty if the list is not shown, because loading the date formats for the first time is slow.
  Timely<std::string> updatedText{*this, "updatedText", [this] { return computeUpdatedText(); }};
  Text autoRefreshText{*this, "autoRefreshText", "Auto-refresh every 30s"};

  // A reload of visible content has lasted long enough to be shown.
  Published<bool> showsReload{*this, "showsReload", false};
  // The opacity of visible cards: they stay visible during a reload.
  Derived<double> drawnCardOpacity{*this, "drawnCardOpacity", [this] { return showsReload() ? 0.7 : 1.0; }};

  // The entry animation of the cards. Each card starts after its own `appearanceDelay`.
  Derived<double> cardOpacity{*this, "cardOpacity", [this] { return cardsAppeared() ? 1.0 : 0.0; }};
  Derived<double> cardOffset{*this, "cardOffset", [this] { return cardsAppeared() ? 0.0 : 20.0; }};

  Text title{*this, "title", "My Family"};
  Derived<std::string> initials{*this, "initials", [this] { return authState_->initials(); }};
  Text addChildIcon{*this, "addChildIcon", "plus"};
  Text refreshIcon{*this, "refreshIcon", "arrow.clockwise"};
  Text settingsTitle{*this, "settingsTitle", "Settings"};
  Text settingsIcon{*this, "settingsIcon", "gearshape"};
  Text familyMembersTitle{*this, "familyMembersTitle", "Family Members"};
  Text familyMembersIcon{*this, "familyMembersIcon", "person.2.fill"};
  Text homeNetworkTitle{*this, "homeNetworkTitle", "Home Network"};
  Text homeNetworkIcon{*this, "homeNetworkIcon", "house.fill"};
  Text homeNetworkText{*this, "homeNetworkText", "Manage filtering for game consoles & smart TVs"};
  Derived<std::string> themeTitle{*this, "themeTitle", [this] { return computeThemeTitle(); }};
  Text themeIcon{*this, "themeIcon", "circle.lefthalf.filled"};
  Text logoutTitle{*this, "logoutTitle", "Logout"};
  Text logoutIcon{*this, "logoutIcon", "rectangle.portrait.and.arrow.right"};
  Text addAnotherTitle{*this, "addAnotherTitle", "Add Another Child"};

  Text loadingText{*this, "loadingText", "Loading..."};
  Text welcomeHeading{*this, "welcomeHeading", "Welcome to Quillmar"};
  Text welcomeText{*this, "welcomeText", "Add your children to start protecting\ntheir online experience"};
  Text addFirstTitle{*this, "addFirstTitle", "Add Your First Child"};
  Text setUpHomeNetworkTitle{*this, "setUpHomeNetworkTitle", "Set Up Home Network"};
  Text setUpHomeNetworkCaption{*this, "setUpHomeNetworkCaption", "For game consoles & smart TVs"};

  Text confirmationTitle{*this, "confirmationTitle", "Logout?"};
  Text confirmationText{*this, "confirmationText", "Are you sure you want to logout?"};
  Text confirmTitle{*this, "confirmTitle", "Logout"};
  Text cancelTitle{*this, "cancelTitle", "Cancel"};

  Action<> loadChildren{*this, "loadChildren", [this] { load(); }};
  Action<> addChild{*this, "addChild", [this] { showAddChild = true; }};
  Action<> openSettings{*this, "openSettings", [this] { showSettings = true; }};
  Action<> openFamilyMembers{*this, "openFamilyMembers", [this] { showFamilyMembers = true; }};
  Action<> openHomeNetwork{*this, "openHomeNetwork", [this] { showHomeNetwork = true; }};
  Action<> cycleTheme{*this, "cycleTheme", [this] { appearanceManager_->cycleMode(); }};
  // The child at this place among the shown ones, if there is one.
  Action<std::int64_t> chooseChild{*this, "chooseChild", [this](std::int64_t place) { choose(place); },
                                   [this] { return computeContent() == DashboardContent::list; }};
  Action<> logout{*this, "logout", [this] { logoutConfirmation.ask(); }};
  KeyCommands keys{*this,
                   {{Command::refresh, loadChildren},
                    {Command::find, filter.open},
                    {Command::add, addChild},
                    {Command::choose, chooseChild},
                    {Command::settings, openSettings}}};

  bool isAutoRefreshing() const { return refreshTimer_ != nullptr; }

 private:
  void onAppear() override;
  void onDisappear() override;
  // Called when a sheet was dismissed.
  void comeBack();
  // Called when a page was dismissed.
  void comeBackIfCovered();
  void followScene(ScenePhase phase);

  void load();
  void awaitReload();
  void handleLoad(const Result<ChildrenResponse>& result);
  void startAutoRefresh();
  void stopAutoRefresh();
  void backgroundRefresh();
  void handleBackgroundRefresh(const Result<ChildrenResponse>& result);
  void show(const std::vector<ChildProfileWithDevices>& fresh, CardEntrance entrance);
  void updateCards(CardEntrance entrance);
  std::shared_ptr<ChildDashboardCard> makeCard(const ChildProfileWithDevices& child, CardEntrance entrance);

  void choose(std::int64_t place);
  void select(const ChildProfileWithDevices& child);
  void addDeviceFor(const ChildProfileWithDevices& child);
  void endSession();

  DashboardContent computeContent() const;
  double computeWidth() const;
  std::int64_t countChildren() const { return static_cast<std::int64_t>(children().size()); }
  std::int64_t countDevices() const;
  std::int64_t countOnlineDevices() const;
  std::string computeUpdatedText();
  std::string computeThemeTitle() const;

  Environment& environment_;
  Dispatch& dispatch_;
  const std::shared_ptr<AuthState> authState_;
  const std::shared_ptr<AppearanceManager> appearanceManager_;
  std::optional<DateStyles> dateStyles_;
  std::unique_ptr<Timer> refreshTimer_;
  std::unique_ptr<Timer> reloadTimer_;
  Subscription sceneReaction_;
  PassingTime passingTime_;
};

}  // namespace quillmar
