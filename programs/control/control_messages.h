#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "foundation/convert.h"
#include "foundation/raw_enum.h"
#include "foundation/record.h"

// What the processes of an installation say to each other. They are of one version: a package brings both
// programs.
namespace quillmar::control {

// show: bring the window to the front. yield: hand the lock over, by an agent only. The others are for
// people.
enum class Operation { show, yield, status, sync, reset };

// Which program does the work.
enum class Worker { agent, window };

}  // namespace quillmar::control

namespace quillmar {

template <>
inline constexpr std::array rawNames<control::Operation> =
    rawCases<control::Operation>({{control::Operation::show, "show"},
                                  {control::Operation::yield, "yield"},
                                  {control::Operation::status, "status"},
                                  {control::Operation::sync, "sync"},
                                  {control::Operation::reset, "reset"}});

template <>
inline constexpr std::array rawNames<control::Worker> =
    rawCases<control::Worker>({{control::Worker::agent, "agent"}, {control::Worker::window, "window"}});

}  // namespace quillmar

namespace quillmar::control {

// Records are compared and printed by the tables below.
using quillmar::operator==;
using quillmar::operator<<;

struct ControlRequest {
  std::string operation;
  // By which a desktop lets a window come to the front.
  std::optional<std::string> activationToken = {};
};

// A child's device at a glance. Of a parent's there is only the role.
struct DeviceStatus {
  std::string role;
  bool isEnrolled = false;
  std::optional<std::string> deviceID = {};
  std::optional<std::string> dohEndpoint = {};
  std::optional<std::string> dohBaseUrl = {};
  bool isConnectedToServer = false;
  std::optional<std::string> lastCheckinTime = {};  // ISO 8601
  bool isVPNConfigured = false;
  bool isVPNConnected = false;
  std::optional<std::string> vpnStatus = {};
  std::optional<std::string> warning = {};
};

struct ControlReply {
  std::optional<std::string> worker = {};
  std::optional<std::int64_t> processID = {};
  std::optional<std::string> error = {};
  std::optional<DeviceStatus> device = {};
};

}  // namespace quillmar::control

namespace quillmar {

template <>
inline constexpr auto wire<control::ControlRequest> =
    record(required("operation", &control::ControlRequest::operation),
           optional("activationToken", &control::ControlRequest::activationToken));

template <>
inline constexpr auto wire<control::DeviceStatus> =
    record(required("role", &control::DeviceStatus::role),
           required("isEnrolled", &control::DeviceStatus::isEnrolled),
           optional("deviceID", &control::DeviceStatus::deviceID),
           optional("dohEndpoint", &control::DeviceStatus::dohEndpoint),
           optional("dohBaseUrl", &control::DeviceStatus::dohBaseUrl),
           required("isConnectedToServer", &control::DeviceStatus::isConnectedToServer),
           optional("lastCheckinTime", &control::DeviceStatus::lastCheckinTime),
           required("isVPNConfigured", &control::DeviceStatus::isVPNConfigured),
           required("isVPNConnected", &control::DeviceStatus::isVPNConnected),
           optional("vpnStatus", &control::DeviceStatus::vpnStatus),
           optional("warning", &control::DeviceStatus::warning));

template <>
inline constexpr auto wire<control::ControlReply> = record(
    optional("worker", &control::ControlReply::worker),
    optional("processID", &control::ControlReply::processID),
    optional("error", &control::ControlReply::error), optional("device", &control::ControlReply::device));

}  // namespace quillmar
