#include "ui/permission_prompt.h"

#include <utility>

namespace quillmar::ui {

void PermissionPrompt::ask(Answer answer) {
  waiting_.push_back(std::move(answer));
  if (waiting_.size() == 1) {
    Q_EMIT shownChanged();
  }
}

void PermissionPrompt::answer(bool allowed) {
  const auto answered = std::exchange(waiting_, {});
  Q_EMIT shownChanged();
  for (const auto& waiting : answered) {
    waiting(allowed);
  }
}

}  // namespace quillmar::ui
