// Checks that the session in docs/driver.md is what the driver prints.

#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <string>
#include <vector>

#include "tools/driver/driver.h"

namespace quillmar::driver {
namespace {

struct Session {
  std::vector<std::string> requests;
  // The lines of both kinds, in order.
  std::vector<std::string> transcript;
};

Session documentedSession() {
  std::ifstream manual(QUILLMAR_DRIVER_MANUAL);
  Session session;
  for (std::string line; std::getline(manual, line);) {
    if (line.starts_with("> {")) {
      session.requests.push_back(line.substr(2));
      session.transcript.push_back(line);
    } else if (line.starts_with("< {")) {
      session.transcript.push_back(line);
    }
  }
  return session;
}

TEST(DriverManual, shows_a_session_as_it_runs) {
  const Session session = documentedSession();
  ASSERT_GT(session.requests.size(), 5U);

  std::vector<std::string> transcript;
  Driver driver({.clock = Clock::virtualTime, .events = true},
                [&](const std::string& line) { transcript.push_back("< " + line); });
  transcript.clear();
  for (const auto& request : session.requests) {
    transcript.push_back("> " + request);
    driver.handle(request);
  }
  EXPECT_EQ(transcript, session.transcript);
}

// The operations in the tables, each with its fields: rows whose first cell is one lower-case word.
std::vector<std::string> documentedOperations() {
  std::ifstream manual(QUILLMAR_DRIVER_MANUAL);
  std::vector<std::string> operations;
  const std::regex row("\\| `([a-z]+)` \\|([^|:]*)[|:].*");
  const std::regex field("`([a-z]+)`");
  std::smatch found;
  for (std::string line; std::getline(manual, line);) {
    if (std::regex_match(line, found, row)) {
      std::string operation = found[1];
      const std::string fields = found[2];
      for (std::sregex_iterator each(fields.begin(), fields.end(), field), end; each != end; ++each) {
        operation += ' ' + (*each)[1].str();
      }
      operations.push_back(operation);
    }
  }
  return operations;
}

TEST(DriverManual, lists_the_operations_that_the_help_lists) {
  std::vector<std::string> listed;
  for (const auto& [operation, meaning] : Driver::requests().entries) {
    listed.push_back(operation);
    EXPECT_FALSE(meaning.empty()) << operation;
  }
  EXPECT_EQ(documentedOperations(), listed);
  EXPECT_GT(listed.size(), 5U);
}

}  // namespace
}  // namespace quillmar::driver
