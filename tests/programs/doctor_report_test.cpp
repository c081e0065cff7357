#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "programs/doctor/report.h"

namespace quillmar::doctor {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

// A machine whose findings the test sets.
class MadeUpProbes final : public Probes {
 public:
  bool areForWindow() const override { return hasWindow; }
  Finding dataFolder() override { return dataFolderFinding; }
  Finding keyring() override { return keyringFinding; }
  Finding networkManager() override { return networkManagerFinding; }
  Finding tunnelProgram() override { return tunnelProgramFinding; }
  std::optional<TunnelFindings> tunnel() override { return tunnelFindings; }
  Finding fingerprintReader() override { return fingerprintReaderFinding; }
  Finding camera() override { return cameraFinding; }
  Finding cameraModule() override { return cameraModuleFinding; }
  ServiceFinding service() override { return serviceFinding; }

  bool hasWindow = true;
  Finding dataFolderFinding{true, "can be written."};
  Finding keyringFinding{true, "keeps."};
  Finding networkManagerFinding{true, "runs."};
  Finding tunnelProgramFinding{true, "is there."};
  std::optional<TunnelFindings> tunnelFindings;
  Finding fingerprintReaderFinding{true, "reads."};
  Finding cameraFinding{true, "sees."};
  Finding cameraModuleFinding{true, "reads codes."};
  ServiceFinding serviceFinding{.answer = {true, "answers."}, .clockLead = 0s};
};

struct DoctorReport : testing::Test {
  bool isFit(DeviceRole role) { return examine(probes, role).isFit; }
  // The report's line about a part.
  std::string line(const std::string& part, DeviceRole role = DeviceRole::child) {
    for (const auto& line : examine(probes, role).lines) {
      if (line.find(" " + part + ": ") != std::string::npos) {
        return line;
      }
    }
    return {};
  }
  std::string clockLine(Duration lead) {
    probes.serviceFinding.clockLead = lead;
    return line("Clock");
  }

  MadeUpProbes probes;
};

TEST_F(DoctorReport, a_complete_machine_is_fit_and_has_a_line_for_each_part) {
  const auto report = examine(probes, DeviceRole::child);
  EXPECT_TRUE(report.isFit);
  EXPECT_THAT(report.lines,
              testing::ElementsAre("works     Data folder: can be written.", "works     Keyring: keeps.",
                                   "works     NetworkManager: runs.", "works     Tunnel program: is there.",
                                   "works     Fingerprint reader: reads.", "works     Camera: sees.",
                                   "works     Camera module: reads codes.", "works     Service: answers.",
                                   "works     Clock: agrees with the service's.",
                                   "This machine has what a child's device needs."));
}

TEST_F(DoctorReport, without_a_window_leaves_out_what_only_windows_use) {
  probes.hasWindow = false;
  for (const auto* part : {"Keyring", "Fingerprint reader", "Camera", "Camera module"}) {
    EXPECT_EQ(line(part), "") << part;
  }
  for (const auto* part : {"NetworkManager", "Tunnel program", "Service", "Clock"}) {
    EXPECT_NE(line(part), "") << part;
  }
}

TEST_F(DoctorReport, every_role_needs_a_data_folder) {
  probes.dataFolderFinding = {false, "is read-only."};
  for (const auto role : {DeviceRole::unset, DeviceRole::parent, DeviceRole::child}) {
    EXPECT_FALSE(isFit(role));
    EXPECT_EQ(line("Data folder", role), "MISSING   Data folder: is read-only.");
  }
}

TEST_F(DoctorReport, no_role_needs_a_keyring_reader_or_camera) {
  probes.keyringFinding = {false, "locked."};
  probes.fingerprintReaderFinding = {false, "none."};
  probes.cameraFinding = {false, "none."};
  probes.cameraModuleFinding = {false, "not installed."};
  for (const auto role : {DeviceRole::child, DeviceRole::parent, DeviceRole::unset}) {
    EXPECT_TRUE(isFit(role));
    EXPECT_EQ(line("Keyring", role), "optional  Keyring: locked.");
    EXPECT_EQ(line("Fingerprint reader", role), "optional  Fingerprint reader: none.");
    EXPECT_EQ(line("Camera", role), "optional  Camera: none.");
    EXPECT_EQ(line("Camera module", role), "optional  Camera module: not installed.");
  }
}

TEST_F(DoctorReport, only_a_childs_device_needs_networkmanager) {
  probes.networkManagerFinding = {false, "does not answer."};
  EXPECT_FALSE(isFit(DeviceRole::child));
  EXPECT_TRUE(isFit(DeviceRole::parent));
  EXPECT_TRUE(isFit(DeviceRole::unset));
  EXPECT_EQ(line("NetworkManager", DeviceRole::child), "MISSING   NetworkManager: does not answer.");
  EXPECT_EQ(line("NetworkManager", DeviceRole::parent), "optional  NetworkManager: does not answer.");
}

TEST_F(DoctorReport, only_a_childs_device_needs_the_tunnel_program) {
  probes.tunnelProgramFinding = {false, "none."};
  EXPECT_FALSE(isFit(DeviceRole::child));
  EXPECT_TRUE(isFit(DeviceRole::parent));
  EXPECT_TRUE(isFit(DeviceRole::unset));
}

TEST_F(DoctorReport, a_tunnel_that_is_set_up_has_a_line_for_each_of_its_parts) {
  probes.tunnelFindings = {.connection = {true, "is on."},
                           .redirection = {false, "is missing."},
                           .nameLookup = {true, "goes through."},
                           .endpoint = {true, "answers."},
                           .network = {true, "leads out."}};
  const auto lines = examine(probes, DeviceRole::child).lines;
  ASSERT_GT(lines.size(), 9);
  EXPECT_THAT(std::vector(lines.begin() + 4, lines.begin() + 9),
              testing::ElementsAre("works     Tunnel: is on.", "MISSING   Redirection of DNS: is missing.",
                                   "works     Lookup of names: goes through.", "works     Endpoint: answers.",
                                   "works     Network: leads out."));
  EXPECT_FALSE(isFit(DeviceRole::child));
  EXPECT_TRUE(isFit(DeviceRole::parent)) << "one that was a child's device before";
}

TEST_F(DoctorReport, every_device_needs_the_service_even_one_without_a_role) {
  probes.serviceFinding.answer = {false, "silent."};
  for (const auto role : {DeviceRole::child, DeviceRole::parent, DeviceRole::unset}) {
    EXPECT_FALSE(isFit(role));
    EXPECT_EQ(line("Service", role), "MISSING   Service: silent.");
  }
}

TEST_F(DoctorReport, a_clock_more_than_five_minutes_fast_or_slow_is_a_problem) {
  EXPECT_EQ(clockLine(5min), "works     Clock: agrees with the service's.");
  EXPECT_EQ(clockLine(-5min), "works     Clock: agrees with the service's.");
  EXPECT_THAT(clockLine(5min + 1ms), HasSubstr("MISSING   Clock: 5 minutes ahead of the service's."));
  EXPECT_THAT(clockLine(-5min - 1ms), HasSubstr("MISSING   Clock: 5 minutes behind the service's."));
  EXPECT_FALSE(isFit(DeviceRole::parent));
}

TEST_F(DoctorReport, a_large_clock_difference_is_stated_in_larger_units) {
  EXPECT_THAT(clockLine(119min), HasSubstr("119 minutes ahead"));
  EXPECT_THAT(clockLine(120min), HasSubstr("2 hours ahead"));
  EXPECT_THAT(clockLine(-47h), HasSubstr("47 hours behind"));
  EXPECT_THAT(clockLine(-49h), HasSubstr("2 days behind"));
}

TEST_F(DoctorReport, a_clock_that_could_not_be_compared_is_not_called_right) {
  probes.serviceFinding.clockLead = std::nullopt;
  EXPECT_FALSE(isFit(DeviceRole::parent));
  EXPECT_EQ(line("Clock"), "MISSING   Clock: could not be compared, since the service told no time.");
}

TEST_F(DoctorReport, without_a_role_states_what_a_childs_device_needs) {
  EXPECT_EQ(examine(probes, DeviceRole::unset).lines.back(),
            "This machine has what a parent's device needs. No role is chosen yet; a child's device needs "
            "NetworkManager and the tunnel program as well.");
  EXPECT_EQ(examine(probes, DeviceRole::parent).lines.back(),
            "This machine has what a parent's device needs.");
}

TEST_F(DoctorReport, a_machine_with_something_missing_ends_with_that) {
  probes.tunnelProgramFinding = {false, "none."};
  EXPECT_EQ(examine(probes, DeviceRole::child).lines.back(),
            "This machine lacks something that a child's device needs.");
}

}  // namespace
}  // namespace quillmar::doctor
