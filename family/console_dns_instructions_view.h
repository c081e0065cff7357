#pragma once

#include "presentation/screen_model.h"

namespace quillmar {

// Where a console's DNS settings are to be found. They belong to a console, and so there are none here.
class ConsoleDNSInstructionsView final : public ScreenModel {
 public:
  ConsoleDNSInstructionsView() : ScreenModel("ConsoleDNSInstructionsView") {}

  Text title{*this, "title", "Console DNS Setup"};
  Text doneTitle{*this, "doneTitle", "Done"};
  Text text{
      *this, "text",
      "Add a console using the 'Add Device' button on the Devices screen to see DNS setup instructions."};

  Action<> done{*this, "done", [this] { dismiss(); }};
};

}  // namespace quillmar
