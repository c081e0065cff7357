#pragma once

#include "client/call.h"
#include "client/records/checkin.h"
#include "client/records/enrollment.h"

// Enrollment and check-in. A child's device has no account, so its calls send no token. They accept only
// status 200.
namespace quillmar::calls {

extern const CallLog<CheckinRequest, CheckinResponse> checkinLog;
extern const CallLog<ManualEnrollmentRequest, ManualEnrollmentResponse> manualEnrollmentLog;

inline constexpr CallRules ofUnknownDevice{
    .token = Token::none, .judging = Judging::byExactly200, .root = Root::orDefault};

inline constexpr Call<InitEnrollmentRequest, InitEnrollmentResponse> initEnrollment{
    "POST", "/enrollment/init", ofUnknownDevice};
inline constexpr CallRow<NoBody, EnrollmentStatusResponse, 1> getEnrollmentStatus{
    "GET", "/enrollment/status/{}", ofUnknownDevice};
inline constexpr CallRow<CompleteEnrollmentRequest, CompleteEnrollmentResponse> completeEnrollment{
    "POST", "/enrollment/complete"};
inline constexpr Call<ManualEnrollmentRequest, ManualEnrollmentResponse> manualEnrollment{
    "POST", "/enrollment/manual", {}, &manualEnrollmentLog};
inline constexpr CallRow<CheckinRequest, CheckinResponse> checkin{
    "POST", "/device/checkin", {.token = Token::none, .judging = Judging::byExactly200}, &checkinLog};

}  // namespace quillmar::calls
