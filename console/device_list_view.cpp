#include "console/device_list_view.h"

#include <chrono>
#include <numeric>
#include <utility>

#include "client/child_calls.h"
#include "client/network_service.h"
#include "console/keyed_rows.h"
#include "platform/hop.h"
#include "presentation/adaptive_content.h"

namespace quillmar {
namespace {

constexpr auto refreshPeriod =
    std::chrono::duration_cast<Duration>(std::chrono::duration<double>(DeviceListView::refreshInterval));
// Showing a shorter reload would only flicker.
constexpr auto unseenReload = std::chrono::milliseconds(300);

}  // namespace

DeviceListView::DeviceListView(Environment& environment)
    : ScreenModel("DeviceListView"),
      lastRefreshTime(*this, "lastRefreshTime", environment.platform().dispatch.now()),
      showAddChild(
          *this, "showAddChild", [this] { return std::make_shared<AddChildView>(environment_); },
          [this] { comeBack(); }),
      showChildDetail(
          *this, "showChildDetail",
          [this] {
            return selectedChild() ? std::make_shared<ChildDetailView>(environment_, *selectedChild(),
                                                                       weakly([this] { load(); }))
                                   : nullptr;
          },
          [this] {
            selectedChild = std::nullopt;
            comeBackIfCovered();
          }),
      showSettings(
          *this, "showSettings", [this] { return std::make_shared<SettingsView>(environment_); },
          [this] { comeBackIfCovered(); }),
      showHomeNetwork(
          *this, "showHomeNetwork", [this] { return std::make_shared<HomeNetworkView>(environment_); },
          [this] { comeBackIfCovered(); }),
      showFamilyMembers(
          *this, "showFamilyMembers", [this] { return std::make_shared<FamilyMembersView>(environment_); },
          [this] { comeBackIfCovered(); }),
      showAddDevice(
          *this, "showAddDevice",
          [this] {
            return childForNewDevice() ? std::make_shared<AddDeviceSheet>(environment_, *childForNewDevice(),
                                                                          weakly([this] { load(); }))
                                       : nullptr;
          },
          [this] { comeBack(); }),
      environment_(environment),
      dispatch_(environment.platform().dispatch),
      authState_(environment.authState()),
      appearanceManager_(environment.appearanceManager()),
      sceneReaction_(environment.scene().onChange([this](ScenePhase phase) { followScene(phase); })),
      passingTime_(environment, weakly([this] { updatedText.check(); })) {
  follow(*authState_);
  follow(*appearanceManager_);
}

void DeviceListView::onAppear() {
  load();
  startAutoRefresh();
  passingTime_.start();
}

void DeviceListView::onDisappear() {
  stopAutoRefresh();
  passingTime_.stop();
}

void DeviceListView::comeBack() {
  // After the account was deleted in a sheet there is nothing to load.
  if (isOnScreen() && authState_->isLoggedIn()) {
    onAppear();
  }
}

void DeviceListView::comeBackIfCovered() {
  if (!arePagesBeside()) {
    comeBack();
  }
}

void DeviceListView::followScene(ScenePhase phase) {
  if (phase == ScenePhase::active) {
    startAutoRefresh();
  } else {
    stopAutoRefresh();
  }
}

void DeviceListView::load() {
  isLoading = children().empty();
  cardsAppeared = false;
  awaitReload();
  environment_.networkService()->send(
      calls::getChildren, hoppingToMain(dispatch_, weakly([this](const Result<ChildrenResponse>& result) {
                                          handleLoad(result);
                                        })));
}

void DeviceListView::awaitReload() {
  if (isLoading() || reloadTimer_ || showsReload()) {
    return;
  }
  reloadTimer_ = dispatch_.scheduleRepeating(unseenReload, weakly([this] {
                                               showsReload = true;
                                               reloadTimer_.reset();
                                             }));
}

void DeviceListView::handleLoad(const Result<ChildrenResponse>& result) {
  isLoading = false;
  reloadTimer_.reset();
  setIfChanged(showsReload, false);
  lastRefreshTime = dispatch_.now();
  show(result.ok() ? result.value().children : std::vector<ChildProfileWithDevices>(), CardEntrance::staged);
  cardsAppeared = true;
  if (result.ok()) {
    startAutoRefresh();
  }
}

void DeviceListView::startAutoRefresh() {
  if (!refreshTimer_ && isOnScreen() && environment_.scene().isInUse()) {
    refreshTimer_ = dispatch_.scheduleRepeating(refreshPeriod, weakly([this] { backgroundRefresh(); }));
  }
}

void DeviceListView::stopAutoRefresh() { refreshTimer_.reset(); }

void DeviceListView::backgroundRefresh() {
  if (isBackgroundRefreshing() || isLoading()) {
    return;
  }
  isBackgroundRefreshing = true;
  environment_.networkService()->send(
      calls::getChildren, hoppingToMain(dispatch_, weakly([this](const Result<ChildrenResponse>& result) {
                                          handleBackgroundRefresh(result);
                                        })));
}

void DeviceListView::handleBackgroundRefresh(const Result<ChildrenResponse>& result) {
  isBackgroundRefreshing = false;
  lastRefreshTime = dispatch_.now();
  if (result.ok()) {
    show(result.value().children, CardEntrance::inPlace);
  }
}

void DeviceListView::show(const std::vector<ChildProfileWithDevices>& fresh, CardEntrance entrance) {
  if (!(children() == fresh)) {
    children = fresh;
    updateCards(entrance);
  }
}

void DeviceListView::updateCards(CardEntrance entrance) {
  showInRows(
      cards, children(), [](const ChildProfileWithDevices& child) { return child.id; },
      [this, entrance](const ChildProfileWithDevices& child) { return makeCard(child, entrance); },
      [position = std::int64_t{0}](ChildDashboardCard& card, const ChildProfileWithDevices& child) mutable {
        card.update(child, position++);
      });
}

std::shared_ptr<ChildDashboardCard> DeviceListView::makeCard(const ChildProfileWithDevices& child,
                                                             CardEntrance entrance) {
  return std::make_shared<ChildDashboardCard>(
      child, entrance, weakly([this](const ChildProfileWithDevices& tapped) { select(tapped); }),
      weakly([this](const ChildProfileWithDevices& tapped) { addDeviceFor(tapped); }));
}

void DeviceListView::choose(std::int64_t place) {
  const auto shown = shownCards.nested();
  if (place >= 0 && std::cmp_less(place, shown.size())) {
    static_cast<ChildDashboardCard&>(*shown[static_cast<std::size_t>(place)].object).tap();
  }
}

void DeviceListView::select(const ChildProfileWithDevices& child) {
  if (arePagesBeside() && selectedChild() && selectedChild()->id != child.id) {
    showChildDetail = false;
  }
  if (!showChildDetail()) {
    selectedChild = child;
    showChildDetail = true;
  }
}

void DeviceListView::addDeviceFor(const ChildProfileWithDevices& child) {
  if (!showAddDevice()) {
    childForNewDevice = child;
    showAddDevice = true;
  }
}

void DeviceListView::endSession() {
  stopAutoRefresh();
  authState_->logout();
}

DashboardContent DeviceListView::computeContent() const {
  if (isLoading()) {
    return DashboardContent::loading;
  }
  return children().empty() ? DashboardContent::empty : DashboardContent::list;
}

double DeviceListView::computeWidth() const {
  return computeContent() == DashboardContent::list ? wideContentWidth : usualContentWidth;
}

std::int64_t DeviceListView::countDevices() const {
  return std::accumulate(children().begin(), children().end(), std::int64_t{0},
                         [](std::int64_t sum, const ChildProfileWithDevices& child) {
                           return sum + static_cast<std::int64_t>(child.devices.size());
                         });
}

std::int64_t DeviceListView::countOnlineDevices() const {
  return std::accumulate(children().begin(), children().end(), std::int64_t{0},
                         [](std::int64_t sum, const ChildProfileWithDevices& child) {
                           return sum + countOnline(child.devices);
                         });
}

std::string DeviceListView::computeUpdatedText() {
  if (computeContent() != DashboardContent::list) {
    return {};
  }
  if (!dateStyles_) {
    dateStyles_ = environment_.dateStyles();
  }
  return "Updated " + dateStyles_->abbreviatedRelative(lastRefreshTime(), dispatch_.now());
}

std::string DeviceListView::computeThemeTitle() const {
  return "Theme: " + std::string(rawValue(appearanceManager_->currentMode()));
}

}  // namespace quillmar
