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

// Which screen stands at the root, by role, session and enrollment. A change of one of them takes effect at
// once in `root`, and in the screen itself at the end of the turn: whoever published the change finishes its
// work first.
class ContentView final : public ObservableObject {
 public:
  explicit ContentView(Environment& environment);

  Derived<RootScreen> root{*this, "root", [this] { return computeRoot(); }};
  Part<ScreenModel> screen{*this, "screen", Member::Kind::sheet};

  // Puts the first screen up.
  void appear();

  // The root screen first, the topmost presented one last.
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
