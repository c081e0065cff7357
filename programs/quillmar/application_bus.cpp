#include "programs/quillmar/application_bus.h"

#include <QDBusConnection>
#include <utility>

namespace quillmar {

ApplicationBus::ApplicationBus(ShowWindow show) : adaptor_(this, std::move(show)) {
  auto bus = QDBusConnection::sessionBus();
  bus.registerObject("/live/quillmar/Quillmar", this);
  bus.registerService("live.quillmar.Quillmar");
}

void ApplicationAdaptor::show(const QVariantMap& platformData) {
  show_(platformData.value("activation-token").toString().toStdString());
}

}  // namespace quillmar
