#pragma once

#include <sys/types.h>

#include <string>

namespace quillmar::tunnel {

// The kernel's rules that turn this machine's DNS, and what it routes, to the tunnel's address. They outlive
// this program: while nobody answers there, DNS is refused rather than let out. Each of these ends whole or
// changes nothing, and says what the problem is, if there is one.
// What this user's programs send by themselves passes.
std::string putRedirection(uid_t passes);
std::string liftRedirection();
// Lifts it so that a service that runs takes it as the end of its work, not as somebody's mistake.
std::string releaseRedirection();

inline constexpr const char* redirectionTable = "quillmar_tunnel";
// Comes and goes with a release; never stays.
inline constexpr const char* releaseTable = "quillmar_tunnel_release";

}  // namespace quillmar::tunnel
