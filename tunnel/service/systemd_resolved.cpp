#include "tunnel/service/systemd_resolved.h"

namespace quillmar::tunnel {

void flushSystemdResolved(sdbus::IConnection& bus) {
  sdbus::createProxy(bus, "org.freedesktop.resolve1", "/org/freedesktop/resolve1")
      ->callMethod("FlushCaches")
      .onInterface("org.freedesktop.resolve1.Manager")
      .dontExpectReply();
}

}  // namespace quillmar::tunnel
