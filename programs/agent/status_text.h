#pragma once

#include <string>

#include "foundation/date.h"
#include "programs/agent/options.h"
#include "programs/control/control_messages.h"

namespace quillmar::agent {

// Of a device that is a child's or may become one; the worker is nobody where the reply names none.
ExitStatus exitStatusOf(const control::ControlReply& reply);

// A few lines for people; times by this machine's clock.
std::string statusText(const control::ControlReply& reply, Date now);

}  // namespace quillmar::agent
