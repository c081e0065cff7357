#pragma once

#include <span>

#include "sandbox/call.h"

namespace quillmar::sandbox {

// What a caller has to be for a call. Each of the last three entails being a member.
enum class Access {
  anyone,
  refresher,  // has a token that is good for a refresh at least
  account,    // has a good token
  member,     // and is not disabled in its family
  devices,    // and may manage devices
  policies,   // and may manage policies
  primary,    // and is the primary parent
};

enum class Payload { none, body };

struct Route {
  std::string_view method;
  std::string_view pattern;  // {} stands for one segment
  Access access;
  Payload payload;
  CallFunction call;
};

// All that the service answers to.
[[nodiscard]] std::span<const Route> routes();

// Finds the request's route, judges the caller, reads the body and carries the call out: wholly, or without a
// trace if its answer is a refusal.
[[nodiscard]] Answer answerTo(const Request& request, World& world);

}  // namespace quillmar::sandbox
