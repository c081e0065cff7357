#include "ui/adapters/screenshot_portal.h"

#include <QDBusServiceWatcher>
#include <QUuid>
#include <QVariantMap>
#include <utility>

#include "ui/adapters/portal.h"

namespace quillmar::ui {
// One request; deletes itself when it is answered.
class ScreenshotRequest final : public QObject {
  Q_OBJECT

 public:
  ScreenshotRequest(QDBusConnection bus, QObject& owner, ScreenshotReply reply)
      : QObject(&owner),
        bus_(std::move(bus)),
        reply_(std::move(reply)),
        token_("quillmar_" + QUuid::createUuid().toString(QUuid::Id128)) {}

  void send() {
    // Connected before the call, because the response may arrive before the call's reply.
    bus_.connect(portalService, requestPath(), QStringLiteral("org.freedesktop.portal.Request"),
                 QStringLiteral("Response"), this, SLOT(responded(uint, QVariantMap)));
    // Interactive: the person chooses what is captured, which helps when windows cover each other.
    callPortal(bus_, *this, QStringLiteral("org.freedesktop.portal.Screenshot"), QStringLiteral("Screenshot"),
               {QString(), QVariantMap{{"handle_token", token_}, {"interactive", true}}},
               [this](const QDBusMessage& reply) {
                 if (reply.type() == QDBusMessage::ErrorMessage) {
                   finish(ScreenshotOutcome::noPortal);
                 }
               });
    auto* const watcher =
        new QDBusServiceWatcher(portalService, bus_, QDBusServiceWatcher::WatchForUnregistration, this);
    connect(watcher, &QDBusServiceWatcher::serviceUnregistered, this,
            [this] { finish(ScreenshotOutcome::refused); });
  }

 private Q_SLOTS:
  void responded(uint response, const QVariantMap& results) {
    constexpr uint success = 0;
    const QString file = results.value(QStringLiteral("uri")).toString();
    finish(response == success && !file.isEmpty() ? ScreenshotOutcome::taken : ScreenshotOutcome::refused,
           file);
  }

 private:
  QString requestPath() const {
    const QString sender = bus_.baseService().mid(1).replace('.', '_');
    return QStringLiteral("%1/request/%2/%3").arg(portalPath, sender, token_);
  }

  void finish(ScreenshotOutcome outcome, const QString& file = {}) {
    if (const auto reply = std::exchange(reply_, nullptr)) {
      deleteLater();
      reply(outcome, file);
    }
  }

  QDBusConnection bus_;
  ScreenshotReply reply_;
  const QString token_;
};

void askForScreenshot(const QDBusConnection& bus, QObject& owner, ScreenshotReply reply) {
  if (!bus.isConnected()) {
    // A call over a closed connection would never be answered.
    QMetaObject::invokeMethod(
        &owner, [reply = std::move(reply)] { reply(ScreenshotOutcome::noPortal, {}); }, Qt::QueuedConnection);
    return;
  }
  auto* const request = new ScreenshotRequest(bus, owner, std::move(reply));
  request->send();
}

}  // namespace quillmar::ui

#include <screenshot_portal.moc>
