#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/sandbox/support/run_command.h"

namespace quillmar::agent {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

TEST(AgentLibraries, include_none_that_only_a_window_needs) {
  const auto libraries = sandbox::test::runCommand({"ldd", QUILLMAR_AGENT});
  EXPECT_THAT(libraries.output, AllOf(HasSubstr("libcurl"), Not(HasSubstr("Qt")), Not(HasSubstr("libglib")),
                                      Not(HasSubstr("libicui18n"))));
}

}  // namespace
}  // namespace quillmar::agent
