#pragma once

#include <netinet/in.h>

#include <cstdint>

namespace quillmar::sandbox::test {

// A socket of this type (SOCK_STREAM or SOCK_DGRAM) connected to a port of 127.0.0.1; -1 if nothing listens
// there. A read times out after half a minute.
int connectedSocket(int type, int port);

// A TCP port that was free a moment ago.
std::uint16_t freePort(std::uint32_t at = INADDR_LOOPBACK);

}  // namespace quillmar::sandbox::test
