#pragma once

#include "sandbox/call.h"

// The calls of the service, as the route table names them.
namespace quillmar::sandbox::calls {

Answer initEnrollment(Call& call);
Answer enrollmentStatus(Call& call);
Answer completeEnrollment(Call& call);
Answer manualEnrollment(Call& call);
Answer checkin(Call& call);

// What steers the service itself.
Answer approve(Call& call);
Answer misbehave(Call& call);
Answer showMisbehaviour(Call& call);
Answer expireTokens(Call& call);
Answer moveEndpoint(Call& call);
Answer advanceClock(Call& call);
Answer showRequests(Call& call);
Answer clearRequests(Call& call);
Answer reset(Call& call);

}  // namespace quillmar::sandbox::calls
