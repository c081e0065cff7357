#pragma once

#include "presentation/key_commands.h"
#include "presentation/screen_model.h"

namespace quillmar {

// Says where a console's DNS settings are. They are on the console, so this screen has none.
class ConsoleDNSInstructionsView final : public ScreenModel {
 public:
  ConsoleDNSInstructionsView() : ScreenModel("ConsoleDNSInstructionsView") {}

  Text title{*this, "title", "Console DNS Setup"};
  Text doneTitle{*this, "doneTitle", "Done"};
  Text text{
      *this, "text",
      "Add a console using the 'Add Device' button on the Devices screen to see DNS setup instructions."};

  Action<> done{*this, "done", [this] { dismiss(); }};
  KeyCommands keys{*this, {{Command::back, done}}};
};

}  // namespace quillmar
