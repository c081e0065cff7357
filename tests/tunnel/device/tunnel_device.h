#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>

#include <memory>
#include <string>

#include "tests/tunnel/device/device_world.h"
#include "tests/tunnel/support/test_endpoint.h"

namespace quillmar::tunnel::test {

// One for all tests of the program.
DeviceWorld& world();

inline constexpr const char* first = "192.0.2.7";
inline constexpr const char* second = "192.0.2.8";
// DNS servers beyond the router, as a user may configure them.
inline constexpr const char* server4 = "192.0.2.53";
inline constexpr const char* server6 = "2001:db8:53::53";

// An endpoint's answer to a question: 192.0.2.LASTBYTE, or no such record for another type than A.
std::string addressAnswer(const std::string& question, char lastByte, std::uint32_t life = 300);
std::string noSuchName(const std::string& question);

// An endpoint that answers every query with the same address.
TestEndpoint::Answering always(char lastByte);

// The service on a machine, with an endpoint beside it.
struct TunnelDevice : testing::Test {
  TunnelDevice() { world().tidy(); }
  ~TunnelDevice() override;

  void start();
  std::string readUntil(const std::string& text) const;
  // Starts the service and activates its connection in NetworkManager.
  void protect();
  void disconnect() const;

  static std::string rules();
  static std::string textOf(const std::string& path);
  static pid_t worker();
  static void killWorker();
  static int openProcess(pid_t process);
  static void awaitDeath(int process);
  static std::string newName();

  TestEndpoint endpoint{always(7)};
  std::unique_ptr<RunningProgram> program;
};

}  // namespace quillmar::tunnel::test
