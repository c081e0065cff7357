#pragma once

#include <string>

#include "foundation/date.h"
#include "programs/agent/options.h"
#include "programs/control/control_messages.h"

namespace quillmar::agent {

// The exit status that a reply means. A reply without a device is a failure.
ExitStatus exitStatusOf(const control::ControlReply& reply);

// The status as a few lines of text, in the local time zone.
std::string statusText(const control::ControlReply& reply, Date now);

}  // namespace quillmar::agent
