#pragma once

#include <unistd.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "client/deployments.h"
#include "platform/common/absent_haptics.h"
#include "platform/common/asio_dispatch.h"
#include "platform/common/curl_http_session.h"
#include "platform/common/qrencode_encoder.h"
#include "platform/common/save_retry.h"
#include "platform/common/sqlite_settings_store.h"
#include "platform/linux/machine_name.h"
#include "platform/linux/system_log.h"
#include "platform/platform.h"
#include "programs/agent/absent_ports.h"
#include "programs/agent/options.h"
#include "programs/control/machine_ports.h"

namespace quillmar::agent {

// The program's log. Unless it tells everything, it prints only what the user must know: that settings can't
// be saved.
class AgentLog final : public Log {
 public:
  // For a command: its standard output holds only the answer, so log lines go to standard error.
  AgentLog() = default;
  // For the running agent: its standard output is the log.
  explicit AgentLog(bool tellsEverything)
      : tellsEverything_(tellsEverything), log_{"quillmar-agent", STDOUT_FILENO} {}

  void print(std::string_view line) override;
  void system(std::string_view line) override { log_.system(line); }

 private:
  const bool tellsEverything_ = false;
  SystemLog log_{"quillmar-agent", STDERR_FILENO};
};

// The agent shows no dates, so the locale and the time zone are fixed.
class AgentDeviceInfo final : public DeviceInfo {
 public:
  std::string name() const override { return machineName(); }
  std::string locale() const override { return "en_US"; }
  std::string timeZone() const override { return "UTC"; }
};

// The adapters of this computer for a program without a window.
class AgentMachine {
 public:
  AgentMachine(const Options& options, AsioDispatch& timing, Log& lines);
  AgentMachine(const AgentMachine&) = delete;
  AgentMachine& operator=(const AgentMachine&) = delete;
  ~AgentMachine();

  Platform ports() { return control::portsOf(*this); }
  // Why the settings can't be read, as a sentence; nullopt if they can.
  std::optional<std::string> problemWithSettings() const;

  AsioDispatch& dispatch;
  Log& log;
  SqliteSettingsStore settings;
  CurlHttpSession http;
  std::unique_ptr<TunnelService> tunnel;
  AbsentSecureItems secureItems;
  AbsentBiometrics biometrics;
  AgentDeviceInfo deviceInfo;
  AbsentClipboard clipboard;
  AbsentHaptics haptics;
  AbsentWindowStyle windowStyle;
  QrencodeEncoder qrEncoder;
  AbsentQRReader qrReader;

 private:
  const std::filesystem::path dataDirectory_;
  const SaveRetry saveRetry_{settings, dispatch};
};

Deployments deploymentsFor(const Options& options);

// Reads the disk again, because a full or read-only disk may not have kept a change. nullopt if it can't be
// read.
std::optional<bool> isEnrolledOnDisk(const Options& options, Log& log);

}  // namespace quillmar::agent
