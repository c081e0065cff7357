#pragma once

#include "app/environment.h"

namespace quillmar {

// Asks anew for the whole configuration, as a person's own wish.
void enableProtection(Environment& environment);
// Starts the tunnel as it is configured.
void reconnectTunnel(Environment& environment);

}  // namespace quillmar
