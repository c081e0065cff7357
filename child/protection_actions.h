#pragma once

#include "app/session/environment.h"

namespace quillmar {

// Configures the tunnel from scratch, at the user's request.
void enableProtection(Environment& environment);
// Starts the tunnel without changing its configuration.
void reconnectTunnel(Environment& environment);
// Checks in and checks the tunnel now, in addition to the timers.
void forceSync(Environment& environment);
// Local only: the service is not told and the tunnel is kept.
void resetEnrollment(Environment& environment);

}  // namespace quillmar
