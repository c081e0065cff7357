#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "platform/http_session.h"
#include "platform/secure_item_store.h"
#include "programs/doctor/report.h"

namespace quillmar::doctor {

// Puts an item there and takes it away again. Never prompts.
Finding lookAtKeyring(SecureItemStore& keyring);

// The two that are asked over the bus at an address of "unix:path=".
Finding lookAtNetworkManager(const std::string& busAddress);
Finding lookAtFingerprintReader(const std::string& busAddress);

// Whether a program is registered with NetworkManager for this type of VPN service, by the first ".name" file
// of these directories that names the type, and can be executed.
Finding lookAtTunnelProgram(const std::vector<std::filesystem::path>& directories,
                            std::string_view serviceType);

// Whether any video device of this directory can be opened.
Finding lookAtCamera(const std::filesystem::path& devices);

// Whether the window's part that reads codes with a camera is there; its path is empty where it isn't.
Finding lookAtCameraModule(const std::filesystem::path& module);

// Any answer will do that is none of a failing server.
ServiceFinding lookAtService(HttpSession& http, const std::string& url);

// This machine, and the service as it is reached from here.
class MachineProbes final : public Probes {
 public:
  // Without a keyring for a program without a window.
  MachineProbes(HttpSession& http, SecureItemStore* keyring, std::filesystem::path cameraModule,
                std::string serviceURL)
      : http_(http),
        keyring_(keyring),
        cameraModule_(std::move(cameraModule)),
        serviceURL_(std::move(serviceURL)) {}

  bool areForWindow() const override { return keyring_ != nullptr; }
  Finding keyring() override { return lookAtKeyring(*keyring_); }
  Finding networkManager() override;
  Finding tunnelProgram() override;
  Finding fingerprintReader() override;
  Finding camera() override { return lookAtCamera("/dev"); }
  Finding cameraModule() override { return lookAtCameraModule(cameraModule_); }
  ServiceFinding service() override { return lookAtService(http_, serviceURL_); }

 private:
  HttpSession& http_;
  SecureItemStore* const keyring_;
  const std::filesystem::path cameraModule_;
  const std::string serviceURL_;
};

}  // namespace quillmar::doctor
