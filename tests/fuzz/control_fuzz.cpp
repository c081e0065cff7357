// The input is what one process of an installation sends to another: read as a reply, and line by line as
// requests to the process that does the work.

#include <string>

#include "foundation/json.h"
#include "programs/control/control_handler.h"
#include "testing/test_application.h"
#include "tests/fuzz/fuzz.h"

using namespace quillmar;
using namespace quillmar::control;
using fuzz::require;

namespace {

constexpr std::size_t mostLines = 8;

void checkReply(std::string_view text) {
  const auto reply = decodeJson<ControlReply>(text);
  if (reply.ok()) {
    const auto encoded = encodeJson(reply.value());
    require(encoded.ok(), "what was read can be written");
    const auto again = decodeJson<ControlReply>(encoded.value());
    require(again.ok() && again.value() == reply.value(), "a reply is read as written");
  }
}

void checkRequests(std::string_view text) {
  TestApplication app(asEnrolledChild());
  app.machine.tunnel.behaveLikePlatform();
  app.machine.http.answerAlways("POST", "/device/checkin", 200, R"({"status":"ok"})");
  ControlHandler handler(app.environment(), {});
  app.settle();
  std::size_t asked = 0;
  std::size_t answered = 0;
  bool isReset = false;
  while (asked < mostLines && !text.empty()) {
    const std::string line(text.substr(0, text.find('\n')));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    const auto request = decodeJson<ControlRequest>(line);
    isReset |= request.ok() && request.value().operation == rawValue(Operation::reset);
    ++asked;
    handler.handle(line, [&answered](const LocalMessage& message) {
      ++answered;
      require(message.line.find('\n') == std::string::npos, "an answer is one line");
      require(decodeJson<ControlReply>(message.line).ok(), "an answer is a reply");
    });
  }
  app.settle();
  require(answered <= asked, "nothing is answered twice");
  require(isReset || app.environment().childAppState()->isEnrolled(), "only a reset forgets the enrollment");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto text = fuzz::textOf(data, size);
  checkReply(text);
  checkRequests(text);
  return 0;
}
