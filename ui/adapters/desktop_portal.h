#pragma once

#include <QObject>
#include <QString>
#include <QVariant>

class QDBusVariant;

namespace quillmar::ui {

class DesktopSettings;

// Reads the desktop's look settings from its portal and follows their changes. Does nothing without a
// session bus.
class DesktopPortal final : public QObject {
  Q_OBJECT

 public:
  explicit DesktopPortal(DesktopSettings& settings);

 private Q_SLOTS:
  void settingChanged(const QString& group, const QString& name, const QDBusVariant& value);

 private:
  void readAll();
  void takeAll(const QVariant& answer);
  void take(const QString& group, const QString& name, const QVariant& value);

  DesktopSettings& settings_;
};

}  // namespace quillmar::ui
