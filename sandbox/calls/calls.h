#pragma once

#include "sandbox/call.h"
#include "sandbox/store/policies.h"

// The handlers of the route table.
namespace quillmar::sandbox::calls {

Answer registerAccount(Call& call);
Answer login(Call& call);
Answer refreshToken(Call& call);
Answer deleteAccount(Call& call);

Answer initEnrollment(Call& call);
Answer enrollmentStatus(Call& call);
Answer completeEnrollment(Call& call);
Answer manualEnrollment(Call& call);
Answer checkin(Call& call);

Answer deleteDevice(Call& call);
Answer updateDevice(Call& call);
Answer deviceLogs(Call& call);

Answer listChildren(Call& call);
Answer createChild(Call& call);
Answer showChild(Call& call);
Answer updateChild(Call& call);
Answer deleteChild(Call& call);
Answer linkDevice(Call& call);
Answer unlinkDevice(Call& call);

// The same for devices and children. A change of a device's list answers without a body, a change of a
// child's with the policy.
template <Owner owner>
Answer showPolicy(Call& call);
template <Owner owner>
Answer updatePolicy(Call& call);
template <Owner owner, List list>
Answer addToList(Call& call);
template <Owner owner, List list>
Answer removeFromList(Call& call);

Answer showFamily(Call& call);
Answer createInvitation(Call& call);
Answer revokeInvitation(Call& call);
Answer validateInvitation(Call& call);
Answer joinFamily(Call& call);
Answer updateMember(Call& call);
Answer removeMember(Call& call);

Answer showHomeNetwork(Call& call);
Answer createHomeNetwork(Call& call);
Answer updateHomeNetworkAddress(Call& call);

// DNS over HTTPS for one device.
Answer dnsByGet(Call& call);
Answer dnsByPost(Call& call);

// Control of the service itself.
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
