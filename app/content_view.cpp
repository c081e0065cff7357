#include "app/content_view.h"

#include "app/role_selection_view.h"
#include "child/child_app_state.h"
#include "child/child_enrollment_view.h"
#include "child/child_home_view.h"
#include "console/device_list_view.h"
#include "family/join_family_view.h"
#include "identity/auth_state.h"
#include "identity/login_view.h"

namespace quillmar {

RootScreen rootScreenFor(DeviceRole role, bool isLoggedIn, bool isEnrolled) {
  switch (role) {
    case DeviceRole::unset:
      return RootScreen::roleSelection;
    case DeviceRole::parent:
      return isLoggedIn ? RootScreen::deviceList : RootScreen::login;
    case DeviceRole::child:
      return isEnrolled ? RootScreen::childHome : RootScreen::childEnrollment;
  }
  return RootScreen::roleSelection;
}

ContentView::ContentView(Environment& environment)
    : ObservableObject("ContentView"), environment_(environment) {
  // The order in which the four state objects load is fixed.
  auto& roleManager = *environment.roleManager();
  auto& authState = *environment.authState();
  auto& childAppState = *environment.childAppState();
  environment.appearanceManager();
  routes_.push_back(roleManager.currentRole.onChange([this] { scheduleReroute(); }));
  routes_.push_back(authState.isLoggedIn.onChange([this] { scheduleReroute(); }));
  routes_.push_back(childAppState.isEnrolled.onChange([this] { scheduleReroute(); }));
}

RootScreen ContentView::computeRoot() const {
  return rootScreenFor(environment_.roleManager()->currentRole(), environment_.authState()->isLoggedIn(),
                       environment_.childAppState()->isEnrolled());
}

std::shared_ptr<ScreenModel> ContentView::makeScreen(RootScreen root) const {
  switch (root) {
    case RootScreen::roleSelection:
      return std::make_shared<RoleSelectionView>(environment_);
    case RootScreen::login:
      return std::make_shared<LoginView>(environment_,
                                         [this] { return std::make_shared<JoinFamilyView>(environment_); });
    case RootScreen::deviceList:
      return std::make_shared<DeviceListView>(environment_);
    case RootScreen::childEnrollment:
      return std::make_shared<ChildEnrollmentView>(environment_);
    case RootScreen::childHome:
      return std::make_shared<ChildHomeView>(environment_);
  }
  return nullptr;
}

void ContentView::appear() { reroute(); }

void ContentView::scheduleReroute() {
  environment_.platform().dispatch.main().async(weakly([this] { reroute(); }));
}

void ContentView::reroute() {
  if (isShown_ && shown_ == root()) {
    return;
  }
  isShown_ = true;
  shown_ = root();
  if (screen) {
    screen->disappear();
  }
  const auto next = makeScreen(shown_);
  screen.put(next);
  next->appear();
}

std::vector<std::shared_ptr<ObservableObject>> ContentView::screens() const {
  std::vector<std::shared_ptr<ObservableObject>> all;
  const std::function<void(const ObservableObject&)> collect = [&](const ObservableObject& object) {
    for (const Member* member : object.members()) {
      if (member->kind() == Member::Kind::sheet) {
        for (const auto& presented : member->nested()) {
          all.push_back(presented.object);
          collect(*presented.object);
        }
      }
    }
  };
  collect(*this);
  return all;
}

}  // namespace quillmar
