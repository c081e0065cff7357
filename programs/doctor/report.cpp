#include "programs/doctor/report.h"

#include <algorithm>
#include <chrono>
#include <string_view>
#include <utility>

namespace quillmar::doctor {
namespace {

// The devices that need a part.
enum class Need { nobody, child, everybody };

struct Part {
  std::string_view name;
  Need need;
  Finding finding;
};

constexpr auto clockTolerance = std::chrono::minutes(5);

std::string count(long long number, const std::string& unit) {
  return std::to_string(number) + " " + unit + (number == 1 ? "" : "s");
}

// In the largest unit of which there are at least two, rounded down.
std::string spoken(Duration duration) {
  using namespace std::chrono;
  if (duration >= days(2)) {
    return count(duration_cast<days>(duration).count(), "day");
  }
  if (duration >= hours(2)) {
    return count(duration_cast<hours>(duration).count(), "hour");
  }
  return count(duration_cast<minutes>(duration).count(), "minute");
}

Finding judgeClock(const ServiceFinding& service) {
  if (!service.clockLead) {
    return {false, "could not be compared, since the service told no time."};
  }
  const Duration lead = *service.clockLead;
  const Duration difference = lead < Duration::zero() ? -lead : lead;
  if (difference <= clockTolerance) {
    return {true, "agrees with the service's."};
  }
  return {false, spoken(difference) + (lead < Duration::zero() ? " behind" : " ahead of") +
                     " the service's. Let it be set over the network: timedatectl set-ntp true"};
}

std::vector<Part> lookAtAll(Probes& probes) {
  const bool hasWindow = probes.areForWindow();
  std::vector<Part> parts{{"Data folder", Need::everybody, probes.dataFolder()}};
  if (hasWindow) {
    parts.push_back({"Keyring", Need::nobody, probes.keyring()});
  }
  parts.push_back({"NetworkManager", Need::child, probes.networkManager()});
  parts.push_back({"Tunnel program", Need::child, probes.tunnelProgram()});
  if (const auto tunnel = probes.tunnel()) {
    parts.push_back({"Tunnel", Need::child, tunnel->connection});
    parts.push_back({"Redirection of DNS", Need::child, tunnel->redirection});
    parts.push_back({"Lookup of names", Need::child, tunnel->nameLookup});
    parts.push_back({"Endpoint", Need::child, tunnel->endpoint});
    parts.push_back({"Network", Need::child, tunnel->network});
  }
  if (hasWindow) {
    parts.push_back({"Fingerprint reader", Need::nobody, probes.fingerprintReader()});
    parts.push_back({"Camera", Need::nobody, probes.camera()});
    parts.push_back({"Camera module", Need::nobody, probes.cameraModule()});
  }
  const ServiceFinding service = probes.service();
  parts.push_back({"Service", Need::everybody, service.answer});
  parts.push_back({"Clock", Need::everybody, judgeClock(service)});
  return parts;
}

bool isNeeded(const Part& part, DeviceRole role) {
  return part.need == Need::everybody || (part.need == Need::child && role == DeviceRole::child);
}

bool isLacking(const Part& part, DeviceRole role) { return isNeeded(part, role) && !part.finding.works; }

std::string lineOf(const Part& part, DeviceRole role) {
  std::string line = part.finding.works ? "works     " : isNeeded(part, role) ? "MISSING   " : "optional  ";
  return line.append(part.name).append(": ").append(part.finding.words);
}

std::string conclusion(bool isFit, DeviceRole role) {
  const std::string verdict = isFit ? "This machine has what " : "This machine lacks something that ";
  const std::string who = role == DeviceRole::child ? "a child's device needs." : "a parent's device needs.";
  const std::string hint =
      role == DeviceRole::unset
          ? " No role is chosen yet; a child's device needs NetworkManager and the tunnel program as well."
          : "";
  return verdict + who + hint;
}

}  // namespace

Report examine(Probes& probes, DeviceRole role) {
  Report report{.lines = {}, .isFit = true};
  for (const Part& part : lookAtAll(probes)) {
    report.lines.push_back(lineOf(part, role));
    report.isFit = report.isFit && !isLacking(part, role);
  }
  report.lines.push_back(conclusion(report.isFit, role));
  return report;
}

}  // namespace quillmar::doctor
