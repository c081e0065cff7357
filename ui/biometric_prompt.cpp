#include "ui/biometric_prompt.h"

#include <utility>

namespace quillmar::ui {

BiometricPrompt::BiometricPrompt(Answers answers) : answers_(std::move(answers)) {}

void BiometricPrompt::setReason(const std::optional<std::string>& reason) {
  shown_ = reason.has_value();
  if (reason) {
    reason_ = QString::fromStdString(*reason);
  }
  Q_EMIT shownChanged();
}

}  // namespace quillmar::ui
