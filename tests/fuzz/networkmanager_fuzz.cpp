// The input makes a connection of NetworkManager, of values of any type, which both programs read. Each line
// is "SECTION KEY TYPE VALUE".

#include <map>
#include <string>
#include <vector>

#include "foundation/text.h"
#include "platform/linux/networkmanager_profile.h"
#include "tests/fuzz/fuzz.h"
#include "tunnel/service/network_manager.h"

using namespace quillmar;
using fuzz::require;

namespace {

constexpr const char* serviceType = tunnel::serviceName;

std::string word(std::string_view& text, char end) {
  const std::string taken(text.substr(0, text.find(end)));
  text.remove_prefix(std::min(taken.size() + 1, text.size()));
  return taken;
}

sdbus::Variant valueOf(const std::string& type, const std::string& text) {
  if (type == "b") {
    return text == "true";
  }
  if (type == "i") {
    return static_cast<std::int32_t>(text.size());
  }
  if (type == "s") {
    return text;
  }
  if (type == "as") {
    return std::vector<std::string>{text};
  }
  // A map as text: "KEY=VALUE".
  const auto equals = std::min(text.find('='), text.size());
  return std::map<std::string, std::string>{
      {text.substr(0, equals), equals < text.size() ? text.substr(equals + 1) : ""}};
}

// A message bus carries no other text.
bool isOfABus(std::string_view text) {
  return text.find('\0') == std::string_view::npos && isValidUtf8(text);
}

NetworkManagerSettings settingsIn(std::string_view text) {
  NetworkManagerSettings settings;
  while (!text.empty()) {
    std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    const auto section = word(line, ' ');
    const auto key = word(line, ' ');
    const auto type = word(line, ' ');
    settings[section][key] = valueOf(type, std::string(line));
  }
  return settings;
}

void checkApplications(NetworkManagerSettings settings) {
  try {
    const auto profile = profileFrom(settings, serviceType);
    if (!profile) {
      return;
    }
    require(profile->protocol.providerBundleIdentifier == serviceType, "another type is not taken");
    write(*profile, settings);
    require(profileFrom(settings, serviceType) == profile, "a profile is read as written");
  } catch (const sdbus::Error&) {
    // As its header says, for a value of another type.
  }
}

void checkTunnels(const NetworkManagerSettings& settings) {
  const auto profile = tunnel::profileFrom(settings);
  if (!profile) {
    return;
  }
  const auto& vpn = settings.at("vpn");
  require(vpn.at("service-type").get<std::string>() == serviceType, "another type is not taken");
  const auto data = vpn.find("data");
  require(!profile->endpoint || data != vpn.end(), "an endpoint comes from the data");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto text = fuzz::textOf(data, size);
  if (!isOfABus(text)) {
    return 0;
  }
  const auto settings = settingsIn(text);
  checkTunnels(settings);
  checkApplications(settings);
  return 0;
}
