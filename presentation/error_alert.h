#pragma once

#include <string>

#include "foundation/error.h"
#include "foundation/observable.h"

namespace quillmar {

// The alert that shows a screen's error. Its members are registered on that screen.
class ErrorAlert {
 public:
  explicit ErrorAlert(ObservableObject& screen);

  Published<std::string> message;  // "errorMessage"
  Input<bool> isShown;             // "showError"
  Text title;                      // "errorTitle"
  Text okTitle;                    // "okTitle"
  Action<> dismiss;                // "dismissError"

  void show(std::string text);
  void show(const Error& error) { show(error.localizedDescription()); }
};

}  // namespace quillmar
