#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <functional>

namespace quillmar::ui {

enum class ScreenshotOutcome {
  taken,
  // By the person, or by the desktop on the person's behalf.
  refused,
  // The desktop has no portal for screenshots.
  noPortal
};

using ScreenshotReply = std::function<void(ScreenshotOutcome, const QString& fileUrl)>;

// Asks the person, through the desktop's portal, for a screenshot. Replies once, from the event loop, but
// never after `owner` is destroyed. The caller owns the file. A person may take any time to answer.
void askForScreenshot(const QDBusConnection& bus, QObject& owner, ScreenshotReply reply);

}  // namespace quillmar::ui
