#include "presentation/relative_timestamp.h"

#include <array>
#include <chrono>
#include <cstddef>

#include "foundation/text.h"

namespace quillmar {
namespace {

using std::chrono::seconds;

constexpr seconds minute(60);
constexpr seconds hour = 60 * minute;
constexpr seconds day = 24 * hour;
constexpr seconds week = 7 * day;

// The unit for ages below a limit.
struct Step {
  seconds below;
  seconds unit;
  std::string_view one;
  std::string_view many;
};
constexpr std::array steps = {Step{hour, minute, " min ago", " min ago"},
                              Step{day, hour, " hour ago", " hours ago"},
                              Step{week, day, " day ago", " days ago"}};

constexpr std::size_t localFormLength = 19;

}  // namespace

std::optional<Date> parsedTimestamp(std::string_view text, const DateStyles& styles) {
  const auto date = parseTimestamp(text);
  return date ? date : styles.parseLocal(firstCharacters(text, localFormLength));
}

std::string relativeTimestamp(std::string_view text, Date now, const DateStyles& styles) {
  const auto date = parsedTimestamp(text, styles);
  if (!date) {
    return std::string(text);
  }
  const auto age = now - *date;
  if (age < minute) {
    return "Just now";
  }
  for (const auto& step : steps) {
    if (age < step.below) {
      const auto count = age / step.unit;
      return std::to_string(count).append(count == 1 ? step.one : step.many);
    }
  }
  return styles.mediumDate(*date);
}

}  // namespace quillmar
