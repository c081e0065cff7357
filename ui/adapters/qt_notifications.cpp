#include "ui/adapters/qt_notifications.h"

#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QStringList>
#include <QVariantMap>
#include <algorithm>
#include <utility>

#include "ui/bridge/shown_text.h"

namespace quillmar::ui {
namespace {

const auto applicationName = QStringLiteral("Quillmar");
// Also the name of the icon.
const auto desktopEntry = QStringLiteral("live.quillmar.Quillmar");

const auto service = QStringLiteral("org.freedesktop.Notifications");
const auto servicePath = QStringLiteral("/org/freedesktop/Notifications");
// The action of a notification that is clicked as a whole.
const auto wholeNotification = QStringLiteral("default");

QDBusMessage portalCall() {
  return QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.portal.Desktop"), QStringLiteral("/org/freedesktop/portal/desktop"),
      QStringLiteral("org.freedesktop.portal.Notification"), QStringLiteral("AddNotification"));
}

QDBusMessage serviceCall() {
  return QDBusMessage::createMethodCall(service, servicePath, service, QStringLiteral("Notify"));
}

}  // namespace

void QtNotifications::show(const Notification& notification) {
  // A call over a closed connection would never be answered.
  if (bus_.isConnected()) {
    showByPortal({exactText(notification.id), exactText(notification.title), exactText(notification.body)});
  }
}

void QtNotifications::showByPortal(const Words& words) {
  auto call = portalCall();
  call << words.id << QVariantMap{{"title", words.title}, {"body", words.body}};
  auto* const pending = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
  connect(pending, &QDBusPendingCallWatcher::finished, this, [this, pending, words] {
    pending->deleteLater();
    if (pending->isError() && !mayBeShown(pending->error())) {
      showByService(words);
    }
  });
}

void QtNotifications::showByService(const Words& words) {
  constexpr int asLongAsUsual = -1;
  listenToService();
  auto call = serviceCall();
  call << applicationName << numbers_.value(words.id) << desktopEntry << words.title << words.body
       << QStringList{wholeNotification, QStringLiteral("Open")}
       << QVariantMap{{"desktop-entry", desktopEntry}} << asLongAsUsual;
  auto* const pending = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
  connect(pending, &QDBusPendingCallWatcher::finished, this, [this, pending, id = words.id] {
    pending->deleteLater();
    const QDBusPendingReply<uint> number = *pending;
    if (number.isValid()) {
      numbers_.insert(id, number.value());
    }
  });
}

// Only what the service's owner sends arrives.
void QtNotifications::listenToService() {
  if (!listens_) {
    bus_.connect(service, servicePath, service, QStringLiteral("ActivationToken"), this,
                 SLOT(keepToken(uint, QString)));
    bus_.connect(service, servicePath, service, QStringLiteral("ActionInvoked"), this,
                 SLOT(takeAction(uint, QString)));
    listens_ = true;
  }
}

// The service tells every program of all notifications.
bool QtNotifications::isOurs(uint number) const {
  return std::ranges::find(numbers_, number) != numbers_.end();
}

void QtNotifications::keepToken(uint number, const QString& token) {
  if (isOurs(number)) {
    token_ = token;
  }
}

void QtNotifications::takeAction(uint number, const QString& action) {
  if (isOurs(number) && action == wholeNotification) {
    Q_EMIT chosen(std::exchange(token_, {}));
  }
}

// A portal that does not answer may still show it.
bool QtNotifications::mayBeShown(const QDBusError& error) {
  return error.type() == QDBusError::NoReply || error.type() == QDBusError::Timeout ||
         error.type() == QDBusError::TimedOut;
}

}  // namespace quillmar::ui
