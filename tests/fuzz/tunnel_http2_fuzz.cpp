// The input is what an endpoint sends on an HTTP/2 connection. Its first byte is the size of the pieces in
// which the rest is received. Four requests are open, and one of them is cancelled before the first piece.

#include <algorithm>
#include <map>
#include <string>

#include "tests/fuzz/fuzz.h"
#include "tunnel/dns/wire.h"
#include "tunnel/network/http2_session.h"

using namespace quillmar::tunnel;
using quillmar::fuzz::require;

namespace {

constexpr Ticket requests = 4;
constexpr Ticket cancelled = 2;

class Checks final : public ConnectionEvents {
 public:
  void opened(Time) override { require(false, "a session does not know when it is open"); }
  void answered(Time, Ticket ticket, std::variant<HttpAnswer, Failure> answer) override {
    endOf(ticket);
    if (const auto* http = std::get_if<HttpAnswer>(&answer)) {
      require(http->body.size() <= largestMessage, "an answer is no longer than a message can be");
      require(http->status / 100 != 1, "an informational answer is not the answer");
    }
  }
  void dropped(Time, Ticket ticket) override { endOf(ticket); }
  void ponged(Time) override { require(!isSilenced, "a silenced session reports nothing"); }
  void closing(Time) override { require(!isSilenced, "a silenced session reports nothing"); }
  void ended(Time, const Failure&) override { require(false, "the caller ends the connection"); }

  bool isSilenced = false;

 private:
  void endOf(Ticket ticket) {
    require(!isSilenced, "a silenced session reports nothing");
    require(ticket >= 1 && ticket <= requests, "only requests end");
    require(ticket != cancelled, "a cancelled request is not reported");
    require(++ends_[ticket] == 1, "a request ends once");
  }

  std::map<Ticket, int> ends_;
};

bool takesOutgoing(Http2Session& session) {
  constexpr std::size_t atOnce = 16'384;
  std::string frames;
  for (;;) {
    if (session.takeOutgoing(frames, atOnce)) {
      return false;
    }
    if (frames.empty()) {
      return true;
    }
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  auto bytes = quillmar::fuzz::textOf(data, size);
  if (bytes.empty()) {
    return 0;
  }
  const std::size_t piece = 1U + static_cast<unsigned char>(bytes.front());
  bytes.remove_prefix(1);
  const Endpoint endpoint{.host = "doh.example", .authority = "doh.example", .path = "/dns-query"};
  Checks checks;
  Http2Session session(endpoint, checks);
  for (Ticket ticket = 1; ticket <= requests; ++ticket) {
    require(!session.send(ticket, std::string(128, 'q')), "a new connection takes requests");
  }
  require(takesOutgoing(session), "requests can be sent");
  session.ping();
  session.cancel(cancelled);
  while (!bytes.empty() && !session.isOver()) {
    if (session.receive(bytes.substr(0, piece)) || !takesOutgoing(session)) {
      break;
    }
    bytes.remove_prefix(std::min(piece, bytes.size()));
  }
  checks.isSilenced = true;
  session.silence();
  if (!session.receive(bytes)) {
    takesOutgoing(session);
  }
  return 0;
}
