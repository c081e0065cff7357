#pragma once

#include <string>
#include <string_view>

#include "programs/doctor/report.h"

namespace quillmar::doctor {

// What became of a question for the name that only the tunnel program knows.
enum class Asked {
  tunnelAnswers,
  anotherAnswers,
  refused,  // by this machine
  silent,
  unreachable,  // no network leads there
};

// What a person without rights can see of the tunnel.
struct TunnelState {
  enum class Connection { unknown, absent, off, comingUp, on };
  // NetworkManager's Connectivity, by its numbers.
  enum class Network { unknown, none, portal, limited, full };

  Connection connection = Connection::unknown;
  std::string name = {};  // of the connection, for nmcli
  Network network = Network::unknown;
  Asked atTunnel = Asked::silent;   // at the tunnel's own address
  Asked elsewhere = Asked::silent;  // at an address where no server is
  Asked bySystem = Asked::silent;   // as any program asks
  // Whether a question that the tunnel has to pass on is answered.
  bool endpointAnswers = false;
};

// The connection of this type of VPN service, and the network below it, as NetworkManager knows them. Sends
// nothing.
TunnelState readTunnelConnection(const std::string& busAddress, const std::string& serviceType);

// Adds what becomes of questions. Each is for a name of no person's interest.
void askQuestions(TunnelState& state);

TunnelFindings judge(const TunnelState& state);

}  // namespace quillmar::doctor
