#pragma once

#include "platform/platform.h"

namespace quillmar::control {

// The ports of a machine whose members have the ports' names.
template <class Machine>
Platform portsOf(Machine& machine) {
  return {.settings = machine.settings,
          .http = machine.http,
          .dispatch = machine.dispatch,
          .log = machine.log,
          .tunnel = *machine.tunnel,
          .secureItems = machine.secureItems,
          .biometrics = machine.biometrics,
          .deviceInfo = machine.deviceInfo,
          .clipboard = machine.clipboard,
          .haptics = machine.haptics,
          .windowStyle = machine.windowStyle,
          .qrEncoder = machine.qrEncoder,
          .qrReader = machine.qrReader};
}

}  // namespace quillmar::control
