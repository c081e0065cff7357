#include "sandbox/calls/calls.h"
#include "sandbox/router.h"

namespace quillmar::sandbox {
namespace {

constexpr Route table[] = {
    {"POST", "/api/v1/enrollment/init", Access::anyone, Payload::json, calls::initEnrollment},
    {"GET", "/api/v1/enrollment/status/{}", Access::anyone, Payload::none, calls::enrollmentStatus},
    {"POST", "/api/v1/enrollment/complete", Access::devices, Payload::json, calls::completeEnrollment},
    {"POST", "/api/v1/enrollment/manual", Access::devices, Payload::json, calls::manualEnrollment},
    {"POST", "/api/v1/device/checkin", Access::anyone, Payload::json, calls::checkin},

    {"POST", "/sandbox/approve", Access::anyone, Payload::json, calls::approve},
    {"GET", "/sandbox/misbehaviour", Access::anyone, Payload::none, calls::showMisbehaviour},
    {"POST", "/sandbox/misbehaviour", Access::anyone, Payload::json, calls::misbehave},
    {"POST", "/sandbox/expire-tokens", Access::anyone, Payload::none, calls::expireTokens},
    {"POST", "/sandbox/endpoint", Access::anyone, Payload::json, calls::moveEndpoint},
    {"POST", "/sandbox/clock", Access::anyone, Payload::json, calls::advanceClock},
    {"GET", "/sandbox/requests", Access::anyone, Payload::none, calls::showRequests},
    {"DELETE", "/sandbox/requests", Access::anyone, Payload::none, calls::clearRequests},
    {"POST", "/sandbox/reset", Access::anyone, Payload::none, calls::reset},
};

}  // namespace

std::span<const Route> routes() { return table; }

}  // namespace quillmar::sandbox
