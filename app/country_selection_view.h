#pragma once

#include <string>

#include "app/session/environment.h"
#include "app/session/role_manager.h"
#include "presentation/key_commands.h"
#include "presentation/screen_model.h"

namespace quillmar {

class CountrySelectionView;

// The card of a region.
class RegionCard final : public ObservableObject {
 public:
  RegionCard(Region region, CountrySelectionView& screen);

  Derived<Region> region{*this, "region", [this] { return region_; }};
  Derived<bool> isSelected;
  Text flag;
  Text name;
  // The press effect only; disables nothing.
  Input<bool> isPressed{*this, "isPressed", false};
  Action<> action;

 private:
  const Region region_;
};

// Chooses the region, and with it the deployment that a parent's installation uses. One region is always
// selected, so `confirmRegion` is always enabled. Nothing is stored before it.
class CountrySelectionView final : public ScreenModel {
 public:
  explicit CountrySelectionView(Environment& environment);

  Input<Region> selectedRegion{*this, "selectedRegion", Region::australia};
  // Only a timer: nothing is detected.
  Published<bool> isDetectingLocation{*this, "isDetectingLocation", true};
  // The entry animation.
  Published<double> contentOpacity{*this, "contentOpacity", 0.0};
  Published<double> contentOffset{*this, "contentOffset", 30.0};

  Text backTitle{*this, "backTitle", "Back"};
  Text globeIcon{*this, "globeIcon", "globe"};
  Text heading{*this, "heading", "Select Your Region"};
  Text explanation{*this, "explanation", "Choose the region closest to you for the best performance"};
  Text continueTitle{*this, "continueTitle", "Continue"};

  Rows<RegionCard> regionCards{*this, "regionCards"};
  Action<> goBack{*this, "goBack", [this] { roleManager_.pendingParentSelection = false; }};
  Action<> confirmRegion{*this, "confirmRegion", [this] { confirm(); }};
  KeyCommands keys{*this, {{Command::back, goBack}}};

 private:
  void onAppear() override;
  void confirm();

  RoleManager& roleManager_;
  Dispatch& dispatch_;
};

}  // namespace quillmar
