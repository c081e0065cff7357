#include "programs/agent/status_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <ctime>

#include "foundation/date_format.h"
#include "testing/scoped_environment.h"
#include "testing/virtual_dispatch.h"

namespace quillmar::agent {
namespace {

using namespace std::chrono_literals;
using control::ControlReply;
using control::DeviceStatus;
using testing::HasSubstr;
using testing::Not;

const Date now = VirtualDispatch::defaultStart;

DeviceStatus protectedDevice() {
  return {.role = "child",
          .isEnrolled = true,
          .deviceID = "d-1",
          .dohEndpoint = "https://dns.example/d1",
          .dohBaseUrl = {},
          .isConnectedToServer = true,
          .lastCheckinTime = formatISO8601(now - 2min),
          .isVPNConfigured = true,
          .isVPNConnected = true,
          .vpnStatus = "DNS Protection Active",
          .warning = {}};
}

ControlReply from(const DeviceStatus& device, std::optional<std::string> worker = "agent") {
  return {.worker = std::move(worker), .processID = 77, .error = {}, .device = device};
}

std::string textOf(const ControlReply& reply) { return statusText(reply, now); }

TEST(AgentStatus, describes_a_protected_device) {
  const auto reply = from(protectedDevice());
  EXPECT_EQ(exitStatusOf(reply), ExitStatus::done);
  EXPECT_EQ(textOf(reply),
            "Device       d-1\n"
            "Protection   DNS Protection Active\n"
            "Server       Connected, last check-in: 2 minutes ago\n"
            "DoH Endpoint https://dns.example/d1\n"
            "Kept up by   quillmar-agent (process 77)\n");
}

TEST(AgentStatus, states_an_old_checkin_in_local_time) {
  const ScopedEnvironment zone("TZ", "UTC-2");
  ::tzset();
  auto device = protectedDevice();
  device.lastCheckinTime = "2016-10-01T03:04:05Z";
  EXPECT_THAT(textOf(from(device)), HasSubstr("last check-in: 2016-10-01 05:04\n"));
}

TEST(AgentStatus, names_the_window_that_does_the_work) {
  EXPECT_THAT(textOf(from(protectedDevice(), "window")),
              HasSubstr("Kept up by   the Quillmar window (process 77)\n"));
}

TEST(AgentStatus, describes_a_tunnel_that_is_down) {
  auto device = protectedDevice();
  device.isVPNConnected = false;
  device.vpnStatus = "Disconnected";
  device.warning = "VPN disconnected. Reconnecting...";
  EXPECT_EQ(exitStatusOf(from(device)), ExitStatus::notProtected);
  EXPECT_THAT(textOf(from(device)),
              HasSubstr("Protection   Disconnected\n             VPN disconnected. Reconnecting...\n"));
}

TEST(AgentStatus, leaves_out_a_warning_from_before_the_tunnel_came_up) {
  auto device = protectedDevice();
  device.warning = "Connecting to VPN...";
  EXPECT_THAT(textOf(from(device)), Not(HasSubstr("Connecting to VPN...")));
}

TEST(AgentStatus, describes_a_device_without_a_worker) {
  const auto reply = from(protectedDevice(), std::nullopt);
  EXPECT_EQ(exitStatusOf(reply), ExitStatus::notProtected);
  EXPECT_THAT(textOf(reply), HasSubstr("Kept up by   nobody; start it by 'quillmar-agent run'\n"));
  EXPECT_THAT(textOf(reply), Not(HasSubstr("Server")));
}

TEST(AgentStatus, describes_devices_that_are_not_an_enrolled_childs) {
  EXPECT_EQ(exitStatusOf(from({.role = "parent"})), ExitStatus::parentsDevice);
  EXPECT_EQ(textOf(from({.role = "parent"})), "This is a parent's device.\n");
  for (const auto* role : {"child", "unset"}) {
    EXPECT_EQ(exitStatusOf(from({.role = role})), ExitStatus::notEnrolled);
    EXPECT_EQ(textOf(from({.role = role})),
              "This device is not enrolled. To join a family: quillmar-agent enroll\n");
  }
}

}  // namespace
}  // namespace quillmar::agent
