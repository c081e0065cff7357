#pragma once

#include <span>

#include "sandbox/call.h"

namespace quillmar::sandbox {

// The permission that a call requires. Each of the last three includes `member`.
enum class Access {
  anyone,
  refresher,  // a token that is valid, or expired but still accepted for a refresh
  account,    // a valid token
  member,     // not disabled in its family
  devices,    // may manage devices
  policies,   // may manage policies
  primary,    // the primary parent
};

enum class Payload { none, body };

struct Route {
  std::string_view method;
  std::string_view pattern;  // {} stands for one segment
  Access access;
  Payload payload;
  CallFunction call;
};

// All routes of the service.
[[nodiscard]] std::span<const Route> routes();

// Finds the route, checks the caller, reads the body and runs the call. A call that is refused changes
// nothing.
[[nodiscard]] Answer answerTo(const Request& request, World& world);

}  // namespace quillmar::sandbox
