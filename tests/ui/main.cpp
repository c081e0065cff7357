#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QStringList>
#include <mutex>

#include "testing/ui/offscreen.h"

namespace {

std::mutex warningsMutex;
QStringList warnings;

void collect(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message) {
  if (type != QtDebugMsg && type != QtInfoMsg && !message.startsWith("QStandardPaths:")) {
    const std::scoped_lock lock(warningsMutex);
    warnings.append(message);
  }
}

// Turns QML's warnings into failures: unknown properties, binding loops, missing symbols.
class WarningsFail final : public testing::EmptyTestEventListener {
  void OnTestStart(const testing::TestInfo& /*test*/) override { take(); }
  void OnTestEnd(const testing::TestInfo& /*test*/) override {
    for (const auto& warning : take()) {
      ADD_FAILURE() << "warned: " << warning.toStdString();
    }
  }

  static QStringList take() {
    const std::scoped_lock lock(warningsMutex);
    return std::exchange(warnings, {});
  }
};

}  // namespace

int main(int count, char** arguments) {
  quillmar::ui::drawOffscreen();
  // Every step of a touch is delivered, not only the last one before a frame.
  qputenv("QML_NO_TOUCH_COMPRESSION", "1");
  testing::InitGoogleTest(&count, arguments);
  const QGuiApplication application(count, arguments);
  qInstallMessageHandler(collect);
  testing::UnitTest::GetInstance()->listeners().Append(new WarningsFail);
  return RUN_ALL_TESTS();
}
