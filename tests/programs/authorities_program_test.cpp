#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/programs/program_session.h"
#include "tests/sandbox/support/run_command.h"

namespace quillmar {
namespace {

namespace fs = std::filesystem;
using sandbox::test::runCommand;
using test::operator+;
using test::Words;

// The programs that take the file of a certificate authority.
struct AuthoritiesOfPrograms : testing::Test {
  std::vector<Words> programs() const {
    const Words service{"--service", "https://localhost:1"};
    const Words installation = Words{"--data-dir", data.string()} + service;
    std::vector<Words> all{
        Words{QUILLMAR_PROGRAM} + installation, Words{QUILLMAR_PROGRAM, "doctor"} + installation,
        Words{QUILLMAR_DRIVER} + installation, Words{QUILLMAR_WALK, data.string()} + service,
        Words{QUILLMAR_BROWSE, "--data-dir", data.string()}};
    for (const char* command : {"enroll", "run", "status", "sync", "reset", "doctor"}) {
      all.push_back(Words{QUILLMAR_AGENT, command} + installation);
    }
    return all;
  }
  void expectRefusal(const fs::path& file, const std::string& reason) const {
    for (const Words& program : programs()) {
      const auto result = runCommand(
          session.running(program + Words{"--ca-file", file.string()}, {"QT_QPA_PLATFORM=offscreen"}));
      EXPECT_EQ(result.status, 7) << program.front();
      EXPECT_EQ(result.errors, fs::path(program.front()).filename().string() + ": The certificate file " +
                                   file.string() + ' ' + reason + '\n');
      EXPECT_EQ(result.output, "");
      EXPECT_FALSE(fs::exists(data)) << program.front();
    }
  }

  const test::ProgramSession session;
  const fs::path data = session.home() / "data";
  const fs::path file = session.home() / "ca.pem";
};

TEST_F(AuthoritiesOfPrograms, a_missing_file_ends_the_program_at_its_start) {
  expectRefusal(file, "can't be read: No such file or directory.");
}

TEST_F(AuthoritiesOfPrograms, a_file_without_certificates_ends_it_too) {
  std::ofstream(file) << "hello\n";
  expectRefusal(file, "holds no certificate in PEM form.");
}

}  // namespace
}  // namespace quillmar
