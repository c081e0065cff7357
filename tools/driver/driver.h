#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "app/quillmar_app.h"
#include "command_line/command_line.h"
#include "foundation/value.h"
#include "tools/driver/machine.h"

namespace quillmar::driver {

// A driven application: takes requests as JSON lines, answers each with one line, and writes events as they
// happen. Requests must arrive on the main thread; `write` is called on any thread, with whole lines, one at
// a time.
class Driver {
 public:
  using Write = std::function<void(const std::string& line)>;

  Driver(const Options& options, Write write);
  Driver(const Driver&) = delete;
  Driver& operator=(const Driver&) = delete;
  ~Driver();

  // The kinds of requests with their fields, and what they do: a list for the help.
  static command_line::Glossary requests();

  // Answers at once; a `settle` by the real clock is answered later.
  void handle(std::string_view line);
  Machine& machine() { return machine_; }

 private:
  struct Operation;
  struct Refusal {
    std::string words;
  };
  // The answer is written once there is one.
  struct Later {};
  using Answer = std::variant<Value::Map, Refusal, Later>;

  static const std::vector<Operation>& operations();

  Answer listScreens(const Value& request);
  Answer listObjects(const Value& request);
  Answer set(const Value& request);
  Answer act(const Value& request);
  Answer advance(const Value& request);
  Answer settle(const Value& request);
  Answer phase(const Value& request);
  Answer activate(const Value& request);
  Answer settings(const Value& request);
  Answer secure(const Value& request);
  Answer tunnel(const Value& request);
  Answer biometrics(const Value& request);
  Answer clipboard(const Value& request);
  Answer haptics(const Value& request);

  std::vector<std::shared_ptr<ObservableObject>> sharedObjects();
  std::shared_ptr<ObservableObject> findScreen(std::string_view name);
  // The screen of a request, or the row of that screen if the request names one.
  std::shared_ptr<ObservableObject> findTarget(const Value& request);

  void reply(const Value& request, Answer answer);
  void writeEvent(Value::Map event);
  void watch();
  void waitUntilIdle(const Value& request, std::chrono::steady_clock::time_point deadline, int quietTurns);

  const Write write_;
  std::mutex writeMutex_;
  Machine machine_;
  std::unique_ptr<QuillmarApp> app_;
  const bool events_;
  std::vector<std::pair<std::weak_ptr<ObservableObject>, Subscription>> watched_;
};

}  // namespace quillmar::driver
