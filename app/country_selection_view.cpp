#include "app/country_selection_view.h"

#include <chrono>
#include <memory>
#include <utility>
#include <vector>

namespace quillmar {
namespace {

constexpr auto detectionTime = std::chrono::milliseconds(500);

}  // namespace

RegionCard::RegionCard(Region region, CountrySelectionView& screen)
    : ObservableObject("RegionCard"),
      isSelected(*this, "isSelected",
                 [this, &screen] { return rawValue(screen.selectedRegion()) == rawValue(region_); }),
      flag(*this, "flag", quillmar::flag(region)),
      name(*this, "name", displayName(region)),
      action(*this, "action", [this, &screen] { screen.selectedRegion = region_; }),
      region_(region) {
  follow(screen);
}

CountrySelectionView::CountrySelectionView(Environment& environment)
    : ScreenModel("CountrySelectionView"),
      roleManager_(*environment.roleManager()),
      dispatch_(environment.platform().dispatch) {
  std::vector<std::pair<std::string, std::shared_ptr<RegionCard>>> rows;
  rows.reserve(rawNames<Region>.size());
  for (const auto& [region, name] : rawNames<Region>) {
    rows.emplace_back(name, std::make_shared<RegionCard>(region, *this));
  }
  regionCards.assign(std::move(rows));
}

void CountrySelectionView::onAppear() {
  contentOpacity = 1.0;
  contentOffset = 0.0;
  dispatch_.main().asyncAfter(detectionTime, weakly([this] { isDetectingLocation = false; }));
}

void CountrySelectionView::confirm() {
  roleManager_.pendingParentSelection = false;
  // The region is stored before the role: a parent's first request needs it.
  roleManager_.selectedRegion = selectedRegion();
  roleManager_.saveRegion();
  roleManager_.setRole(DeviceRole::parent);
}

}  // namespace quillmar
