#pragma once

#include <sdbus-c++/sdbus-c++.h>

namespace quillmar::tunnel {

// Makes systemd-resolved forget the answers that it keeps, if it runs. Does not wait for it.
void flushSystemdResolved(sdbus::IConnection& bus);

}  // namespace quillmar::tunnel
