#pragma once

#include <sys/types.h>

#include <string>

namespace quillmar::tunnel {

// The kernel's rules that redirect DNS of this machine, and DNS that it routes for others, to the tunnel's
// address. They stay when this program ends: DNS is then refused, and never sent unprotected.
//
// Each function takes effect completely or not at all. It returns the problem, or an empty text.
//
// Packets of the user `passes` are not redirected.
std::string putRedirection(uid_t passes);
std::string liftRedirection();
// Removes the rules and tells a running service to end protection. Without that sign the service would
// restore them.
std::string releaseRedirection();

inline constexpr const char* redirectionTable = "quillmar_tunnel";
// Created and deleted in one transaction with the removal of the rules. It is the sign of a release.
inline constexpr const char* releaseTable = "quillmar_tunnel_release";

}  // namespace quillmar::tunnel
