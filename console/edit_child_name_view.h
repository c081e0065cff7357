#pragma once

#include <functional>
#include <string>
#include <utility>

#include "presentation/key_commands.h"
#include "presentation/screen_model.h"

namespace quillmar {

class Environment;

// Edits a child's name. The presenter sends the name, even an unchanged one.
class EditChildNameView final : public ScreenModel {
 public:
  EditChildNameView(Environment& /*environment*/, std::string currentName,
                    std::function<void(std::string)> onSave)
      : ScreenModel("EditChildNameView"), currentName_(std::move(currentName)), onSave_(std::move(onSave)) {}

  Input<std::string> name{*this, "name"};

  Text title{*this, "title", "Edit Name"};
  Text cancelTitle{*this, "cancelTitle", "Cancel"};
  Text saveTitle{*this, "saveTitle", "Save"};
  Text nameSection{*this, "nameSection", "Child Name"};
  Text nameLabel{*this, "nameLabel", "Name"};

  Action<> cancel{*this, "cancel", [this] { dismiss(); }};
  Action<> save{*this, "save",
                [this] {
                  onSave_(name());
                  dismiss();
                },
                [this] { return !name().empty(); }};
  KeyCommands keys{*this, {{Command::back, cancel}}};

  const std::string& currentName() const { return currentName_; }

 private:
  void onAppear() override { name = currentName_; }

  const std::string currentName_;
  const std::function<void(std::string)> onSave_;
};

}  // namespace quillmar
