#pragma once

namespace quillmar::tunnel {

inline constexpr const char* deviceName = "quillmar0";

// Addresses that no network uses (RFC 2544, RFC 4193). The tunnel's device has them, and the listener is
// bound to them.
inline constexpr const char* tunnelAddress4 = "198.18.53.53";
inline constexpr const char* tunnelAddress6 = "fd71:7569:6c6c:53::53";

}  // namespace quillmar::tunnel
