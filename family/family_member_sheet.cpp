#include "family/family_member_sheet.h"

#include <array>
#include <memory>
#include <utility>
#include <vector>

#include "family/family_members_view.h"
#include "family/family_texts.h"

namespace quillmar {
namespace {

using Changes = UpdateMemberPermissionsRequest;

constexpr auto allPermissions = std::to_array<Permission>(
    {{"canManageDevices", "Can Manage Devices", &FamilyMember::canManageDevices, &Changes::canManageDevices},
     {"canManagePolicies", "Can Manage Policies", &FamilyMember::canManagePolicies,
      &Changes::canManagePolicies},
     {"isActive", "Account Active", &FamilyMember::isActive, &Changes::isActive}});

}  // namespace

PermissionToggle::PermissionToggle(const Permission& permission, FamilyMembersView& family)
    : ObservableObject("PermissionToggle"),
      title(*this, "title", permission.title),
      permission_(permission),
      family_(family) {
  follow(family_);
}

bool PermissionToggle::computeIsOn() const {
  const auto& member = family_.selectedMember();
  return member && (*member).*permission_.held;
}

bool PermissionToggle::canFlip() const { return family_.selectedMember() && !isUpdating(); }

void PermissionToggle::startFlip() {
  Changes changes;
  changes.*permission_.change = !isOn();
  isUpdating = true;
  family_.updatePermissions(changes, weakly([this] { isUpdating = false; }));
}

FamilyMemberSheet::FamilyMemberSheet(FamilyMembersView& family)
    : ScreenModel("FamilyMemberSheet"), family_(family) {
  follow(family_);
  std::vector<std::pair<std::string, std::shared_ptr<PermissionToggle>>> rows;
  rows.reserve(allPermissions.size());
  for (const auto& permission : allPermissions) {
    rows.emplace_back(permission.name, std::make_shared<PermissionToggle>(permission, family_));
  }
  permissions.assign(std::move(rows));
}

std::string FamilyMemberSheet::computeName() const {
  const auto& member = family_.selectedMember();
  return member ? member->displayName : std::string();
}

std::string FamilyMemberSheet::computeEmail() const {
  const auto& member = family_.selectedMember();
  return member ? member->email.value_or("") : std::string();
}

std::string FamilyMemberSheet::computeRole() const {
  const auto& member = family_.selectedMember();
  return member ? roleLabel(*member) : std::string();
}

void FamilyMemberSheet::askToRemove() { family_.askToRemove(); }

}  // namespace quillmar
