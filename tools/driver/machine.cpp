#include "tools/driver/machine.h"

#include <utility>

#include "platform/common/sqlite_settings_store.h"
#include "testing/memory_settings_store.h"

namespace quillmar::driver {
namespace {

Date presentTime() { return std::chrono::time_point_cast<Duration>(std::chrono::system_clock::now()); }

std::unique_ptr<SettingsStore> openSettings(const Options& options, Log& log) {
  if (options.dataDirectory) {
    return std::make_unique<SqliteSettingsStore>(*options.dataDirectory, log);
  }
  return std::make_unique<MemorySettingsStore>();
}

}  // namespace

Machine::Machine(const Options& options, EventLog::Sink sink)
    : log_(std::move(sink)),
      virtualTime_(options.clock == Clock::virtualTime ? std::make_unique<VirtualDispatch>(presentTime())
                                                       : nullptr),
      realTime_(options.clock == Clock::real ? std::make_unique<AsioDispatch>() : nullptr),
      settings_(openSettings(options, log_)),
      network_(CurlHttpSession::Options{.extraCaFile = options.caFile}),
      http(network_, virtualTime_.get()),
      tunnel(dispatch()),
      fakes(dispatch()) {}

Machine::~Machine() {
  if (virtualTime_) {
    virtualTime_->close();
  }
}

Dispatch& Machine::dispatch() {
  if (virtualTime_) {
    return *virtualTime_;
  }
  return *realTime_;
}

Platform Machine::ports() {
  return fakes.with(
      {.settings = *settings_, .http = http, .dispatch = dispatch(), .log = log_, .tunnel = tunnel});
}

}  // namespace quillmar::driver
