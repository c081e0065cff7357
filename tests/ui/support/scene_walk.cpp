#include "tests/ui/support/scene_walk.h"

#include <QQuickItem>
#include <QQuickWindow>
#include <QVariant>

namespace quillmar::ui {

std::vector<SizedScene> scenesIn(const std::vector<QSize>& sizes) {
  std::vector<SizedScene> all;
  for (const auto& shot : scenes()) {
    for (const QSize size : sizes) {
      all.push_back({shot, size});
    }
  }
  return all;
}

void play(UiStage& stage, const Shot& shot) {
  shot.play(stage);
  stage.settle();
  // A box that was too low in one frame gets its height in the next.
  stage.settle();
}

bool isText(const QQuickItem& item) {
  return item.inherits("QQuickText") && !item.property("text").toString().isEmpty();
}

void forEachText(const UiStage& stage, const std::function<void(const QQuickItem&)>& visit) {
  forEachShown(*stage.window().contentItem(), [&](const QQuickItem& item) {
    if (isText(item)) {
      visit(item);
    }
  });
}

const QQuickItem& frontOf(const UiStage& stage) {
  const QQuickItem* front = stage.window().contentItem();
  forEachShown(*stage.window().contentItem(), [&](const QQuickItem& item) {
    if (item.inherits("QQuickPopupItem")) {
      front = &item;
    }
  });
  return *front;
}

double drawnAside(const QQuickItem& item) {
  double way = 0;
  for (const auto* above = &item; above->parentItem(); above = above->parentItem()) {
    if (above->parentItem()->property("dragging").isValid()) {
      way += above->x();
    }
  }
  return way;
}

}  // namespace quillmar::ui
