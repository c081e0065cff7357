#include "platform/linux/machine_name.h"

#include <sdbus-c++/sdbus-c++.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <fstream>
#include <future>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/common/thread_signals.h"

namespace quillmar {
namespace {

constexpr const char* hostnameService = "org.freedesktop.hostname1";
constexpr const char* hostnameObject = "/org/freedesktop/hostname1";

std::string askHostnamed(const std::filesystem::path& busSocket, std::chrono::milliseconds timeout) {
  try {
    const auto connection = sdbus::createSessionBusConnectionWithAddress("unix:path=" + busSocket.string());
    const auto proxy = sdbus::createProxy(*connection, hostnameService, hostnameObject);
    sdbus::Variant name;
    proxy->callMethod("Get")
        .onInterface(propertiesInterface)
        .withTimeout(timeout)
        .withArguments(std::string(hostnameService), std::string("PrettyHostname"))
        .storeResultsTo(name);
    return name.get<std::string>();
  } catch (const sdbus::Error&) {
    return {};
  }
}

// On a thread that may be abandoned: connecting to a bus has no time limit.
std::string prettyNameFromBus(const std::filesystem::path& busSocket, std::chrono::milliseconds timeout) {
  std::error_code error;
  if (!std::filesystem::exists(busSocket, error)) {
    return {};
  }
  std::promise<std::string> promise;
  auto answer = promise.get_future();
  std::thread([promise = std::move(promise), busSocket, timeout]() mutable {
    blockSignalsOfThisThread();
    promise.set_value(askHostnamed(busSocket, timeout));
  }).detach();
  return answer.wait_for(timeout) == std::future_status::ready ? answer.get() : std::string();
}

// Removes a shell's quotes of either kind.
std::string unquoted(std::string_view value) {
  std::string text;
  char quote = 0;
  for (std::size_t i = 0; i < value.size(); ++i) {
    const char c = value[i];
    if (c == '\\' && quote != '\'' && i + 1 < value.size()) {
      text += value[++i];
    } else if (quote != 0 ? c == quote : c == '"' || c == '\'') {
      quote = quote != 0 ? '\0' : c;
    } else {
      text += c;
    }
  }
  return text;
}

std::string prettyNameFromFile(const std::filesystem::path& machineInfo) {
  constexpr std::string_view key = "PRETTY_HOSTNAME=";
  std::ifstream file(machineInfo);
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with(key)) {
      return unquoted(std::string_view(line).substr(key.size()));
    }
  }
  return {};
}

std::string hostName() {
  std::array<char, HOST_NAME_MAX + 1> name{};
  gethostname(name.data(), name.size() - 1);
  return name.data();
}

}  // namespace

std::string machineName(const MachineNameSources& sources) {
  std::string name = prettyNameFromBus(sources.busSocket, sources.timeout);
  if (name.empty()) {
    name = prettyNameFromFile(sources.machineInfo);
  }
  return name.empty() ? hostName() : name;
}

}  // namespace quillmar
