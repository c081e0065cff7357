#include "programs/control/control_handler.h"

#include <unistd.h>

#include <optional>
#include <utility>

#include "app/session/role_manager.h"
#include "child/background_service.h"
#include "child/child_app_state.h"
#include "child/protection_actions.h"
#include "child/vpn_dns_manager.h"
#include "client/network_error.h"
#include "foundation/date_format.h"
#include "foundation/json.h"
#include "foundation/json_decode.h"
#include "platform/transport_error.h"

template quillmar::Result<quillmar::control::ControlReply> quillmar::decodeJson(std::string_view text);
template quillmar::Result<quillmar::control::ControlRequest> quillmar::decodeJson(std::string_view text);

namespace quillmar::control {
namespace {

std::optional<std::string> unlessEmpty(const std::string& text) {
  return text.empty() ? std::nullopt : std::optional(text);
}

std::string lineOf(const ControlReply& reply) {
  const auto text = encodeJson(reply);
  return text.ok() ? text.value() : R"({"error":"The answer can't be written."})";
}

// The published changes that end a check-in, failed or succeeded.
bool isEndOfCheckin(const ChildAppState& state, const Member& changed) {
  return &changed == &state.lastCheckinTime ||
         (&changed == &state.isConnectedToServer && !state.isConnectedToServer());
}

// False for errors of a request that did not reach the service.
bool isFromService(const Error& error) {
  using Kind = TransportError::Kind;
  if (const auto* transport = error.as<TransportError>()) {
    return transport->kind == Kind::badServerResponse || transport->kind == Kind::httpTooManyRedirects;
  }
  return !(error == NetworkError::noRegionConfigured() || error == NetworkError::encodingError());
}

}  // namespace

std::string checkinFailure(const Error& error) {
  const std::string text = error.localizedDescription();
  if (isFromService(error)) {
    return "The service answered with an error: " + text;
  }
  return error.as<TransportError>() ? "The service can't be reached: " + text : text;
}

DeviceStatus statusOf(Environment& environment) {
  const DeviceRole role = environment.roleManager()->currentRole();
  DeviceStatus status{.role = std::string(rawValue(role))};
  if (role != DeviceRole::child) {
    return status;
  }
  const ChildAppState& child = *environment.childAppState();
  status.isEnrolled = child.isEnrolled();
  if (!child.isEnrolled()) {
    return status;
  }
  const VPNDNSManager& vpn = *environment.vpnManager();
  status.deviceID = child.deviceID();
  status.dohEndpoint = child.dohEndpoint();
  status.dohBaseUrl = unlessEmpty(child.dohBaseUrl());
  status.isConnectedToServer = child.isConnectedToServer();
  if (const auto time = child.lastCheckinTime()) {
    status.lastCheckinTime = formatISO8601(*time);
  }
  status.isVPNConfigured = vpn.isConfigured();
  status.isVPNConnected = vpn.isConnected();
  status.vpnStatus = vpn.statusMessage();
  status.warning = unlessEmpty(child.dohConfigWarning());
  return status;
}

ControlHandler::ControlHandler(Environment& environment, Duties duties)
    : environment_(environment), duties_(std::move(duties)) {}

void ControlHandler::handle(const std::string& line, ControlServer::Reply reply) {
  const auto request = decodeJson<ControlRequest>(line);
  const auto operation = request.ok() ? fromRawValue<Operation>(request.value().operation) : std::nullopt;
  if (!operation) {
    reply({answer("The request can't be understood.")});
  } else if (*operation == Operation::yield) {
    yield(std::move(reply));
  } else if (*operation == Operation::sync) {
    sync(std::move(reply));
  } else {
    reply({answerTo(*operation, request.value())});
  }
}

std::string ControlHandler::answerTo(Operation operation, const ControlRequest& request) {
  if (operation == Operation::show && duties_.show) {
    duties_.show(request.activationToken.value_or(""));
  } else if (operation == Operation::reset) {
    resetEnrollment(environment_);
  }
  return answer();
}

std::string ControlHandler::answer(const std::optional<std::string>& error) {
  return lineOf({.worker = std::string(rawValue(duties_.worker)),
                 .processID = ::getpid(),
                 .error = error,
                 .device = statusOf(environment_)});
}

void ControlHandler::yield(ControlServer::Reply reply) {
  if (!duties_.yield) {
    reply({answer("This program keeps the work.")});
    return;
  }
  duties_.yield([reply = std::move(reply), line = answer()](FileDescriptor lock) {
    reply({line, std::move(lock)});
  });
}

void ControlHandler::sync(ControlServer::Reply reply) {
  const auto child = environment_.childAppState();
  if (environment_.roleManager()->currentRole() != DeviceRole::child || !child->isEnrolled()) {
    reply({answer("This device is not enrolled.")});
    return;
  }
  syncing_.push_back(std::move(reply));
  checkins_ = child->observe([this, &state = *child](const Member& changed) {
    if (isEndOfCheckin(state, changed)) {
      endSync();
    }
  });
  if (auto& service = *environment_.backgroundService(); service.isCheckinTimerRunning()) {
    forceSync(environment_);
  } else {
    service.start(child);
  }
}

void ControlHandler::endSync() {
  const Subscription ended = std::exchange(checkins_, Subscription());
  const auto& error = environment_.backgroundService()->checkinError();
  const auto problem = error ? std::optional(checkinFailure(*error)) : std::nullopt;
  for (const auto& reply : std::exchange(syncing_, {})) {
    reply({answer(problem)});
  }
}

}  // namespace quillmar::control
