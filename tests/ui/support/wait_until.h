#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <functional>

namespace quillmar::ui {

// Runs the event loop until a condition holds. False after twenty seconds.
inline bool waitUntil(const std::function<bool()>& done) {
  constexpr qint64 farTooLong = 20'000;
  QElapsedTimer elapsed;
  elapsed.start();
  while (!done() && !elapsed.hasExpired(farTooLong)) {
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
  }
  return done();
}

}  // namespace quillmar::ui
