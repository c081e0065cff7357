#pragma once

#include <QByteArray>

namespace quillmar::ui {

// Makes Qt Quick draw into memory and by software. Call it before the QGuiApplication is created.
inline void drawOffscreen() {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("QT_QUICK_BACKEND", "software");
}

}  // namespace quillmar::ui
