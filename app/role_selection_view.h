#pragma once

#include <string>
#include <vector>

#include "app/country_selection_view.h"
#include "app/session/environment.h"
#include "app/session/role_manager.h"
#include "presentation/key_commands.h"
#include "presentation/screen_model.h"

namespace quillmar {

// The card of a role.
class RoleCard final : public ObservableObject {
 public:
  struct Face {
    DeviceRole role;
    std::string_view icon;
    std::string_view title;
    std::string_view subtitle;
    std::vector<std::string> gradientColors;  // names of semantic colours
  };

  RoleCard(Face face, std::function<void()> effect);

  Derived<DeviceRole> role{*this, "role", [this] { return face_.role; }};
  Derived<std::vector<std::string>> gradientColors{*this, "gradientColors",
                                                   [this] { return face_.gradientColors; }};
  Text icon;
  Text title;
  Text subtitle;
  // The press effect only; disables nothing.
  Input<bool> isPressed{*this, "isPressed", false};
  Action<> action;

 private:
  const Face face_;
};

// Asks who will use this device. Shown while the installation has no role; a parent continues to the region.
class RoleSelectionView final : public ScreenModel {
 public:
  explicit RoleSelectionView(Environment& environment);

  // The entry animation.
  Published<double> logoScale{*this, "logoScale", 0.8};
  Published<double> logoOpacity{*this, "logoOpacity", 0.0};
  Published<double> cardsOpacity{*this, "cardsOpacity", 0.0};
  Published<double> cardsOffset{*this, "cardsOffset", 30.0};

  Text logo{*this, "logo", "QuillmarLogo"};
  Text welcome{*this, "welcome", "Welcome to Quillmar"};
  Text tagline{*this, "tagline", "Family internet protection made simple"};
  Text question{*this, "question", "Who will use this device?"};
  Text noteIcon{*this, "noteIcon", "info.circle"};
  Text note{*this, "note", "This choice is permanent. To change it, you'll need to reinstall the app."};

  Rows<RoleCard> cards{*this, "cards"};
  // Replaces the cards until a parent has chosen a region.
  Presented<CountrySelectionView> countrySelection;
  KeyCommands keys{*this, {}};
  // False also while this screen is dismissed after a region was confirmed.
  Derived<bool> showsCards{*this, "showsCards", [this] {
                             return !countrySelection && roleManager_.currentRole() != DeviceRole::parent;
                           }};

 private:
  void onAppear() override;
  void choose(DeviceRole role);
  void followSelection();

  RoleManager& roleManager_;
  Subscription pendingChange_;
};

}  // namespace quillmar
