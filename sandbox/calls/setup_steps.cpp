#include "sandbox/calls/setup_steps.h"

#include <map>

#include "sandbox/world.h"

namespace quillmar::sandbox::calls {

const SetupGuide* setupGuide(std::string_view deviceType) {
  static const std::string server{dnsServer};
  static const std::map<std::string, SetupGuide, std::less<>> guides{
      {"playstation",
       {"PlayStation",
        {"On the PlayStation open Settings, then Network, then Settings, then Set Up Internet Connection.",
         "Highlight the network that you use, press the Options button and choose Advanced Settings.",
         "Set DNS Settings to Manual.", "Enter " + server + " as Primary DNS and leave Secondary DNS empty.",
         "Choose OK and wait until the connection test has ended."}}},
      {"xbox",
       {"Xbox",
        {"On the Xbox press the Xbox button and open Profile & system, then Settings.",
         "Choose General, then Network settings, then Advanced settings.",
         "Choose DNS settings, then Manual.",
         "Enter " + server + " as primary IPv4 DNS, and the same address as secondary IPv4 DNS.",
         "Press B to save and wait until the connection was checked."}}},
      {"nintendo",
       {"Nintendo Switch",
        {"On the HOME Menu open System Settings, then Internet, then Internet Settings.",
         "Choose the network that you use, then Change Settings.", "Set DNS Settings to Manual.",
         "Enter " + server + " as Primary DNS, and the same address as Secondary DNS.",
         "Choose Save, then OK, and test the connection."}}},
      {"smarttv",
       {"Smart TV",
        {"On the TV open Settings, then Network (on some TVs General, then Network).",
         "Choose the network that you use, then its status or advanced settings, then IP settings.",
         "Set DNS setting to manual.", "Enter " + server + " as DNS server.",
         "Save, and restart the TV if it says that it has no connection."}}},
      {"other",
       {"your device",
        {"Open the network settings of the device.",
         "Choose the network that you use and look for its DNS or IP settings, often under Advanced.",
         "Change DNS from automatic to manual.",
         "Enter " + server + " as the first DNS server and remove any other.",
         "Save, and reconnect the device to the network."}}},
  };
  const auto found = guides.find(deviceType);
  return found == guides.end() ? nullptr : &found->second;
}

}  // namespace quillmar::sandbox::calls
