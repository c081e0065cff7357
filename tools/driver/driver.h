#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "app/quillmar_app.h"
#include "foundation/value.h"
#include "tools/driver/machine.h"

namespace quillmar::driver {

// One driven application: takes requests as JSON lines and writes one answer to each, and events as they
// come. Requests are handed over on the main thread; `write` is called with whole lines, from any thread, one
// at a time.
class Driver {
 public:
  using Write = std::function<void(const std::string& line)>;

  Driver(const Options& options, Write write);
  Driver(const Driver&) = delete;
  Driver& operator=(const Driver&) = delete;
  ~Driver();

  // Answers, at once or (a `settle` by the real clock) when its time has come.
  void handle(std::string_view line);
  Machine& machine() { return machine_; }

 private:
  struct Operation;
  struct Refusal {
    std::string words;
  };
  using Answer = std::variant<Value::Map, Refusal>;

  static const std::vector<Operation>& operations();

  Answer listScreens(const Value& request);
  Answer listObjects(const Value& request);
  Answer set(const Value& request);
  Answer act(const Value& request);
  Answer advance(const Value& request);
  Answer phase(const Value& request);
  Answer activate(const Value& request);
  Answer settings(const Value& request);
  Answer secure(const Value& request);
  Answer tunnel(const Value& request);
  Answer biometrics(const Value& request);
  Answer clipboard(const Value& request);
  Answer haptics(const Value& request);
  void settle(const Value& request);

  std::vector<std::shared_ptr<ObservableObject>> sharedObjects();
  std::shared_ptr<ObservableObject> findScreen(std::string_view name);
  // The screen of a request, or the row of it that the request names.
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
