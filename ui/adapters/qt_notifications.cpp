#include "ui/adapters/qt_notifications.h"

#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QStringList>
#include <QVariantMap>

#include "ui/bridge/shown_text.h"

namespace quillmar::ui {
namespace {

const auto applicationName = QStringLiteral("Quillmar");
// Also the name of the icon.
const auto desktopEntry = QStringLiteral("live.quillmar.Quillmar");

QDBusMessage portalCall() {
  return QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.portal.Desktop"), QStringLiteral("/org/freedesktop/portal/desktop"),
      QStringLiteral("org.freedesktop.portal.Notification"), QStringLiteral("AddNotification"));
}

QDBusMessage serviceCall() {
  return QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("/org/freedesktop/Notifications"),
      QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("Notify"));
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
  auto call = serviceCall();
  call << applicationName << numbers_.value(words.id) << desktopEntry << words.title << words.body
       << QStringList() << QVariantMap{{"desktop-entry", desktopEntry}} << asLongAsUsual;
  auto* const pending = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
  connect(pending, &QDBusPendingCallWatcher::finished, this, [this, pending, id = words.id] {
    pending->deleteLater();
    const QDBusPendingReply<uint> number = *pending;
    if (number.isValid()) {
      numbers_.insert(id, number.value());
    }
  });
}

// A portal that does not answer may still show it.
bool QtNotifications::mayBeShown(const QDBusError& error) {
  return error.type() == QDBusError::NoReply || error.type() == QDBusError::Timeout ||
         error.type() == QDBusError::TimedOut;
}

}  // namespace quillmar::ui
