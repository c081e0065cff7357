#include "platform/linux/system_log.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <syslog.h>
#include <unistd.h>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "platform/common/file_descriptor.h"

namespace {

std::string lastSystemLine;  // NOLINT: what the program's own syslog below was given
std::string lastIdentity;    // NOLINT

void keepSystemLine(const char* format, va_list arguments) {
  std::array<char, 4096> text{};
  std::vsnprintf(text.data(), text.size(), format, arguments);
  lastSystemLine = text.data();
}

}  // namespace

// This program's own in place of the C library's, so that nothing reaches the machine's log.
extern "C" void syslog(int, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  keepSystemLine(format, arguments);
  va_end(arguments);
}
// What a fortified program calls.
extern "C" void __syslog_chk(int, int, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  keepSystemLine(format, arguments);
  va_end(arguments);
}
extern "C" void openlog(const char* identity, int, int) { lastIdentity = identity; }

namespace quillmar {
namespace {

using namespace std::string_literals;

class Pipe {
 public:
  Pipe() {
    std::array<int, 2> ends{-1, -1};
    if (pipe2(ends.data(), O_CLOEXEC) == 0) {
      output_ = FileDescriptor(ends[0]);
      input_ = FileDescriptor(ends[1]);
    }
  }
  int input() const { return input_.get(); }
  // Everything that was written; ends the writing.
  std::string readAll() {
    input_ = FileDescriptor();
    std::string all;
    std::array<char, 65536> buffer{};
    for (auto count = read(output_.get(), buffer.data(), buffer.size()); count > 0;
         count = read(output_.get(), buffer.data(), buffer.size())) {
      all.append(buffer.data(), static_cast<std::size_t>(count));
    }
    return all;
  }

 private:
  FileDescriptor output_;
  FileDescriptor input_;
};

TEST(SystemLog, a_line_is_printed_with_its_line_break) {
  Pipe pipe;
  SystemLog log("program", pipe.input());
  log.print("[NetworkService] Got 401, attempting token refresh...");
  log.print("");
  EXPECT_EQ(pipe.readAll(), "[NetworkService] Got 401, attempting token refresh...\n\n");
}

TEST(SystemLog, a_text_from_outside_is_no_format_and_starts_no_line_of_its_own) {
  Pipe pipe;
  SystemLog log("program", pipe.input());
  log.print("%s %n 100%\n[Forged] line\r\x1b[2J");
  EXPECT_EQ(pipe.readAll(), "%s %n 100%\\n[Forged] line\\r\\x1b[2J\n");
}

TEST(SystemLog, lines_of_many_threads_never_mix) {
  Pipe pipe;
  SystemLog log("program", pipe.input());
  std::vector<std::thread> writers;
  writers.reserve(4);
  for (int writer = 0; writer < 4; ++writer) {
    writers.emplace_back([&, writer] {
      for (int i = 0; i < 20; ++i) {
        log.print(std::string(300, static_cast<char>('a' + writer)));
      }
    });
  }
  for (std::thread& writer : writers) {
    writer.join();
  }
  std::istringstream lines(pipe.readAll());
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    EXPECT_EQ(line, std::string(300, line[0]));
  }
  EXPECT_EQ(count, 80);
}

TEST(SystemLog, an_output_that_can_not_be_written_is_given_up) {
  SystemLog log("program", -1);
  log.print("line");
  log.system("line");
  EXPECT_EQ(lastSystemLine, "line");
}

TEST(SystemLog, the_systems_log_hears_of_it_under_the_programs_name) {
  SystemLog log("program-name", -1);
  log.system("%s of children:\n3");
  EXPECT_EQ(lastSystemLine, "%s of children:\\n3");
  EXPECT_EQ(lastIdentity, "program-name");
}

TEST(SingleLine, escapes_whatever_could_steer_a_terminal_or_break_a_line) {
  EXPECT_EQ(singleLine("a\tb\x7f\0"s), "a\\tb\\x7f\\x00");
  EXPECT_EQ(singleLine("\u0085\u009b31m\u2028\u2029"), "\\x85\\x9b31m\\u2028\\u2029");
}

TEST(SingleLine, leaves_every_other_text_as_it_is) {
  for (const std::string text :
       {"", "zwölf 👨‍👩‍👧 “x” \\n", "\u00a0 é", "\xc2", "\xff\xfe"}) {
    EXPECT_EQ(singleLine(text), text);
  }
}

}  // namespace
}  // namespace quillmar
