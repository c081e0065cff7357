#include "app/role_selection_view.h"

#include <memory>
#include <utility>

namespace quillmar {
namespace {

std::vector<RoleCard::Face> faces() {
  return {
      {DeviceRole::parent,
       "person.2.fill",
       "I'm a Parent",
       "Manage and monitor your children's devices",
       {"brandBlue", "brandBlueDark"}},
      {DeviceRole::child,
       "person.fill",
       "I'm a Child",
       "This device will be monitored by a parent",
       {"brandTeal", "brandGreen"}},
  };
}

}  // namespace

RoleCard::RoleCard(Face face, std::function<void()> effect)
    : ObservableObject("RoleCard"),
      icon(*this, "icon", face.icon),
      title(*this, "title", face.title),
      subtitle(*this, "subtitle", face.subtitle),
      action(*this, "action", std::move(effect)),
      face_(std::move(face)) {}

RoleSelectionView::RoleSelectionView(Environment& environment)
    : ScreenModel("RoleSelectionView"),
      countrySelection(*this, "countrySelection",
                       [&environment] { return std::make_shared<CountrySelectionView>(environment); }),
      roleManager_(*environment.roleManager()) {
  std::vector<std::pair<std::string, std::shared_ptr<RoleCard>>> rows;
  for (auto& face : faces()) {
    const DeviceRole role = face.role;
    rows.emplace_back(rawValue(role),
                      std::make_shared<RoleCard>(std::move(face), [this, role] { choose(role); }));
  }
  cards.assign(std::move(rows));
  pendingChange_ = roleManager_.pendingParentSelection.onChange([this] { followSelection(); });
}

void RoleSelectionView::onAppear() {
  logoScale = 1.0;
  logoOpacity = 1.0;
  cardsOpacity = 1.0;
  cardsOffset = 0.0;
  followSelection();
}

void RoleSelectionView::choose(DeviceRole role) {
  if (role == DeviceRole::parent) {
    roleManager_.pendingParentSelection = true;
  } else {
    roleManager_.setRole(role);
  }
}

void RoleSelectionView::followSelection() { countrySelection.present(roleManager_.pendingParentSelection()); }

}  // namespace quillmar
