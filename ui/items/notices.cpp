#include "ui/items/notices.h"

#include "ui/engine.h"

namespace quillmar::ui {

Notices* Notices::create(QQmlEngine* engine, QJSEngine* /*script*/) {
  const auto* const ours = qobject_cast<Engine*>(engine);
  return new Notices(ours ? ours->notices() : nullptr);
}

}  // namespace quillmar::ui
