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

 Q_SIGNALS:
  // A person chose a notification of the service. The token, which may be empty, lets a window come to the
  // front. (A portal activates the application itself.)
  void chosen(const QString& activationToken);

 private Q_SLOTS:
  void keepToken(uint number, const QString& token);
  void takeAction(uint number, const QString& action);

 private:
  struct Words {
    QString id;
    QString title;
    QString body;
  };
  void showByPortal(const Words& words);
  void showByService(const Words& words);
  void listenToService();
  bool isOurs(uint number) const;
  static bool mayBeShown(const QDBusError& error);

  QDBusConnection bus_;
  // The service's numbers of what it has shown.
  QHash<QString, uint> numbers_;
  // Comes before the action that it is for.
  QString token_;
  bool listens_ = false;
};

}  // namespace quillmar::ui
