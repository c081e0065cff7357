#pragma once

#include <QSize>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "testing/ui/ui_stage.h"
#include "tools/pictures/scenes.h"

namespace quillmar {

inline void PrintTo(const Shot& shot, std::ostream* out) { *out << shot.name; }

namespace ui {

// A scene in a window of a given size.
struct SizedScene {
  Shot shot;
  QSize size;
};
inline void PrintTo(const SizedScene& scene, std::ostream* out) {
  *out << scene.shot.name << " at " << scene.size.width();
}

// Every scene in each of these sizes.
std::vector<SizedScene> scenesIn(const std::vector<QSize>& sizes);

// Plays a scene to its end.
void play(UiStage& stage, const Shot& shot);

// Visits every text in the window, including covered ones.
void forEachText(const UiStage& stage, const std::function<void(const QQuickItem&)>& visit);
bool isText(const QQuickItem& item);

// The topmost item: the last open popup, or the whole window.
const QQuickItem& frontOf(const UiStage& stage);

// The distance by which a swiped row has moved the item.
double drawnAside(const QQuickItem& item);

}  // namespace ui
}  // namespace quillmar
