#include "platform/linux/linux_device_info.h"

#include <gtest/gtest.h>
#include <sdbus-c++/sdbus-c++.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "platform/common/file_descriptor.h"
#include "testing/temporary_directory.h"
#include "tests/platform/private_bus.h"

namespace quillmar {
namespace {

namespace fs = std::filesystem;

std::string machineName() {
  std::array<char, 256> name{};
  gethostname(name.data(), name.size() - 1);
  return name.data();
}

// A hostnamed that knows one name.
class Hostnamed {
 public:
  Hostnamed(const std::string& busAddress, const std::string& name)
      : connection_(sdbus::createSessionBusConnectionWithAddress(busAddress)),
        object_(sdbus::createObject(*connection_, "/org/freedesktop/hostname1")) {
    object_->registerProperty("PrettyHostname").onInterface("org.freedesktop.hostname1").withGetter([name] {
      return name;
    });
    object_->finishRegistration();
    connection_->requestName("org.freedesktop.hostname1");
    connection_->enterEventLoopAsync();
  }

 private:
  std::unique_ptr<sdbus::IConnection> connection_;
  std::unique_ptr<sdbus::IObject> object_;
};

class LinuxDeviceInfoTest : public testing::Test {
 protected:
  LinuxDeviceInfoTest() {
    sources.busSocket = directory.path() / "no-bus";
    sources.patience = std::chrono::seconds(20);
    sources.machineInfo = directory.path() / "machine-info";
  }
  void writeMachineInfo(const std::string& text) const { std::ofstream(sources.machineInfo) << text; }
  std::string name() const { return LinuxDeviceInfo(sources).name(); }

  TemporaryDirectory directory;
  LinuxDeviceInfo::Sources sources;
};

TEST_F(LinuxDeviceInfoTest, hostnamed_knows_the_name_best) {
  const PrivateBus bus(directory.path());
  ASSERT_TRUE(bus.running());
  const Hostnamed hostnamed(bus.address(), "Zoë’s Laptop");
  sources.busSocket = bus.socket();
  writeMachineInfo("PRETTY_HOSTNAME=other\n");
  EXPECT_EQ(name(), "Zoë’s Laptop");
}

TEST_F(LinuxDeviceInfoTest, a_hostnamed_without_a_name_and_a_bus_without_hostnamed_leave_it_to_the_file) {
  const PrivateBus bus(directory.path());
  ASSERT_TRUE(bus.running());
  sources.busSocket = bus.socket();
  writeMachineInfo("PRETTY_HOSTNAME=other\n");
  EXPECT_EQ(name(), "other");
  const Hostnamed hostnamed(bus.address(), "");
  EXPECT_EQ(name(), "other");
}

TEST_F(LinuxDeviceInfoTest, a_bus_that_never_answers_is_not_waited_for) {
  const fs::path path = directory.path() / "mute";
  const FileDescriptor listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.string().copy(static_cast<char*>(address.sun_path), sizeof address.sun_path - 1);
  ASSERT_EQ(bind(listener.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(listen(listener.get(), 1), 0);
  sources.busSocket = path;
  sources.patience = std::chrono::milliseconds(10);
  writeMachineInfo("PRETTY_HOSTNAME=file\n");
  EXPECT_EQ(name(), "file");
}

TEST_F(LinuxDeviceInfoTest, without_a_bus_the_file_says_the_name_in_any_quotes) {
  for (const auto& [text, expected] :
       {std::pair("PRETTY_HOSTNAME=plain\n", "plain"),
        std::pair("PRETTY_HOSTNAME=\"Ann's \\\"PC\\\"\"\n", "Ann's \"PC\""),
        std::pair("ICON_NAME=x\nPRETTY_HOSTNAME='with $ and \\'\n", "with $ and \\"),
        std::pair("# PRETTY_HOSTNAME=no\nPRETTY_HOSTNAME=yes", "yes"),
        std::pair("PRETTY_HOSTNAME=\"open", "open")}) {
    writeMachineInfo(text);
    EXPECT_EQ(name(), expected);
  }
}

TEST_F(LinuxDeviceInfoTest, without_any_of_them_the_host_name_serves) {
  EXPECT_FALSE(machineName().empty());
  EXPECT_EQ(name(), machineName());
  for (const char* text : {"", "PRETTY_HOSTNAME=\n", "PRETTY_HOSTNAME=\"\"\n", "OTHER=x\n"}) {
    writeMachineInfo(text);
    EXPECT_EQ(name(), machineName());
  }
}

TEST_F(LinuxDeviceInfoTest, locale_and_zone_are_never_empty_and_the_locale_is_one_for_people) {
  const LinuxDeviceInfo info(sources);
  EXPECT_FALSE(info.timeZone().empty());
  EXPECT_FALSE(info.locale().empty());
  EXPECT_EQ(info.locale().find("POSIX"), std::string::npos);
}

}  // namespace
}  // namespace quillmar
