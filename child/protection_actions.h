#pragma once

#include "app/session/environment.h"

namespace quillmar {

// Asks anew for the whole configuration, as a person's own wish.
void enableProtection(Environment& environment);
// Starts the tunnel as it is configured.
void reconnectTunnel(Environment& environment);
// Checks in and looks after the tunnel now, beside the regular times.
void forceSync(Environment& environment);
// Local only: the service is not told and the tunnel stays.
void resetEnrollment(Environment& environment);

}  // namespace quillmar
