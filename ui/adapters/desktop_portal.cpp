#include "ui/adapters/desktop_portal.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusVariant>
#include <QMap>
#include <algorithm>

#include "ui/adapters/desktop_settings.h"
#include "ui/adapters/portal.h"

namespace quillmar::ui {
namespace {

const auto interface = QStringLiteral("org.freedesktop.portal.Settings");
const auto appearanceGroup = QStringLiteral("org.freedesktop.appearance");
const auto interfaceGroup = QStringLiteral("org.gnome.desktop.interface");

std::optional<bool> darkFrom(uint preference) {
  constexpr uint preferDark = 1;
  constexpr uint preferLight = 2;
  return preference == preferDark    ? std::optional(true)
         : preference == preferLight ? std::optional(false)
                                     : std::nullopt;
}

}  // namespace

DesktopPortal::DesktopPortal(DesktopSettings& settings) : settings_(settings) {
  auto bus = QDBusConnection::sessionBus();
  if (bus.isConnected()) {
    bus.connect(portalService, portalPath, interface, QStringLiteral("SettingChanged"), this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
    readAll();
  }
}

void DesktopPortal::readAll() {
  const QStringList groups{appearanceGroup, interfaceGroup};
  callPortal(QDBusConnection::sessionBus(), *this, interface, QStringLiteral("ReadAll"), {groups},
             [this](const QDBusMessage& answer) {
               if (answer.type() != QDBusMessage::ErrorMessage && !answer.arguments().isEmpty()) {
                 takeAll(answer.arguments().constFirst());
               }
             });
}

void DesktopPortal::takeAll(const QVariant& answer) {
  const auto groups = qdbus_cast<QMap<QString, QVariantMap>>(answer);
  for (auto group = groups.cbegin(); group != groups.cend(); ++group) {
    for (auto entry = group->cbegin(); entry != group->cend(); ++entry) {
      take(group.key(), entry.key(), entry.value());
    }
  }
}

void DesktopPortal::settingChanged(const QString& group, const QString& name, const QDBusVariant& value) {
  take(group, name, value.variant());
}

void DesktopPortal::take(const QString& group, const QString& name, const QVariant& value) {
  auto wishes = settings_.wishes();
  if (group == appearanceGroup && name == QLatin1StringView("color-scheme")) {
    wishes.dark = darkFrom(value.toUInt());
  } else if (group == interfaceGroup && name == QLatin1StringView("text-scaling-factor")) {
    wishes.textScale = std::clamp(value.toDouble(), 0.5, 3.0);
  } else if (group == interfaceGroup && name == QLatin1StringView("enable-animations")) {
    wishes.reducedMotion = !value.toBool();
  } else {
    return;
  }
  settings_.setWishes(wishes);
}

}  // namespace quillmar::ui
