#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace quillmar::sandbox {

// Milliseconds, as on the wire.
using Time = std::chrono::sys_time<std::chrono::milliseconds>;

// Called on any thread.
using Clock = std::function<std::chrono::system_clock::time_point()>;

[[nodiscard]] Clock systemClock();

// "2016-10-08T22:31:00.250Z"
[[nodiscard]] std::string iso8601(Time time);

// "Sat, 08 Oct 2016 22:31:00 GMT", for HTTP headers.
[[nodiscard]] std::string httpDate(Time time);

// Date, time and zone (Z or an offset), with or without a fraction.
[[nodiscard]] std::optional<Time> parseIso8601(std::string_view text);

[[nodiscard]] inline std::int64_t milliseconds(Time time) { return time.time_since_epoch().count(); }
[[nodiscard]] inline Time timeOf(std::int64_t milliseconds) {
  return Time{std::chrono::milliseconds{milliseconds}};
}

}  // namespace quillmar::sandbox
