#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace quillmar::sandbox {

// Times are kept to the millisecond, which is also what the wire shows.
using Time = std::chrono::sys_time<std::chrono::milliseconds>;

// Asked on any thread.
using Clock = std::function<std::chrono::system_clock::time_point()>;

[[nodiscard]] Clock systemClock();

// "2016-10-08T22:31:00.250Z"
[[nodiscard]] std::string iso8601(Time time);

// "Sat, 08 Oct 2016 22:31:00 GMT", as HTTP's headers have it.
[[nodiscard]] std::string httpDate(Time time);

// A date with a time and a zone (Z or an offset), with or without a fraction of a second.
[[nodiscard]] std::optional<Time> parseIso8601(std::string_view text);

[[nodiscard]] inline std::int64_t milliseconds(Time time) { return time.time_since_epoch().count(); }
[[nodiscard]] inline Time timeOf(std::int64_t milliseconds) {
  return Time{std::chrono::milliseconds{milliseconds}};
}

}  // namespace quillmar::sandbox
