#include "tunnel/service/service.h"

#include <algorithm>
#include <utility>
#include <variant>

#include "tunnel/link/constants.h"
#include "tunnel/link/redirection.h"
#include "tunnel/network/endpoint.h"
#include "tunnel/service/systemd_resolved.h"

namespace quillmar::tunnel {

Service::Service(boost::asio::io_context& context, Machine machine, Take take, Tell tell)
    : context_(context),
      machine_(machine),
      take_(std::move(take)),
      tell_(std::move(tell)),
      bus_(context),
      plugin_(bus_.connection(), {.connect = [this](const auto& settings) { connect(settings); },
                                  .disconnect = [this] { disconnect(); }}),
      manager_(bus_.connection(),
               {.came = [this] { managerCame(); },
                .went = [this] { tell_("NetworkManager went away."); },
                .changed = [this] { activateWherePossible(); },
                .profileUpdated = [this](const auto& profile) { profileUpdated(profile); }}),
      rules_(context, [this](RulesetChange change) { rulesetChanged(change); }) {
  if (!rules_.works()) {
    tell_("This machine does not tell when its rules change: they are not put back.");
  }
  bus_.connection().requestName(serviceName);
  tell_("Has the name " + std::string(serviceName) + ".");
  manager_.begin();
}

void Service::run() {
  for (bus_.process(); context_.run_one() > 0; bus_.process()) {
  }
}

// NetworkManager may call this while protection is on, if it was restarted.
void Service::connect(const ConnectionSettings& settings) {
  shallActivate_ = false;
  const auto profile = profileFrom(settings);
  const auto endpoint = parseEndpoint(profile && profile->endpoint ? *profile->endpoint : "");
  if (!endpoint) {
    tell_("The connection has no https URL as its dohEndpoint.");
    throw VpnPlugin::refusal("The connection has no https URL as its dohEndpoint.");
  }
  plugin_.announce(VpnPlugin::State::starting);
  if (const auto problem = protect(); !problem.empty()) {
    tell_("Can't protect this machine: " + problem + '.');
    lift();
    plugin_.announceFailure();
    throw VpnPlugin::refusal(problem);
  }
  profile_ = profile->uuid;
  if (endpoint_ != *profile->endpoint) {
    ask(*profile->endpoint, endpoint->authority);
  }
  // Its answers from before may be of names that are blocked now. It drops them by itself only if
  // NetworkManager takes away the server that gave them.
  flushSystemdResolved(bus_.connection());
  plugin_.announceConfiguration(machine_.hasIp6);
  plugin_.announce(VpnPlugin::State::started);
  tell_("Protects this machine.");
}

std::string Service::protect() {
  if (device_) {
    return {};
  }
  auto device = openTunDevice(deviceName);
  if (const auto* problem = std::get_if<std::string>(&device)) {
    return *problem;
  }
  device_ = std::get<TunDevice>(std::move(device));
  return putRedirection(machine_.passes);
}

void Service::ask(const std::string& endpoint, const std::string& authority) {
  endpoint_ = endpoint;
  take_(endpoint);
  tell_("Asks " + authority + '.');
}

void Service::lift() {
  // The device is removed last, since without it the rules would refuse DNS.
  if (const auto problem = liftRedirection(); !problem.empty()) {
    tell_("The rules can't be lifted: " + problem + '.');
  }
  device_.reset();
  endpoint_.clear();
  take_(endpoint_);
  profile_.clear();
}

void Service::disconnect() {
  shallActivate_ = false;
  plugin_.stopSilently();
  if (device_) {
    lift();
    tell_("Protects no more, as NetworkManager wants it.");
  }
}

void Service::end() { lift(); }

void Service::rulesetChanged(RulesetChange change) {
  if (!device_) {
    return;
  }
  if (change == RulesetChange::released) {
    plugin_.announce(VpnPlugin::State::stopped);
    lift();
    return tell_("Protects no more: it was released.");
  }
  const auto problem = putRedirection(machine_.passes);
  tell_(problem.empty() ? "Another program changed the rules; they are put back."
                        : "Another program changed the rules, and they can't be put back: " + problem + '.');
}

void Service::managerCame() {
  tell_("NetworkManager is there.");
  shallActivate_ = true;
  activateWherePossible();
}

// NetworkManager does not activate a VPN by itself. Waits for a link to the outside.
void Service::activateWherePossible() {
  if (!shallActivate_) {
    return;
  }
  const auto profiles = manager_.profiles();
  if (!profiles) {
    return;
  }
  const auto profile = std::ranges::find_if(*profiles, &Profile::isEnabled);
  if (profile == profiles->end()) {
    // A NetworkManager that is starting may not have read them yet.
    if (manager_.hasStarted()) {
      shallActivate_ = false;
      // An earlier run may have left rules that are no longer wanted.
      lift();
      tell_("No connection is to be protected.");
    }
    return;
  }
  if (!manager_.isOnline()) {
    return;
  }
  if (const auto problem = manager_.activate(*profile); !problem.empty()) {
    tell_("NetworkManager does not activate the connection: " + problem);
  } else {
    shallActivate_ = false;
  }
}

void Service::profileUpdated(const Profile& profile) {
  if (!device_ || profile.uuid != profile_ || profile.endpoint == endpoint_) {
    return;
  }
  const auto endpoint = parseEndpoint(profile.endpoint.value_or(""));
  if (!endpoint) {
    return tell_("The connection has no https URL as its dohEndpoint any more: the one before is kept.");
  }
  ask(*profile.endpoint, endpoint->authority);
}

NameServers Service::nameServers() {
  if (auto servers = manager_.nameServers(); !servers.empty()) {
    lastServers_ = std::move(servers);
  }
  return lastServers_;
}

}  // namespace quillmar::tunnel
