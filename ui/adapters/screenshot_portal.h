#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <functional>

namespace quillmar::ui {

enum class ScreenshotOutcome {
  taken,
  // By the person, or by the desktop on their behalf.
  refused,
  // This desktop has nobody to ask.
  noPortal
};

using ScreenshotReply = std::function<void(ScreenshotOutcome, const QString& fileUrl)>;

// Has the desktop's portal ask the person for a picture of the screen. The reply comes once, from the event
// loop, and never when `owner` has gone; the file is the caller's. A person may take any time to answer.
void askForScreenshot(const QDBusConnection& bus, QObject& owner, ScreenshotReply reply);

}  // namespace quillmar::ui
