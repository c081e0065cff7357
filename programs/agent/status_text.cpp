#include "programs/agent/status_text.h"

#include <string_view>

#include "app/role_manager.h"
#include "child/child_home_view.h"

namespace quillmar::agent {
namespace {

using control::ControlReply;
using control::DeviceStatus;

constexpr std::size_t nameWidth = 13;

std::string row(std::string_view name, std::string_view value) {
  std::string line(name);
  line.resize(nameWidth, ' ');
  return line.append(value) += '\n';
}

std::string connection(const DeviceStatus& device, Date now, const DateStyles& styles) {
  const std::string state = device.isConnectedToServer ? "Connected" : "Disconnected";
  const auto time = parseISO8601(device.lastCheckinTime.value_or(""));
  return time ? state + ", last check-in: " + timeInWords(*time, now, styles) : state;
}

std::string worker(const ControlReply& reply) {
  const auto known = fromRawValue<control::Worker>(reply.worker.value_or(""));
  if (!known) {
    return reply.error.value_or("nobody; start it by 'quillmar-agent run'");
  }
  return (*known == control::Worker::agent ? "quillmar-agent" : "the Quillmar window") +
         (reply.processID ? " (process " + std::to_string(*reply.processID) + ')' : std::string());
}

}  // namespace

ExitStatus exitStatusOf(const ControlReply& reply) {
  const DeviceStatus device = reply.device.value_or(DeviceStatus{});
  if (device.role == rawValue(DeviceRole::parent)) {
    return ExitStatus::parentsDevice;
  }
  if (!device.isEnrolled) {
    return ExitStatus::notEnrolled;
  }
  return reply.worker && device.isVPNConnected ? ExitStatus::done : ExitStatus::notProtected;
}

std::string statusText(const ControlReply& reply, Date now, const DateStyles& styles) {
  const DeviceStatus device = reply.device.value_or(DeviceStatus{});
  if (device.role == rawValue(DeviceRole::parent)) {
    return "This is a parent's device.\n";
  }
  if (!device.isEnrolled) {
    return "This device is not enrolled. To join a family: quillmar-agent enroll\n";
  }
  return row("Device", device.deviceID.value_or("")) + row("Protection", device.vpnStatus.value_or("")) +
         (device.warning ? row("", *device.warning) : "") +
         (reply.worker ? row("Server", connection(device, now, styles)) : "") +
         row("DoH Endpoint", device.dohEndpoint.value_or("")) + row("Kept up by", worker(reply));
}

}  // namespace quillmar::agent
