#include "ui/adapters/portal.h"

#include <QDBusPendingCallWatcher>
#include <utility>

namespace quillmar::ui {

void callPortal(const QDBusConnection& bus, QObject& owner, const QString& interface, const QString& method,
                const QVariantList& arguments, std::function<void(const QDBusMessage&)> answered) {
  auto call = QDBusMessage::createMethodCall(portalService, portalPath, interface, method);
  call.setArguments(arguments);
  auto* const pending = new QDBusPendingCallWatcher(bus.asyncCall(call), &owner);
  QObject::connect(pending, &QDBusPendingCallWatcher::finished, &owner,
                   [pending, answered = std::move(answered)] {
                     pending->deleteLater();
                     answered(pending->reply());
                   });
}

}  // namespace quillmar::ui
