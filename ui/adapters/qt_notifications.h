#pragma once

#include <QDBusConnection>
#include <QHash>
#include <QObject>
#include <QString>
#include <utility>

#include "platform/notifications.h"

class QDBusError;

namespace quillmar::ui {

// Notifications by the desktop's portal, or by its notification service if there is no portal for them. All
// calls are asynchronous, and nothing is sent again if an answer stays out.
class QtNotifications final : public QObject, public Notifications {
  Q_OBJECT

 public:
  explicit QtNotifications(QDBusConnection bus = QDBusConnection::sessionBus()) : bus_(std::move(bus)) {}

  void show(const Notification& notification) override;

 private:
  struct Words {
    QString id;
    QString title;
    QString body;
  };
  void showByPortal(const Words& words);
  void showByService(const Words& words);
  static bool mayBeShown(const QDBusError& error);

  QDBusConnection bus_;
  // The service's numbers of what it has shown.
  QHash<QString, uint> numbers_;
};

}  // namespace quillmar::ui
