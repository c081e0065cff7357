#pragma once

#include <string>
#include <string_view>

#include "programs/doctor/report.h"

namespace quillmar::doctor {

// The result of a query for the name that only the tunnel program answers.
enum class Asked {
  tunnelAnswers,
  anotherAnswers,
  refused,  // by this machine
  silent,
  unreachable,  // no network leads there
};

// The state of the tunnel as far as an unprivileged user can see it.
struct TunnelState {
  enum class Connection { unknown, absent, off, comingUp, on };
  // NetworkManager's NMConnectivityState, in its order.
  enum class Network { unknown, none, portal, limited, full };

  Connection connection = Connection::unknown;
  std::string name = {};  // of the connection, for nmcli
  Network network = Network::unknown;
  Asked atTunnel = Asked::silent;   // asked at the tunnel's address
  Asked elsewhere = Asked::silent;  // asked at an address without a server
  Asked bySystem = Asked::silent;   // asked through the system's resolver
  // Whether a query that the tunnel forwards is answered.
  bool endpointAnswers = false;
};

// Reads the state of the connection of this VPN service type and of the network from NetworkManager. Sends no
// DNS query.
TunnelState readTunnelConnection(const std::string& busAddress, const std::string& serviceType);

// Adds the results of DNS queries. The names reveal nothing about a person.
void askQuestions(TunnelState& state);

TunnelFindings judge(const TunnelState& state);

}  // namespace quillmar::doctor
