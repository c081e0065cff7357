#include "programs/doctor/tunnel_state.h"

#include <netdb.h>
#include <netinet/in.h>
#include <sdbus-c++/sdbus-c++.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "platform/linux/bus_names.h"
#include "platform/linux/networkmanager_profile.h"
#include "programs/doctor/bus_question.h"
#include "programs/doctor/dns_question.h"

namespace quillmar::doctor {
namespace {

using namespace std::chrono_literals;
using Connection = TunnelState::Connection;
using Network = TunnelState::Network;
using Path = sdbus::ObjectPath;

constexpr const char* settingsPath = "/org/freedesktop/NetworkManager/Settings";
constexpr const char* settingsInterface = "org.freedesktop.NetworkManager.Settings";
constexpr const char* connectionInterface = "org.freedesktop.NetworkManager.Settings.Connection";
constexpr const char* activeInterface = "org.freedesktop.NetworkManager.Connection.Active";

// Only the tunnel program answers for this name, with its own address.
constexpr std::string_view tunnelName = "tunnel.quillmar.live";
const std::string tunnelAddress = "198.18.53.53";
// An address without a server (RFC 5737). A reply from it means that the query was redirected.
const std::string nobodysAddress = "192.0.2.1";
// The tunnel has no local answer for this name.
constexpr std::string_view outerName = "quillmar.live";

constexpr auto localTimeout = 1s;
// Longer than the tunnel's own timeout of four seconds.
constexpr auto endpointTimeout = 5s;

template <class T>
T property(sdbus::IConnection& bus, const std::string& path, const std::string& interface,
           const std::string& name) {
  return sdbus::createProxy(bus, networkManager, path)->getProperty(name).onInterface(interface).get<T>();
}

std::optional<NetworkManagerProfile> findProfile(sdbus::IConnection& bus, const std::string& serviceType) {
  std::vector<Path> paths;
  sdbus::createProxy(bus, networkManager, settingsPath)
      ->callMethod("ListConnections")
      .onInterface(settingsInterface)
      .storeResultsTo(paths);
  for (const Path& path : paths) {
    try {
      NetworkManagerSettings settings;
      sdbus::createProxy(bus, networkManager, path)
          ->callMethod("GetSettings")
          .onInterface(connectionInterface)
          .storeResultsTo(settings);
      if (auto profile = profileFrom(settings, serviceType)) {
        return profile;
      }
    } catch (const sdbus::Error&) {
      // The connection has just been removed, or belongs to another user.
    }
  }
  return std::nullopt;
}

Connection stateOf(const NetworkManagerProfile& profile, sdbus::IConnection& bus) {
  constexpr std::uint32_t activating = 1;
  constexpr std::uint32_t activated = 2;
  for (const Path& path :
       property<std::vector<Path>>(bus, networkManagerPath, networkManager, "ActiveConnections")) {
    if (property<std::string>(bus, path, activeInterface, "Uuid") != profile.uuid) {
      continue;
    }
    const auto state = property<std::uint32_t>(bus, path, activeInterface, "State");
    if (state == activating || state == activated) {
      return state == activated ? Connection::on : Connection::comingUp;
    }
  }
  return Connection::off;
}

Asked judgeReply(const DnsReply& reply) {
  if (const auto* message = std::get_if<std::string>(&reply)) {
    return endsWithAddress(*message, tunnelAddress) ? Asked::tunnelAnswers : Asked::anotherAnswers;
  }
  switch (std::get<int>(reply)) {
    case ECONNREFUSED:
    case EPERM:
      return Asked::refused;
    case ENETUNREACH:
      return Asked::unreachable;
    default:
      return Asked::silent;
  }
}

struct AddressesFree {
  void operator()(addrinfo* addresses) const { freeaddrinfo(addresses); }
};

Asked askSystem() {
  addrinfo hints{};
  hints.ai_family = AF_INET;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  const int error = getaddrinfo(std::string(tunnelName).c_str(), nullptr, &hints, &found);
  const std::unique_ptr<addrinfo, AddressesFree> addresses(found);
  if (error != 0) {
    return error == EAI_NONAME || error == EAI_NODATA ? Asked::anotherAnswers : Asked::silent;
  }
  const auto& address = reinterpret_cast<const sockaddr_in*>(addresses->ai_addr)->sin_addr;
  const std::string_view bytes(reinterpret_cast<const char*>(&address), sizeof address);
  return endsWithAddress(bytes, tunnelAddress) ? Asked::tunnelAnswers : Asked::anotherAnswers;
}

// The first row that applies is used. "{}" stands for the connection's name.
struct Row {
  bool (*applies)(const TunnelState&);
  bool works;
  std::string_view words;
};

bool always(const TunnelState&) { return true; }
bool isWanted(const TunnelState& state) { return state.connection == Connection::on; }
bool isServing(const TunnelState& state) { return state.atTunnel == Asked::tunnelAnswers; }

constexpr auto connectionRows = std::to_array<Row>({
    {[](const TunnelState& state) { return state.connection == Connection::unknown; }, false,
     "can't be looked at, since NetworkManager does not answer."},
    {[](const TunnelState& state) { return state.connection == Connection::absent; }, false,
     "is not set up, although this device is enrolled. Open Quillmar, or start quillmar-agent, and allow "
     "it."},
    {[](const TunnelState& state) { return state.connection == Connection::off; }, false,
     "is switched off. Switch it on: nmcli connection up '{}'"},
    {[](const TunnelState& state) { return state.connection == Connection::comingUp; }, false,
     "is being switched on. Look again in a minute."},
    {isServing, true, "is switched on, and answers."},
    {always, false,
     "is switched on, but its program does not answer, so that no name is found. Start it again: systemctl "
     "restart quillmar-tunnel"},
});

constexpr auto redirectionRows = std::to_array<Row>({
    {[](const TunnelState& state) { return state.elsewhere == Asked::tunnelAnswers; }, true,
     "stands: the tunnel answers, whatever server is asked."},
    {[](const TunnelState& state) { return state.elsewhere == Asked::unreachable; }, false,
     "can't be tried while no network leads out."},
    {[](const TunnelState& state) {
       return state.elsewhere == Asked::refused && !isServing(state) && isWanted(state);
     },
     true, "stands, and refuses every question until the tunnel's program is back."},
    {[](const TunnelState& state) { return state.elsewhere == Asked::refused && !isServing(state); }, false,
     "still stands and refuses every question, although the tunnel is off. Lift it: quillmar-tunnel release"},
    {[](const TunnelState& state) { return !isWanted(state) && !isServing(state); }, false,
     "does not stand while the tunnel is off: programs may ask any server."},
    {always, false,
     "is missing: programs can ask other servers than the tunnel. Put it back: systemctl restart "
     "quillmar-tunnel"},
});

constexpr auto lookupRows = std::to_array<Row>({
    {[](const TunnelState& state) { return state.bySystem == Asked::tunnelAnswers; }, true,
     "goes through the tunnel."},
    {[](const TunnelState& state) { return !isServing(state) && state.bySystem == Asked::anotherAnswers; },
     false, "goes past the tunnel, which does not answer."},
    {[](const TunnelState& state) { return state.bySystem == Asked::anotherAnswers; }, false,
     "goes past the tunnel: another resolver of this computer asks on its own way. /etc/resolv.conf says "
     "which; have it ask in the ordinary way, not over TLS or HTTPS."},
    {isServing, false,
     "fails, although the tunnel answers. /etc/resolv.conf says who is asked; have that ask in the ordinary "
     "way, not over TLS or HTTPS."},
    {always, false, "fails."},
});

constexpr auto endpointRows = std::to_array<Row>({
    {[](const TunnelState& state) { return !isServing(state); }, false,
     "can't be asked, since the tunnel does not answer."},
    {[](const TunnelState& state) { return state.endpointAnswers; }, true, "answers."},
    {always, false,
     "does not answer, so that no name is found. The reason is in the tunnel's log: journalctl -u "
     "quillmar-tunnel"},
});

constexpr auto networkRows = std::to_array<Row>({
    {[](const TunnelState& state) { return isServing(state) && state.endpointAnswers; }, true,
     "leads to the family's endpoint."},
    {[](const TunnelState& state) { return state.network == Network::unknown; }, false,
     "is unknown to NetworkManager."},
    {[](const TunnelState& state) { return state.network == Network::none; }, false,
     "none is connected. Connect one."},
    {[](const TunnelState& state) { return state.network == Network::portal; }, false,
     "wants a sign-in, and its page is not found while the tunnel is on. Take another network, or have an "
     "administrator end Quillmar, switch the tunnel off, sign in, and start Quillmar again."},
    {[](const TunnelState& state) { return state.network == Network::limited; }, false,
     "leads nowhere, or wants a sign-in, whose page is not found while the tunnel is on. Take another "
     "network, or have an administrator end Quillmar, switch the tunnel off, sign in, and start Quillmar "
     "again."},
    {always, true, "leads out."},
});

Finding findIn(std::span<const Row> rows, const TunnelState& state) {
  const auto row = std::ranges::find_if(rows, [&](const Row& each) { return each.applies(state); });
  std::string words(row->words);
  if (const auto place = words.find("{}"); place != std::string::npos) {
    words.replace(place, 2, state.name);
  }
  return {row->works, std::move(words)};
}

}  // namespace

TunnelState readTunnelConnection(const std::string& busAddress, const std::string& serviceType) {
  TunnelState state;
  ask(busAddress, [&](sdbus::IConnection& bus) {
    constexpr auto last = static_cast<std::uint32_t>(Network::full);
    const auto network = property<std::uint32_t>(bus, networkManagerPath, networkManager, "Connectivity");
    state.network = network <= last ? static_cast<Network>(network) : Network::unknown;
    const auto profile = findProfile(bus, serviceType);
    state.name = profile ? profile->name : "";
    state.connection = profile ? stateOf(*profile, bus) : Connection::absent;
  });
  return state;
}

void askQuestions(TunnelState& state) {
  state.atTunnel = judgeReply(askServer(tunnelAddress, tunnelName, localTimeout));
  state.elsewhere = judgeReply(askServer(nobodysAddress, tunnelName, localTimeout));
  state.bySystem = askSystem();
  state.endpointAnswers = state.atTunnel == Asked::tunnelAnswers &&
                          isLookedUp(askServer(tunnelAddress, outerName, endpointTimeout));
}

TunnelFindings judge(const TunnelState& state) {
  return {.connection = findIn(connectionRows, state),
          .redirection = findIn(redirectionRows, state),
          .nameLookup = findIn(lookupRows, state),
          .endpoint = findIn(endpointRows, state),
          .network = findIn(networkRows, state)};
}

}  // namespace quillmar::doctor
