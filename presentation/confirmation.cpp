#include "presentation/confirmation.h"

#include <utility>

namespace quillmar {

Confirmation::Confirmation(ObservableObject& screen, const Names& names, std::function<void()> effect)
    : isShown(screen, names.isShown, false),
      confirm(
          screen, names.confirm,
          [this, effect = std::move(effect)] {
            isShown = false;
            effect();
          },
          [this] { return isShown(); }),
      cancel(
          screen, names.cancel, [this] { isShown = false; }, [this] { return isShown(); }) {}

}  // namespace quillmar
