#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/http_session.h"
#include "platform/secure_item_store.h"
#include "programs/doctor/report.h"

namespace quillmar::doctor {

// Whether an installation can be kept there. Makes nothing.
Finding lookAtDataFolder(const std::filesystem::path& folder);

// Stores an item and removes it again. Never prompts.
Finding lookAtKeyring(SecureItemStore& keyring);

// The bus address has the form "unix:path=".
Finding lookAtNetworkManager(const std::string& busAddress);
Finding lookAtFingerprintReader(const std::string& busAddress);

// Whether a program is registered with NetworkManager for this type of VPN service, and can be executed. The
// first ".name" file of these directories that names the type counts.
Finding lookAtTunnelProgram(const std::vector<std::filesystem::path>& directories,
                            std::string_view serviceType);

// Whether any video device in this directory can be opened.
Finding lookAtCamera(const std::filesystem::path& devices);

// Whether the camera module is installed; its path is empty if not.
Finding lookAtCameraModule(const std::filesystem::path& module);

// Any answer counts, except a server error.
ServiceFinding lookAtService(HttpSession& http, const std::string& url);

// Examines this machine, and the service over this machine's network.
class MachineProbes final : public Probes {
 public:
  // `keyring` is null for a program without a window.
  MachineProbes(std::filesystem::path dataFolder, HttpSession& http, SecureItemStore* keyring,
                std::filesystem::path cameraModule, std::string serviceURL, bool isEnrolled)
      : dataFolder_(std::move(dataFolder)),
        http_(http),
        keyring_(keyring),
        cameraModule_(std::move(cameraModule)),
        serviceURL_(std::move(serviceURL)),
        isEnrolled_(isEnrolled) {}

  bool areForWindow() const override { return keyring_ != nullptr; }
  Finding dataFolder() override { return lookAtDataFolder(dataFolder_); }
  Finding keyring() override { return lookAtKeyring(*keyring_); }
  Finding networkManager() override;
  Finding tunnelProgram() override;
  std::optional<TunnelFindings> tunnel() override;
  Finding fingerprintReader() override;
  Finding camera() override { return lookAtCamera("/dev"); }
  Finding cameraModule() override { return lookAtCameraModule(cameraModule_); }
  ServiceFinding service() override { return lookAtService(http_, serviceURL_); }

 private:
  const std::filesystem::path dataFolder_;
  HttpSession& http_;
  SecureItemStore* const keyring_;
  const std::filesystem::path cameraModule_;
  const std::string serviceURL_;
  const bool isEnrolled_;
};

}  // namespace quillmar::doctor
