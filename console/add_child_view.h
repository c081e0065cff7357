#pragma once

#include <functional>
#include <string>

#include "app/session/environment.h"
#include "presentation/error_alert.h"
#include "presentation/key_commands.h"
#include "presentation/screen_model.h"

namespace quillmar {

struct ChildProfileWithDevices;

// Creates a child profile. A birth year can be entered only here.
class AddChildView final : public ScreenModel {
 public:
  // `onChildAdded` is never called: the dashboard reloads when this sheet is dismissed.
  explicit AddChildView(Environment& environment, std::function<void()> onChildAdded = {});

  Input<std::string> name{*this, "name"};
  Input<std::string> birthYear{*this, "birthYear"};
  Published<bool> isLoading{*this, "isLoading", false};
  ErrorAlert errorAlert{*this};

  Text title{*this, "title", "Add Child"};
  Text cancelTitle{*this, "cancelTitle", "Cancel"};
  Text section{*this, "section", "Child Information"};
  Text nameLabel{*this, "nameLabel", "Name"};
  Text birthYearLabel{*this, "birthYearLabel", "Birth Year (optional)"};
  Text footer{*this, "footer", "You can add a photo and link devices after creating the profile."};
  Derived<std::string> createTitle{*this, "createTitle", [this] {
                                     return std::string(isLoading() ? "Creating..." : "Create Child Profile");
                                   }};

  Action<> cancel{*this, "cancel", [this] { dismiss(); }};
  Action<> createChildProfile{*this, "createChildProfile", [this] { create(); },
                              [this] { return !name().empty() && !isLoading(); }};
  KeyCommands keys{*this, {{Command::back, cancel}}};

 private:
  void create();
  void handleResult(const Result<ChildProfileWithDevices>& result);

  Environment& environment_;
  const std::function<void()> onChildAdded_;
};

}  // namespace quillmar
