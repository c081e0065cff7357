#include "programs/agent/status_text.h"

#include <array>
#include <chrono>
#include <ctime>
#include <string_view>

#include "app/session/role_manager.h"
#include "child/recent_time.h"
#include "foundation/date_format.h"

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

std::string clockTime(Date time) {
  const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
  std::tm local{};
  localtime_r(&seconds, &local);
  std::array<char, 32> text{};
  return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M", &local)};
}

std::string connection(const DeviceStatus& device, Date now) {
  const std::string state = device.isConnectedToServer ? "Connected" : "Disconnected";
  const auto time = parseISO8601(device.lastCheckinTime.value_or(""));
  return time ? state + ", last check-in: " + recentInWords(*time, now).value_or(clockTime(*time)) : state;
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
  if (!reply.device) {
    return ExitStatus::failed;
  }
  const DeviceStatus& device = *reply.device;
  if (device.role == rawValue(DeviceRole::parent)) {
    return ExitStatus::parentsDevice;
  }
  if (!device.isEnrolled) {
    return ExitStatus::notEnrolled;
  }
  return reply.worker && device.isVPNConnected ? ExitStatus::done : ExitStatus::notProtected;
}

std::string statusText(const ControlReply& reply, Date now) {
  const DeviceStatus device = reply.device.value_or(DeviceStatus{});
  if (device.role == rawValue(DeviceRole::parent)) {
    return "This is a parent's device.\n";
  }
  if (!device.isEnrolled) {
    return "This device is not enrolled. To join a family: quillmar-agent enroll\n";
  }
  return row("Device", device.deviceID.value_or("")) + row("Protection", device.vpnStatus.value_or("")) +
         (device.warning && !device.isVPNConnected ? row("", *device.warning) : "") +
         (reply.worker ? row("Server", connection(device, now)) : "") +
         row("DoH Endpoint", device.dohEndpoint.value_or("")) + row("Kept up by", worker(reply));
}

}  // namespace quillmar::agent
