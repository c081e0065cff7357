#pragma once

#include <optional>
#include <string>

#include "client/records/family.h"
#include "foundation/observable.h"
#include "presentation/screen_model.h"

namespace quillmar {

class FamilyMembersView;

// One right of a member: where it stands in the record, and where in the request that changes it.
struct Permission {
  std::string_view name;
  std::string_view title;
  bool FamilyMember::*held;
  std::optional<bool> UpdateMemberPermissionsRequest::*change;
};

// Shows what the member held when the sheet was opened; a change goes to the service and is not shown before
// the sheet is opened anew. One call at a time.
class PermissionToggle final : public ObservableObject {
 public:
  PermissionToggle(const Permission& permission, FamilyMembersView& family);

  Text title;
  Derived<bool> isOn{*this, "isOn", [this] { return computeIsOn(); }};
  Published<bool> isUpdating{*this, "isUpdating", false};
  Action<> flip{*this, "flip", [this] { startFlip(); }, [this] { return canFlip(); }};

 private:
  bool computeIsOn() const;
  bool canFlip() const;
  void startFlip();

  const Permission& permission_;
  FamilyMembersView& family_;
};

// The rights of the member that is selected.
class FamilyMemberSheet final : public ScreenModel {
 public:
  explicit FamilyMemberSheet(FamilyMembersView& family);

  Derived<std::string> name{*this, "name", [this] { return computeName(); }};
  Derived<std::string> email{*this, "email", [this] { return computeEmail(); }};
  Derived<std::string> role{*this, "role", [this] { return computeRole(); }};
  Rows<PermissionToggle> permissions{*this, "permissions"};

  Text title{*this, "title", "Family Member"};
  Text doneTitle{*this, "doneTitle", "Done"};
  Text nameTitle{*this, "nameTitle", "Name"};
  Text emailTitle{*this, "emailTitle", "Email"};
  Text roleTitle{*this, "roleTitle", "Role"};
  Text permissionsSection{*this, "permissionsSection", "Permissions"};
  Text removeTitle{*this, "removeTitle", "Remove from Family"};

  Action<> done{*this, "done", [this] { dismiss(); }};
  Action<> removeFromFamily{*this, "removeFromFamily", [this] { askToRemove(); }};

 private:
  std::string computeName() const;
  std::string computeEmail() const;
  std::string computeRole() const;
  void askToRemove();

  FamilyMembersView& family_;
};

}  // namespace quillmar
