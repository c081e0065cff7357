#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "foundation/convert.h"
#include "foundation/raw_enum.h"
#include "foundation/record.h"

// The messages between the processes of an installation. All processes have the same version, because one
// package holds both programs.
namespace quillmar::control {

// show: bring the window to the front. yield: hand over the lock (agent only). The others serve the user's
// commands.
enum class Operation { show, yield, status, sync, reset };

// The program that does the work.
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

// The tables below define how records are compared and printed.
using quillmar::operator==;
using quillmar::operator<<;

struct ControlRequest {
  std::string operation;
  // The desktop's token that lets a window come to the front.
  std::optional<std::string> activationToken = {};
};

// The state of a child's device. For a parent's device only the role is set.
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
