#pragma once

#include <string>

#include "foundation/date_format.h"
#include "programs/agent/options.h"
#include "programs/control/control_messages.h"

namespace quillmar::agent {

// Of a device that is a child's or may become one; the worker is nobody where the reply names none.
ExitStatus exitStatusOf(const control::ControlReply& reply);

// A few lines for people.
std::string statusText(const control::ControlReply& reply, Date now, const DateStyles& styles);

}  // namespace quillmar::agent
