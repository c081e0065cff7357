#pragma once

#include <optional>
#include <string>
#include <vector>

#include "client/records/device.h"
#include "foundation/record.h"

namespace quillmar {

// Sent by a child's device that wants a code.
struct InitEnrollmentRequest {
  std::string deviceId;  // made by the device itself
  std::string deviceName;
  std::string deviceType;
};

template <>
inline constexpr auto wire<InitEnrollmentRequest> =
    record(required("device_id", &InitEnrollmentRequest::deviceId),
           required("device_name", &InitEnrollmentRequest::deviceName),
           required("device_type", &InitEnrollmentRequest::deviceType));

struct InitEnrollmentResponse {
  std::string enrollmentCode;  // what the QR code carries
  std::string deviceId;        // the id that counts from here on
  std::string expiresAt;
};

template <>
inline constexpr auto wire<InitEnrollmentResponse> =
    record(required("enrollment_code", &InitEnrollmentResponse::enrollmentCode),
           required("device_id", &InitEnrollmentResponse::deviceId),
           required("expires_at", &InitEnrollmentResponse::expiresAt));

struct EnrollmentStatusResponse {
  std::string status;  // "completed", "expired"; anything else means wait
  std::string deviceId;
  std::optional<std::string> dohEndpoint;
  std::optional<std::string> dohBaseUrl;
  std::optional<std::string> apiBaseUrl;  // root of the service, without /api/v1
};

template <>
inline constexpr auto wire<EnrollmentStatusResponse> =
    record(required("status", &EnrollmentStatusResponse::status),
           required("device_id", &EnrollmentStatusResponse::deviceId),
           optional("doh_endpoint", &EnrollmentStatusResponse::dohEndpoint),
           optional("doh_base_url", &EnrollmentStatusResponse::dohBaseUrl),
           optional("api_base_url", &EnrollmentStatusResponse::apiBaseUrl));

// The text inside the QR code that a child's screen shows and a parent's camera reads. Never sent to the
// service.
struct QRCodeData {
  std::string enrollmentCode;
  std::string deviceId;
  std::string deviceName;
  std::string deviceType;
};

template <>
inline constexpr auto wire<QRCodeData> = record(required("enrollment_code", &QRCodeData::enrollmentCode),
                                                required("device_id", &QRCodeData::deviceId),
                                                required("device_name", &QRCodeData::deviceName),
                                                required("device_type", &QRCodeData::deviceType));

// Sent by the parent after the scan.
struct CompleteEnrollmentRequest {
  std::string enrollmentCode;
  std::string deviceName;
  std::optional<std::string> childId;  // links the device at once
};

template <>
inline constexpr auto wire<CompleteEnrollmentRequest> =
    record(required("enrollment_code", &CompleteEnrollmentRequest::enrollmentCode),
           required("device_name", &CompleteEnrollmentRequest::deviceName),
           optional("child_id", &CompleteEnrollmentRequest::childId));

struct CompleteEnrollmentResponse {
  std::string message;
  Device device;
  std::string dohEndpoint;
};

template <>
inline constexpr auto wire<CompleteEnrollmentResponse> =
    record(required("message", &CompleteEnrollmentResponse::message),
           required("device", &CompleteEnrollmentResponse::device),
           required("doh_endpoint", &CompleteEnrollmentResponse::dohEndpoint));

// Registers a console or a TV, which can't run the agent.
struct ManualEnrollmentRequest {
  std::string deviceName;
  std::string deviceType;  // raw value of ManualDeviceType
  std::optional<std::string> deviceIP;
  std::optional<std::string> childId;
};

template <>
inline constexpr auto wire<ManualEnrollmentRequest> =
    record(required("device_name", &ManualEnrollmentRequest::deviceName),
           required("device_type", &ManualEnrollmentRequest::deviceType),
           optional("device_ip", &ManualEnrollmentRequest::deviceIP),
           optional("child_id", &ManualEnrollmentRequest::childId));

struct SetupInstructions {
  std::string platform;
  std::string dnsServerIP;
  std::vector<std::string> steps;
};

template <>
inline constexpr auto wire<SetupInstructions> = record(required("platform", &SetupInstructions::platform),
                                                       required("dns_server_ip",
                                                                &SetupInstructions::dnsServerIP),
                                                       required("steps", &SetupInstructions::steps));

struct ManualEnrollmentResponse {
  std::string message;
  Device device;
  std::string dnsServer;  // the address to type into the device
  SetupInstructions setupInstructions;
  std::string note;
};

template <>
inline constexpr auto wire<ManualEnrollmentResponse> =
    record(required("message", &ManualEnrollmentResponse::message),
           required("device", &ManualEnrollmentResponse::device),
           required("dns_server", &ManualEnrollmentResponse::dnsServer),
           required("setup_instructions", &ManualEnrollmentResponse::setupInstructions),
           required("note", &ManualEnrollmentResponse::note));

}  // namespace quillmar
