#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QStringList>
#include <mutex>

namespace {

std::mutex warningsMutex;
QStringList warnings;

void collect(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message) {
  if (type != QtDebugMsg && type != QtInfoMsg && !message.startsWith("QStandardPaths:")) {
    const std::scoped_lock lock(warningsMutex);
    warnings.append(message);
  }
}

// A property that does not exist, a binding that loops, a symbol that nobody drew: QML only warns, we do not.
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
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("QT_QUICK_BACKEND", "software");
  // A finger's every step arrives, not only the last before a frame.
  qputenv("QML_NO_TOUCH_COMPRESSION", "1");
  testing::InitGoogleTest(&count, arguments);
  const QGuiApplication application(count, arguments);
  qInstallMessageHandler(collect);
  testing::UnitTest::GetInstance()->listeners().Append(new WarningsFail);
  return RUN_ALL_TESTS();
}
