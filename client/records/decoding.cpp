// The only source that decodes the service's answers and QR codes.

#include "client/records/account.h"
#include "client/records/checkin.h"
#include "client/records/child.h"
#include "client/records/device.h"
#include "client/records/device_policy.h"
#include "client/records/dns_log.h"
#include "client/records/enrollment.h"
#include "client/records/error_response.h"
#include "client/records/family.h"
#include "client/records/home_network.h"
#include "foundation/json_decode.h"

namespace quillmar {

template Result<AuthResponse> decodeJson(std::string_view text);
template Result<CheckinResponse> decodeJson(std::string_view text);
template Result<ChildPolicy> decodeJson(std::string_view text);
template Result<ChildProfile> decodeJson(std::string_view text);
template Result<ChildProfileWithDevices> decodeJson(std::string_view text);
template Result<ChildrenResponse> decodeJson(std::string_view text);
template Result<CompleteEnrollmentResponse> decodeJson(std::string_view text);
template Result<CreateHomeNetworkResponse> decodeJson(std::string_view text);
template Result<CreateInvitationResponse> decodeJson(std::string_view text);
template Result<Device> decodeJson(std::string_view text);
template Result<DevicePolicy> decodeJson(std::string_view text);
template Result<DNSLogsResponse> decodeJson(std::string_view text);
template Result<EnrollmentStatusResponse> decodeJson(std::string_view text);
template Result<ErrorResponse> decodeJson(std::string_view text);
template Result<FamilyResponse> decodeJson(std::string_view text);
template Result<HomeNetworkResponse> decodeJson(std::string_view text);
template Result<InitEnrollmentResponse> decodeJson(std::string_view text);
template Result<JoinFamilyResponse> decodeJson(std::string_view text);
template Result<ManualEnrollmentResponse> decodeJson(std::string_view text);
template Result<QRCodeData> decodeJson(std::string_view text);
template Result<UpdateHomeNetworkIPResponse> decodeJson(std::string_view text);
template Result<ValidateInviteResponse> decodeJson(std::string_view text);

}  // namespace quillmar
