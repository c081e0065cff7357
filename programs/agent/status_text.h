#pragma once

#include <string>

#include "foundation/date.h"
#include "programs/agent/options.h"
#include "programs/control/control_messages.h"

namespace quillmar::agent {

// The worker is nobody where the reply names none. A reply without a device is a failure.
ExitStatus exitStatusOf(const control::ControlReply& reply);

// A few lines for people; times by this machine's clock.
std::string statusText(const control::ControlReply& reply, Date now);

}  // namespace quillmar::agent
