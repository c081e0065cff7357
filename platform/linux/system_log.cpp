#include "platform/linux/system_log.h"

#include <syslog.h>

#include <array>
#include <cerrno>
#include <utility>

namespace quillmar {
namespace {

constexpr unsigned char del = 0x7F;

constexpr auto separators = std::to_array<std::pair<std::string_view, std::string_view>>(
    {{"\n", "\\n"}, {"\r", "\\r"}, {"\t", "\\t"}, {"\u2028", "\\u2028"}, {"\u2029", "\\u2029"}});

std::string escaped(unsigned char byte) {
  constexpr std::string_view digits = "0123456789abcdef";
  return {'\\', 'x', digits[byte >> 4U], digits[byte & 0xFU]};
}

// The escape for a control character at the start of the text and the character's length in bytes; empty if
// there is none.
std::pair<std::string, std::size_t> escapeAtStart(std::string_view text) {
  for (const auto& [separator, escape] : separators) {
    if (text.starts_with(separator)) {
      return {std::string(escape), separator.size()};
    }
  }
  const auto first = static_cast<unsigned char>(text[0]);
  if (first < ' ' || first == del) {
    return {escaped(first), 1};
  }
  // U+0080 to U+009F: terminals interpret these too.
  const bool isC1 = text.size() > 1 && first == 0xC2 && static_cast<unsigned char>(text[1]) < 0xA0;
  return isC1 ? std::pair(escaped(static_cast<unsigned char>(text[1])), std::size_t{2})
              : std::pair(std::string(), std::size_t{0});
}

}  // namespace

std::string singleLine(std::string_view line) {
  std::string single;
  single.reserve(line.size());
  while (!line.empty()) {
    const auto [escape, length] = escapeAtStart(line);
    if (length == 0) {
      single += line[0];
    } else {
      single += escape;
    }
    line.remove_prefix(length == 0 ? 1 : length);
  }
  return single;
}

SystemLog::SystemLog(std::string programName, int output)
    : programName_(std::move(programName)), output_(output) {
  openlog(programName_.c_str(), LOG_PID, LOG_USER);
}

SystemLog::~SystemLog() { closelog(); }

void SystemLog::print(std::string_view line) {
  const std::string text = singleLine(line) + '\n';
  const std::scoped_lock lock(mutex_);
  for (std::string_view rest = text; !rest.empty();) {
    const auto written = ::write(output_, rest.data(), rest.size());
    if (written < 0 && errno != EINTR) {
      return;
    }
    rest.remove_prefix(written < 0 ? 0 : static_cast<std::size_t>(written));
  }
}

void SystemLog::system(std::string_view line) { syslog(LOG_INFO, "%s", singleLine(line).c_str()); }

}  // namespace quillmar
