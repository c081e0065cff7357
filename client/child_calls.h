#pragma once

#include "client/call.h"
#include "client/records/child.h"

// Path arguments are not encoded, so a domain with a blank fails with `invalidResponse`. `getChildren` and
// `createChild` write to the system log.
namespace quillmar::calls {

extern const CallLog<NoBody, ChildrenResponse> getChildrenLog;
extern const CallLog<CreateChildRequest, ChildProfileWithDevices> createChildLog;

inline constexpr Call<NoBody, ChildrenResponse> getChildren{"GET", "/children", {}, &getChildrenLog};
inline constexpr Call<CreateChildRequest, ChildProfileWithDevices> createChild{
    "POST", "/children", {}, &createChildLog};
inline constexpr Call<NoBody, ChildProfileWithDevices, 1> getChild{"GET", "/children/{}"};
inline constexpr Call<UpdateChildRequest, ChildProfile, 1> updateChild{"PUT", "/children/{}"};
inline constexpr Call<NoBody, void, 1> deleteChild{"DELETE", "/children/{}"};
inline constexpr Call<LinkDeviceRequest, void, 1> linkDevice{"POST", "/children/{}/devices"};
inline constexpr Call<NoBody, void, 2> unlinkDevice{"DELETE", "/children/{}/devices/{}"};
inline constexpr Call<UpdateChildPolicyRequest, ChildPolicy, 1> updateChildPolicy{"PUT",
                                                                                  "/children/{}/policy"};
inline constexpr Call<AddDomainRequest, ChildPolicy, 1> addChildBlockedDomain{"POST",
                                                                              "/children/{}/policy/block"};
inline constexpr Call<NoBody, ChildPolicy, 2> removeChildBlockedDomain{"DELETE",
                                                                       "/children/{}/policy/block/{}"};
inline constexpr Call<AddDomainRequest, ChildPolicy, 1> addChildAllowedDomain{"POST",
                                                                              "/children/{}/policy/allow"};
inline constexpr Call<NoBody, ChildPolicy, 2> removeChildAllowedDomain{"DELETE",
                                                                       "/children/{}/policy/allow/{}"};

}  // namespace quillmar::calls
