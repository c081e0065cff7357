#include "programs/quillmar/product_machine.h"

#include <QFile>
#include <QSaveFile>

#include "child/vpn_dns_manager.h"
#include "platform/linux/networkmanager_tunnel.h"

namespace quillmar {
namespace {

// A simulated tunnel finds its configuration again at the next start, as a real one would.
SimulatedTunnel::Storage storageIn(const std::filesystem::path& directory) {
  const QString path = QString::fromStdString((directory / "simulated-tunnel.txt").string());
  return {.read = [path]() -> std::optional<std::string> {
            QFile file(path);
            return file.open(QIODevice::ReadOnly) ? std::optional(file.readAll().toStdString())
                                                  : std::nullopt;
          },
          .write =
              [path](const std::string& text) {
                QSaveFile file(path);
                if (file.open(QIODevice::WriteOnly)) {
                  file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
                  file.write(text.data(), static_cast<qint64>(text.size()));
                  file.commit();
                }
              }};
}

}  // namespace

ProductMachine::ProductMachine(const Options& options)
    : log_("quillmar"),
      settings_(options.dataDirectory, log_),
      http_(CurlHttpSession::Options{.extraCaFile = options.caFile}),
      tunnel_(makeTunnel(options)) {}

ProductMachine::~ProductMachine() = default;

std::unique_ptr<TunnelService> ProductMachine::makeTunnel(const Options& options) {
  if (!options.simulatesTunnel) {
    return std::make_unique<NetworkManagerTunnel>(dispatch_, std::string(VPNDNSManager::tunnelBundleId));
  }
  auto tunnel = std::make_unique<SimulatedTunnel>(dispatch_, storageIn(options.dataDirectory));
  tunnel->behaveLikePlatform(
      [this](std::function<void(bool)> answer) { permissionPrompt_.ask(std::move(answer)); });
  return tunnel;
}

Platform ProductMachine::ports() {
  return {settings_,   http_,      dispatch_, log_,         *tunnel_,   secureItems_, biometrics_,
          deviceInfo_, clipboard_, haptics_,  windowStyle_, qrEncoder_, qrReader_};
}

}  // namespace quillmar
