#include "programs/doctor/probes.h"

#include <fcntl.h>
#include <sdbus-c++/sdbus-c++.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <fstream>
#include <functional>
#include <future>
#include <optional>
#include <system_error>
#include <utility>

#include "child/vpn_dns_manager.h"
#include "foundation/text.h"
#include "platform/common/file_descriptor.h"
#include "platform/common/private_directory.h"
#include "platform/linux/bus_names.h"
#include "platform/linux/bus_thread.h"
#include "programs/doctor/bus_question.h"
#include "programs/doctor/tunnel_state.h"

namespace quillmar::doctor {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds servicePatience{15};
constexpr int firstFailureOfServer = 500;

std::string inBrackets(const std::string& words) { return " (" + words + ")"; }

// The content of a .name file.
struct Registration {
  fs::path file;
  std::string service;
  fs::path program;
};

// Parses a key file: groups in square brackets and "key=value" lines.
Registration readRegistration(const fs::path& file) {
  Registration registration{.file = file, .service = {}, .program = {}};
  std::ifstream stream(file);
  bool inGroup = false;
  for (std::string line; std::getline(stream, line);) {
    const std::string text = trimmed(line);
    if (text.starts_with('[')) {
      inGroup = text == "[VPN Connection]";
    }
    const auto equals = text.find('=');
    if (!inGroup || equals == std::string::npos) {
      continue;
    }
    const std::string key = trimmed(text.substr(0, equals));
    const std::string value = trimmed(text.substr(equals + 1));
    if (key == "service") {
      registration.service = value;
    } else if (key == "program") {
      registration.program = value;
    }
  }
  return registration;
}

// The matching entries of a directory, sorted by name.
std::vector<fs::path> entries(const fs::path& directory, const std::function<bool(const fs::path&)>& suits) {
  std::vector<fs::path> found;
  std::error_code unreadable;
  for (fs::directory_iterator entry(directory, unreadable), end; !unreadable && entry != end;
       entry.increment(unreadable)) {
    if (suits(entry->path())) {
      found.push_back(entry->path());
    }
  }
  std::ranges::sort(found);
  return found;
}

std::optional<Registration> findRegistration(const std::vector<fs::path>& directories,
                                             std::string_view serviceType) {
  for (const fs::path& directory : directories) {
    for (const fs::path& file :
         entries(directory, [](const fs::path& path) { return path.extension() == ".name"; })) {
      if (auto registration = readRegistration(file); registration.service == serviceType) {
        return registration;
      }
    }
  }
  return std::nullopt;
}

bool isExecutable(const fs::path& program) {
  std::error_code none;
  return program.is_absolute() && fs::is_regular_file(program, none) && access(program.c_str(), X_OK) == 0;
}

DataTaskResult fetch(HttpSession& http, const std::string& url) {
  std::promise<DataTaskResult> fetched;
  http.dataTask(
      {.method = "GET", .url = url, .headers = {}, .body = std::nullopt, .timeout = servicePatience},
      [&](DataTaskResult result) { fetched.set_value(std::move(result)); });
  return fetched.get_future().get();
}

Duration leadOver(Date time) {
  return std::chrono::duration_cast<Duration>(std::chrono::system_clock::now() - time);
}

}  // namespace

Finding lookAtDataFolder(const fs::path& folder) {
  const auto unusable = [&folder](const std::string& cause) {
    return Finding{false, folder.string() + " can't be used: " + cause +
                              ". Mend that, or name another folder by --data-dir."};
  };
  if (belongsToAnother(folder)) {
    return unusable("it belongs to another user");
  }
  if (const auto state = stateOfDisk(folder)) {
    return unusable(*state);
  }
  fs::path existing = folder;
  std::error_code none;
  while (!fs::exists(existing, none) && existing.has_relative_path()) {
    existing = existing.parent_path();
  }
  if (!fs::is_directory(existing, none)) {
    return unusable(existing.string() + " is no folder");
  }
  if (access(existing.c_str(), W_OK | X_OK) != 0) {
    return unusable(existing.string() + ": " + std::generic_category().message(errno));
  }
  return {true, folder.string() + " can be written."};
}

Finding lookAtKeyring(SecureItemStore& keyring) {
  constexpr std::string_view service = "live.quillmar.doctor";
  constexpr std::string_view account = "probe";
  using Status = SecureItemStatus;
  Finding locked{false, "is locked. Unlock it in the desktop's password manager to log in without typing."};
  // An interrupted run may have left the item.
  const Status cleared = keyring.remove(service, account);
  if (cleared == Status::interactionNotAllowed) {
    return locked;
  }
  if (cleared == Status::failed) {
    return {false, "no keyring service answers. Install and start one, such as gnome-keyring."};
  }
  switch (keyring.add(service, account, "probe")) {
    case Status::success:
      break;
    case Status::interactionNotAllowed:
      return locked;
    default:
      return {false, "takes nothing in. Make a default keyring in the desktop's password manager."};
  }
  return keyring.remove(service, account) == Status::success
             ? Finding{true, "keeps the login."}
             : Finding{false, "keeps what it should forget. Restart the keyring service."};
}

Finding lookAtNetworkManager(const std::string& busAddress) {
  std::string version;
  const auto error = ask(busAddress, [&](sdbus::IConnection& bus) {
    version = sdbus::createProxy(bus, networkManager, networkManagerPath)
                  ->getProperty("Version")
                  .onInterface(networkManager)
                  .get<std::string>();
  });
  if (error) {
    return {false, "does not answer" + inBrackets(messageOf(*error)) +
                       ". Install network-manager, or start it: systemctl start NetworkManager"};
  }
  return {true, "version " + version + " runs."};
}

Finding lookAtFingerprintReader(const std::string& busAddress) {
  std::vector<std::string> fingers;
  const auto error = ask(busAddress, [&](sdbus::IConnection& bus) {
    sdbus::ObjectPath reader;
    sdbus::createProxy(bus, fprint, fprintManagerPath)
        ->callMethod("GetDefaultDevice")
        .onInterface(fprintManager)
        .storeResultsTo(reader);
    sdbus::createProxy(bus, fprint, reader)
        ->callMethod("ListEnrolledFingers")
        .onInterface(fprintDevice)
        .withArguments(std::string())
        .storeResultsTo(fingers);
  });
  const std::string problem = error ? error->getName() : "";
  if (problem == "net.reactivated.Fprint.Error.NoSuchDevice") {
    return {false, "none is connected."};
  }
  if (problem == "net.reactivated.Fprint.Error.NoEnrolledPrints" || (!error && fingers.empty())) {
    return {false, "knows no finger of yours. Enrol one: fprintd-enroll"};
  }
  if (error) {
    return {false, "can't be asked" + inBrackets(messageOf(*error)) + ". Install fprintd."};
  }
  return {true, "knows a finger of yours."};
}

Finding lookAtTunnelProgram(const std::vector<fs::path>& directories, std::string_view serviceType) {
  const auto registration = findRegistration(directories, serviceType);
  if (!registration) {
    std::string words = "none is registered for " + std::string(serviceType) + " in";
    for (const fs::path& directory : directories) {
      words += (&directory == &directories.front() ? " " : " or ") + directory.string();
    }
    return {false, words + ". Install the tunnel program."};
  }
  const std::string program = registration->program.string();
  if (!isExecutable(registration->program)) {
    return {false, registration->file.string() + " names “" + program +
                       "”, which can't be executed. Install the tunnel program again."};
  }
  return {true, program + " is registered."};
}

Finding lookAtCamera(const fs::path& devices) {
  const auto cameras =
      entries(devices, [](const fs::path& path) { return path.filename().string().starts_with("video"); });
  if (cameras.empty()) {
    return {false, "none is connected. Codes can be read from pictures."};
  }
  int problem = 0;
  for (const fs::path& camera : cameras) {
    if (const FileDescriptor opened(open(camera.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC)); opened) {
      return {true, camera.string() + " can be opened."};
    }
    problem = errno;
  }
  return {false, cameras.back().string() + " can't be opened" +
                     inBrackets(std::generic_category().message(problem)) +
                     ". Only members of the group video may use it."};
}

Finding lookAtCameraModule(const fs::path& module) {
  if (module.empty()) {
    return {false,
            "is not installed, so codes are read from pictures, the clipboard and the screen only. Install "
            "quillmar-camera."};
  }
  return {true, module.string() + " is installed."};
}

ServiceFinding lookAtService(HttpSession& http, const std::string& url) {
  const DataTaskResult result = fetch(http, url);
  if (result.error || !result.response || !result.response->status) {
    const std::string why = result.error ? result.error->localizedDescription() : "It does not speak HTTP.";
    return {.answer = {false, url + " can't be reached: " + why}};
  }
  const auto lead = result.response->date ? std::optional(leadOver(*result.response->date)) : std::nullopt;
  if (*result.response->status >= firstFailureOfServer) {
    return {.answer = {false, url + " fails, with status " + std::to_string(*result.response->status) + "."},
            .clockLead = lead};
  }
  const bool isSecured = lowercased(url).starts_with("https:");
  return {.answer = {true, url + (isSecured ? " answers, over verified TLS." : " answers, on this machine.")},
          .clockLead = lead};
}

Finding MachineProbes::networkManager() { return lookAtNetworkManager(systemBusAddress); }

Finding MachineProbes::tunnelProgram() {
  return lookAtTunnelProgram({"/etc/NetworkManager/VPN", "/usr/lib/NetworkManager/VPN"},
                             VPNDNSManager::tunnelBundleId);
}

std::optional<TunnelFindings> MachineProbes::tunnel() {
  auto state = readTunnelConnection(systemBusAddress, std::string(VPNDNSManager::tunnelBundleId));
  using Connection = TunnelState::Connection;
  const bool isSetUp = state.connection != Connection::absent && state.connection != Connection::unknown;
  if (!isSetUp && !isEnrolled_) {
    return std::nullopt;
  }
  askQuestions(state);
  return judge(state);
}

Finding MachineProbes::fingerprintReader() { return lookAtFingerprintReader(systemBusAddress); }

}  // namespace quillmar::doctor
