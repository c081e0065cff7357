#include "programs/agent/terminal.h"

#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <string>
#include <system_error>

namespace quillmar::agent {
namespace {

std::string_view variable(const char* name) {
  const char* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): nothing here changes it
  return value ? value : "";
}

// A terminal that does not tell its size keeps the usual one.
void measure(int descriptor, Terminal& terminal) {
  winsize size{};
  if (::ioctl(descriptor, TIOCGWINSZ, &size) == 0) {
    terminal.columns = size.ws_col > 0 ? size.ws_col : terminal.columns;
    terminal.rows = size.ws_row > 0 ? size.ws_row : terminal.rows;
  }
}

bool writeTo(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t size = ::write(descriptor, text.data(), text.size());
    if (size < 0 && errno != EINTR) {
      return false;
    }
    text.remove_prefix(size > 0 ? static_cast<std::size_t>(size) : 0);
  }
  return true;
}

}  // namespace

// NOLINTBEGIN(concurrency-mt-unsafe): before there is a second thread
Terminal Terminal::ofStandardOutput() {
  std::setlocale(LC_CTYPE, "");
  const bool isInteractive = ::isatty(STDOUT_FILENO) == 1;
  const std::string_view kind = variable("TERM");
  Terminal terminal{
      .isInteractive = isInteractive,
      .hasUTF8 = std::string_view(::nl_langinfo(CODESET)) == "UTF-8",
      .hasColour = isInteractive && !kind.empty() && kind != "dumb" && variable("NO_COLOR").empty()};
  measure(STDOUT_FILENO, terminal);
  return terminal;
}
// NOLINTEND(concurrency-mt-unsafe)

bool write(std::string_view text) { return writeTo(STDOUT_FILENO, text); }

bool writeLine(std::string_view text) { return write(std::string(text) + '\n'); }

bool writeAnswer(std::string_view text) {
  if (write(text)) {
    return true;
  }
  complain("The output can't be written: " + std::generic_category().message(errno) + '.');
  return false;
}

void complain(std::string_view text) {
  writeTo(STDERR_FILENO, "quillmar-agent: " + std::string(text) + '\n');
}

}  // namespace quillmar::agent
