#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>
#include <QVariantList>
#include <functional>

namespace quillmar::ui {

// The service through which a desktop lets a program read its settings or ask the person for something.
inline const auto portalService = QStringLiteral("org.freedesktop.portal.Desktop");
inline const auto portalPath = QStringLiteral("/org/freedesktop/portal/desktop");

// Calls a method of the portal. `answered` gets the reply, which may be an error, from the event loop; not
// after `owner` is destroyed.
void callPortal(const QDBusConnection& bus, QObject& owner, const QString& interface, const QString& method,
                const QVariantList& arguments, std::function<void(const QDBusMessage&)> answered);

}  // namespace quillmar::ui
