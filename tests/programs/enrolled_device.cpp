#include "tests/programs/enrolled_device.h"

#include <algorithm>
#include <stdexcept>
#include <string>

#include "child/child_app_state.h"
#include "client/records/enrollment.h"
#include "foundation/json.h"
#include "foundation/text.h"
#include "platform/common/asio_dispatch.h"
#include "platform/common/sqlite_settings_store.h"
#include "platform/settings.h"
#include "testing/recording_log.h"

namespace quillmar::test {
namespace {

template <class T>
T ask(sandbox::Service& service, const char* method, const std::string& path, const std::string& body = {}) {
  const auto answer = service.ask(method, "/api/v1/enrollment/" + path, body);
  const auto decoded = decodeJson<T>(answer.body);
  if (!decoded.ok()) {
    throw std::runtime_error(answer.body);
  }
  return decoded.value();
}

}  // namespace

void enrollDevice(sandbox::Service& service, const std::filesystem::path& dataDirectory) {
  const auto init = ask<InitEnrollmentResponse>(
      service, "POST", "init",
      R"({"device_id":")" + newUUID() + R"(","device_name":"x","device_type":"ios"})");
  service.approve(init.enrollmentCode);
  const auto status = ask<EnrollmentStatusResponse>(service, "GET", "status/" + init.deviceId);
  RecordingLog log;
  AsioDispatch dispatch;
  SqliteSettingsStore settings(dataDirectory, log);
  settings.set(settings::deviceRole, std::string("child"));
  ChildAppState(settings, dispatch)
      .saveEnrollment(init.deviceId, status.dohEndpoint.value(), status.dohBaseUrl, status.apiBaseUrl);
}

std::ptrdiff_t checkinsAt(const sandbox::Service& service) {
  const auto requests = service.requests();
  return std::ranges::count(requests, "/api/v1/device/checkin", &sandbox::Request::target);
}

}  // namespace quillmar::test
