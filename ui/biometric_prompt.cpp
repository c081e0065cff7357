#include "ui/biometric_prompt.h"

#include <utility>

#include "ui/bridge/shown_text.h"

namespace quillmar::ui {

BiometricPrompt::BiometricPrompt(Answers answers) : answers_(std::move(answers)) {}

void BiometricPrompt::setReason(const std::optional<std::string>& reason) {
  shown_ = reason.has_value();
  if (reason) {
    reason_ = shownText(*reason);
  }
  Q_EMIT shownChanged();
}

}  // namespace quillmar::ui
