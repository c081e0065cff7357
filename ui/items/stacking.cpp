#include "ui/items/stacking.h"

#include <QQuickItem>

namespace quillmar::ui {

void Stacking::lower(QQuickItem* popup) {
  const auto* const overlay = popup ? popup->parentItem() : nullptr;
  if (!overlay) {
    return;
  }
  const auto layers = overlay->childItems();
  const auto place = layers.indexOf(popup);
  if (place > 1) {
    // Qt puts the dimmer right under its popup.
    auto* const dimmer = layers[place - 1];
    popup->stackBefore(layers.front());
    dimmer->stackBefore(popup);
  }
}

}  // namespace quillmar::ui
