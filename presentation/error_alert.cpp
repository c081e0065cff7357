#include "presentation/error_alert.h"

#include <utility>

namespace quillmar {

ErrorAlert::ErrorAlert(ObservableObject& screen)
    : message(screen, "errorMessage"),
      isShown(screen, "showError", false),
      title(screen, "errorTitle", "Error"),
      okTitle(screen, "okTitle", "OK"),
      dismiss(
          screen, "dismissError", [this] { isShown = false; }, [this] { return isShown(); }) {}

void ErrorAlert::show(std::string text) {
  message = std::move(text);
  isShown = true;
}

}  // namespace quillmar
