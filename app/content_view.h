#pragma once

#include <array>
#include <memory>
#include <vector>

#include "app/session/environment.h"
#include "app/session/role_manager.h"
#include "foundation/observable.h"
#include "presentation/screen_model.h"

namespace quillmar {

enum class RootScreen { roleSelection, login, deviceList, childEnrollment, childHome };

template <>
inline constexpr std::array rawNames<RootScreen> =
    rawCases<RootScreen>({{RootScreen::roleSelection, "RoleSelectionView"},
                          {RootScreen::login, "LoginView"},
                          {RootScreen::deviceList, "DeviceListView"},
                          {RootScreen::childEnrollment, "ChildEnrollmentView"},
                          {RootScreen::childHome, "ChildHomeView"}});

RootScreen rootScreenFor(DeviceRole role, bool isLoggedIn, bool isEnrolled);

// Chooses the root screen by role, session and enrollment. A change updates `root` at once, and the screen at
// the end of the turn, so that the publisher of the change finishes first.
class ContentView final : public ObservableObject {
 public:
  explicit ContentView(Environment& environment);

  Derived<RootScreen> root{*this, "root", [this] { return computeRoot(); }};
  Part<ScreenModel> screen{*this, "screen", Member::Kind::sheet};

  // Shows the first screen.
  void appear();

  // From the root screen to the topmost presented one.
  std::vector<std::shared_ptr<ObservableObject>> screens() const;

 private:
  RootScreen computeRoot() const;
  std::shared_ptr<ScreenModel> makeScreen(RootScreen root) const;
  void scheduleReroute();
  void reroute();

  Environment& environment_;
  std::vector<Subscription> routes_;
  bool isShown_ = false;
  RootScreen shown_ = RootScreen::roleSelection;
};

}  // namespace quillmar
