#pragma once

#include <functional>
#include <string_view>

#include "foundation/observable.h"

namespace quillmar {

// A question shown over a screen until it is answered. Its members are registered on that screen.
class Confirmation {
 public:
  // The names of the members on the screen.
  struct Names {
    std::string_view isShown;
    std::string_view confirm;
    std::string_view cancel;
  };

  // `effect` runs on confirmation, after the question is hidden.
  Confirmation(ObservableObject& screen, const Names& names, std::function<void()> effect);

  Input<bool> isShown;
  Action<> confirm;
  Action<> cancel;

  void ask() { isShown = true; }
};

}  // namespace quillmar
