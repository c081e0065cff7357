#pragma once

#include <optional>
#include <string>

#include "client/records/family.h"
#include "foundation/observable.h"
#include "presentation/key_commands.h"
#include "presentation/screen_model.h"

namespace quillmar {

class FamilyMembersView;

// One permission of a member: its field in the record and in the update request.
struct Permission {
  std::string_view name;
  std::string_view title;
  bool FamilyMember::*held;
  std::optional<bool> UpdateMemberPermissionsRequest::*change;
};

// Shows the permission as it was when the sheet opened. A change is sent to the service, but shown only when
// the sheet is opened again. One call at a time.
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

// The permissions of the selected member.
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
  KeyCommands keys{*this, {{Command::back, done}}};

 private:
  std::string computeName() const;
  std::string computeEmail() const;
  std::string computeRole() const;
  void askToRemove();

  FamilyMembersView& family_;
};

}  // namespace quillmar
