#include "child/recent_time.h"

#include <chrono>

namespace quillmar {

std::optional<std::string> recentInWords(Date time, Date now) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(now - time).count();
  if (seconds < 60) {
    return "Just now";
  }
  if (seconds > 3599) {
    return std::nullopt;
  }
  return std::to_string(seconds / 60) + " minute" + (seconds >= 120 ? "s" : "") + " ago";
}

}  // namespace quillmar
