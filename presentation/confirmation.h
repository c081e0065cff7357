#pragma once

#include <functional>
#include <string_view>

#include "foundation/observable.h"

namespace quillmar {

// A question that stands over a screen until it is answered. Its members are the screen's own.
class Confirmation {
 public:
  // Under which the screen knows them.
  struct Names {
    std::string_view isShown;
    std::string_view confirm;
    std::string_view cancel;
  };

  // `effect` is what is asked about. The question has gone by then.
  Confirmation(ObservableObject& screen, const Names& names, std::function<void()> effect);

  Input<bool> isShown;
  Action<> confirm;
  Action<> cancel;

  void ask() { isShown = true; }
};

}  // namespace quillmar
