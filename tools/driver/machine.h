#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/common/asio_dispatch.h"
#include "platform/common/curl_http_session.h"
#include "platform/platform.h"
#include "platform/simulated/simulated_tunnel.h"
#include "testing/fake_ports.h"
#include "testing/settling_http_session.h"
#include "testing/virtual_dispatch.h"

namespace quillmar::driver {

enum class Clock { real, virtualTime };

struct Options {
  std::optional<std::filesystem::path> dataDirectory{};  // nullopt: settings are in memory only
  std::optional<std::string> service{};                  // replaces all deployments
  std::string caFile{};                                  // trusted beside the system's
  Clock clock = Clock::real;
  bool events = false;
};

// Passes every line to `sink`, with the name of the log that it is for.
class EventLog final : public Log {
 public:
  using Sink = std::function<void(std::string_view sink, std::string_view line)>;
  explicit EventLog(Sink sink) : sink_(std::move(sink)) {}

  void print(std::string_view line) override { sink_("stdout", line); }
  void system(std::string_view line) override { sink_("system", line); }

 private:
  Sink sink_;
};

// The machine of a driven application: settings and network are real, the rest is simulated and steered by
// requests.
class Machine {
 public:
  Machine(const Options& options, EventLog::Sink sink);
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;
  ~Machine();

  Platform ports();
  // Exactly one of the two is non-null, per Options::clock.
  VirtualDispatch* virtualTime() { return virtualTime_.get(); }
  AsioDispatch* realTime() { return realTime_.get(); }
  Dispatch& dispatch();

 private:
  EventLog log_;
  std::unique_ptr<VirtualDispatch> virtualTime_;
  std::unique_ptr<AsioDispatch> realTime_;
  std::unique_ptr<SettingsStore> settings_;
  CurlHttpSession network_;

 public:
  SettlingHttpSession http;
  SimulatedTunnel tunnel;
  FakePorts fakes;
};

}  // namespace quillmar::driver
