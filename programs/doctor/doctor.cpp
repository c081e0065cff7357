#include "programs/doctor/doctor.h"

#include <unistd.h>

#include <system_error>

#include "app/session/role_manager.h"
#include "client/deployments.h"
#include "platform/common/curl_http_session.h"
#include "platform/common/sqlite_settings_store.h"
#include "platform/linux/system_log.h"
#include "platform/settings.h"
#include "programs/doctor/probes.h"
#include "programs/doctor/report.h"

namespace quillmar::doctor {
namespace {

struct Installation {
  DeviceRole role = DeviceRole::unset;
  std::string serviceRoot;
  bool isEnrolled = false;
};

Installation installationWith(const SettingsStore& settings, const Deployments& deployments) {
  const auto role = settings.read(settings::deviceRole);
  const auto region = settings.read(settings::region);
  const auto root = settings.read(settings::apiBaseURL);
  return {.role = fromRawValue<DeviceRole>(role.value_or("")).value_or(DeviceRole::unset),
          .serviceRoot = root ? *root : deployments.root(region.value_or("")).value_or(deployments.australia),
          .isEnrolled = settings.read(settings::childIsEnrolled).value_or(false)};
}

// Reads the installation without creating anything.
Installation installationIn(const std::filesystem::path& directory, const Deployments& deployments) {
  std::error_code none;
  if (!std::filesystem::exists(directory / SqliteSettingsStore::fileName, none)) {
    return {.role = DeviceRole::unset, .serviceRoot = deployments.australia};
  }
  SystemLog log("quillmar", STDERR_FILENO);
  SqliteSettingsStore settings(directory, log);
  return installationWith(settings, deployments);
}

}  // namespace

bool examineMachine(const Options& options, std::ostream& output) {
  const auto installation = installationIn(
      options.dataDirectory, options.service ? Deployments::all(*options.service) : Deployments::builtIn());
  CurlHttpSession http(CurlHttpSession::Options{.extraCaFile = options.caFile});
  MachineProbes probes(options.dataDirectory, http, options.keyring, options.cameraModule,
                       installation.serviceRoot + "/api/v1", installation.isEnrolled);
  const bool isAgents = options.keyring == nullptr && installation.role == DeviceRole::unset;
  const Report report = examine(probes, isAgents ? DeviceRole::child : installation.role);
  for (const std::string& line : report.lines) {
    output << line << '\n';
  }
  return report.isFit;
}

}  // namespace quillmar::doctor
