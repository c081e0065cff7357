#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "sandbox/service.h"
#include "tests/sandbox/support/run_command.h"
#include "tests/support/temporary_directory.h"

namespace quillmar {
namespace {

using sandbox::test::runCommand;
using testing::HasSubstr;

// The program as it is started where there is no display.
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

TEST_F(QuillmarDoctor, looks_at_the_machine_without_a_display) {
  const auto result = run({"--data-dir", data.string(), "--service", service->secureUrl(), "--ca-file",
                           service->caFile().string(), "doctor"});
  EXPECT_EQ(result.status, 0) << result.output << result.errors;
  EXPECT_THAT(result.output, HasSubstr("works     Service: " + service->secureUrl() + "/api/v1 answers"));
  EXPECT_THAT(result.output, HasSubstr("works     Clock: agrees with the service's."));
  EXPECT_EQ(result.errors, "");
  EXPECT_FALSE(std::filesystem::exists(data));
}

TEST_F(QuillmarDoctor, fails_where_the_service_is_not_trusted) {
  const auto result = run({"doctor", "--data-dir", data.string(), "--service", service->secureUrl()});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.output, HasSubstr("MISSING   Service: "));
}

TEST_F(QuillmarDoctor, explains_itself) {
  const auto result = run({"doctor", "--help"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.output, HasSubstr("[doctor]"));
  EXPECT_THAT(result.output, HasSubstr("Say what works on this computer"));
}

}  // namespace
}  // namespace quillmar
