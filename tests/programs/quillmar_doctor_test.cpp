#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/instance_lock.h"
#include "sandbox/service.h"
#include "testing/temporary_directory.h"
#include "tests/sandbox/support/run_command.h"

namespace quillmar {
namespace {

using sandbox::test::runCommand;
using testing::HasSubstr;

// The program without a display.
struct QuillmarDoctor : testing::Test {
  sandbox::test::CommandResult run(std::vector<std::string> words) const {
    words.insert(words.begin(), {"env", "-u", "DISPLAY", "-u", "WAYLAND_DISPLAY", "-u", "QT_QPA_PLATFORM",
                                 "LC_ALL=C.UTF-8", QUILLMAR_PROGRAM});
    return runCommand(words);
  }

  const std::unique_ptr<sandbox::Service> service = std::move(*sandbox::Service::start({}));
  const TemporaryDirectory directory;
  const std::filesystem::path data = directory.path() / "data";
};

TEST_F(QuillmarDoctor, examines_the_machine_without_a_display) {
  const auto result = run({"--data-dir", data.string(), "--service", service->secureUrl(), "--ca-file",
                           service->caFile().string(), "doctor"});
  EXPECT_EQ(result.status, 0) << result.output << result.errors;
  EXPECT_THAT(result.output, HasSubstr("works     Service: " + service->secureUrl() + "/api/v1 answers"));
  EXPECT_THAT(result.output, HasSubstr("works     Clock: agrees with the service's."));
  EXPECT_THAT(result.output, HasSubstr("works     Camera module: "));
  EXPECT_THAT(result.output, HasSubstr("/quillmar-camera.so is installed."));
  EXPECT_EQ(result.errors, "");
  EXPECT_FALSE(std::filesystem::exists(data));
}

TEST_F(QuillmarDoctor, fails_if_the_service_is_not_trusted) {
  const auto result = run({"doctor", "--data-dir", data.string(), "--service", service->secureUrl()});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.output, HasSubstr("MISSING   Service: "));
}

TEST_F(QuillmarDoctor, reports_an_output_that_can_not_be_written) {
  for (const std::string output : {">/dev/full", ">&-"}) {
    const auto result = runCommand(
        {"sh", "-c", "exec " QUILLMAR_PROGRAM " doctor --data-dir \"$1\" " + output, "sh", data.string()});
    EXPECT_EQ(result.status, 1) << output;
    EXPECT_THAT(result.errors, HasSubstr("quillmar: The output can't be written: ")) << output;
  }
}

TEST_F(QuillmarDoctor, ends_with_the_status_that_the_manual_states) {
  std::ifstream file(QUILLMAR_PROGRAM_MANUAL);
  const std::string manual{std::istreambuf_iterator<char>(file), {}};
  const std::string section = manual.substr(manual.find(".Sh EXIT STATUS"));
  const auto held = InstanceLock::acquire(data);
  for (const auto& [words, status] :
       {std::pair(std::vector<std::string>{"-platform", "offscreen", "--help"}, 0),
        std::pair(std::vector<std::string>{"-platform", "offscreen", "--dance"}, 1),
        std::pair(std::vector<std::string>{"-platform", "offscreen", "doctor", "dance"}, 2),
        std::pair(std::vector<std::string>{"--data-dir", data.string(), "-platform", "offscreen"}, 5),
        std::pair(std::vector<std::string>{"doctor", "--ca-file", "/nowhere"}, 7)}) {
    EXPECT_EQ(run(words).status, status) << words.back();
    EXPECT_THAT(section, HasSubstr("\n.It " + std::to_string(status) + '\n'));
  }
}

TEST_F(QuillmarDoctor, prints_its_help) {
  const auto result = run({"doctor", "--help"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.output, HasSubstr("[doctor]"));
  EXPECT_THAT(result.output, HasSubstr("Report what works on this computer"));
}

}  // namespace
}  // namespace quillmar
