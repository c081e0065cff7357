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

// A scene in a window of some size.
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

// Visits every text that the window shows, in front or behind.
void forEachText(const UiStage& stage, const std::function<void(const QQuickItem&)>& visit);
bool isText(const QQuickItem& item);

// What lies in front of all else: the last popup that is open, or the whole window.
const QQuickItem& frontOf(const UiStage& stage);

// How far a row that is drawn aside has taken the item along.
double drawnAside(const QQuickItem& item);

}  // namespace ui
}  // namespace quillmar
