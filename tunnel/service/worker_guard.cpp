#include "tunnel/service/worker_guard.h"

#include <algorithm>

namespace quillmar::tunnel {
namespace {

// Replaces control characters, so that one line of the worker stays one line of the log.
std::string printable(std::string text) {
  std::ranges::replace_if(
      text, [](char c) { return c < ' ' || c > '~'; }, '?');
  return text;
}

bool canBeReached(const boost::asio::ip::address& address) {
  return !address.is_unspecified() && !address.is_multicast() && !address.is_loopback();
}

}  // namespace

bool WorkerGuard::take(Time now, std::string_view text) {
  const auto message = decodeFromWorker(text);
  if (!messages_.take(now) || !message) {
    return false;
  }
  if (const auto* line = std::get_if<Line>(&*message)) {
    events_.tell(printable(line->text));
  } else if (const auto* reached = std::get_if<Reached>(&*message)) {
    // A message about the former endpoint may arrive after the endpoint has changed.
    if (reached->host == host_ && canBeReached(reached->address)) {
      events_.reached(reached->host, reached->address);
    }
  } else if (std::holds_alternative<WantServers>(*message)) {
    events_.serversWanted();
  } else {
    events_.ponged();
  }
  return true;
}

std::chrono::milliseconds Restarts::died(Time now, Time started) {
  deaths_ = now - started >= longLife ? 1 : deaths_ + 1;
  auto pause = deaths_ > mostAtOnce ? firstPause : std::chrono::milliseconds(0);
  for (int death = mostAtOnce + 1; death < deaths_ && pause < longestPause; ++death) {
    pause *= 2;
  }
  return std::min(pause, longestPause);
}

}  // namespace quillmar::tunnel
