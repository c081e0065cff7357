#include <concepts>
#include <string>
#include <utility>
#include <vector>

#include "tests/client/call_table.h"
#include "tests/client/console_answers.h"

namespace quillmar {
namespace {

template <class T>
std::function<void(NetworkService&, Completion<void>)> starting(
    std::invocable<NetworkService&, Completion<T>> auto call) {
  return [call](NetworkService& service, Completion<void> end) { call(service, ending<T>(std::move(end))); };
}

// A call that sends this text in its body.
template <class T>
Call writing(Call call, const std::string& text,
             std::invocable<NetworkService&, const std::string&, Completion<T>> auto send) {
  const auto withText = [send](const std::string& written) {
    return starting<T>([send, written](NetworkService& service, Completion<T> end) {
      send(service, written, std::move(end));
    });
  };
  call.start = withText(text);
  call.startUnwritable = withText(notUtf8);
  call.unwritableEnd = unwritableText;
  return call;
}

}  // namespace

std::vector<Call> childCalls() {
  return {
      {.name = "getChildren",
       .method = "GET",
       .path = "/children",
       .answer = R"({"children":[)" + childBody() + "]}",
       .acceptsEmptyObject = true,
       .leavesTrail = true,
       .start = starting<ChildrenResponse>([](auto& service, auto end) { service.getChildren(end); })},
      writing<ChildProfileWithDevices>({.name = "createChild",
                                        .method = "POST",
                                        .path = "/children",
                                        .body = R"({"name":"Mia"})",
                                        .answer = childBody(),
                                        .leavesTrail = true},
                                       "Mia",
                                       [](auto& service, const auto& name, auto end) {
                                         service.createChild({.name = name, .photoURL = {}, .birthYear = {}},
                                                             end);
                                       }),
      {.name = "getChild",
       .method = "GET",
       .path = "/children/c1",
       .answer = childBody(),
       .start =
           starting<ChildProfileWithDevices>([](auto& service, auto end) { service.getChild("c1", end); })},
      writing<ChildProfile>({.name = "updateChild",
                             .method = "PUT",
                             .path = "/children/c1",
                             .body = R"({"name":"Mia"})",
                             .answer = profileBody()},
                            "Mia",
                            [](auto& service, const auto& name, auto end) {
                              UpdateChildRequest changes;
                              changes.name = name;
                              service.updateChild("c1", changes, end);
                            }),
      {.name = "deleteChild",
       .method = "DELETE",
       .path = "/children/c1",
       .start = starting<void>([](auto& service, auto end) { service.deleteChild("c1", end); })},
      writing<void>(
          {.name = "linkDevice",
           .method = "POST",
           .path = "/children/c1/devices",
           .body = R"({"device_id":"d1"})"},
          "d1", [](auto& service, const auto& device, auto end) { service.linkDevice("c1", device, end); }),
      {.name = "unlinkDevice",
       .method = "DELETE",
       .path = "/children/c1/devices/d1",
       .start = starting<void>([](auto& service, auto end) { service.unlinkDevice("c1", "d1", end); })},
      writing<ChildPolicy>({.name = "updateChildPolicy",
                            .method = "PUT",
                            .path = "/children/c1/policy",
                            .body = R"({"is_blocked":false,"block_mode":"blacklist"})",
                            .answer = childPolicyBody()},
                           "blacklist",
                           [](auto& service, const auto& mode, auto end) {
                             service.updateChildPolicy("c1", false, mode, end);
                           }),
      writing<ChildPolicy>({.name = "addChildBlockedDomain",
                            .method = "POST",
                            .path = "/children/c1/policy/block",
                            .body = R"({"domain":"x.example"})",
                            .answer = childPolicyBody()},
                           "x.example",
                           [](auto& service, const auto& domain, auto end) {
                             service.addChildBlockedDomain("c1", domain, end);
                           }),
      {.name = "removeChildBlockedDomain",
       .method = "DELETE",
       .path = "/children/c1/policy/block/x.example",
       .answer = childPolicyBody(),
       .start = starting<ChildPolicy>(
           [](auto& service, auto end) { service.removeChildBlockedDomain("c1", "x.example", end); })},
      writing<ChildPolicy>({.name = "addChildAllowedDomain",
                            .method = "POST",
                            .path = "/children/c1/policy/allow",
                            .body = R"({"domain":"x.example"})",
                            .answer = childPolicyBody()},
                           "x.example",
                           [](auto& service, const auto& domain, auto end) {
                             service.addChildAllowedDomain("c1", domain, end);
                           }),
      {.name = "removeChildAllowedDomain",
       .method = "DELETE",
       .path = "/children/c1/policy/allow/x.example",
       .answer = childPolicyBody(),
       .start = starting<ChildPolicy>(
           [](auto& service, auto end) { service.removeChildAllowedDomain("c1", "x.example", end); })},
  };
}

std::vector<Call> deviceCalls() {
  return {
      {.name = "deleteDevice",
       .method = "DELETE",
       .path = "/devices/d1",
       .start = starting<void>([](auto& service, auto end) { service.deleteDevice("d1", end); })},
      writing<Device>({.name = "updateDevice",
                       .method = "PUT",
                       .path = "/devices/d1",
                       .body = R"({"friendly_name":"Mia's","device_name":"Tablet"})",
                       .answer = deviceBody()},
                      "Mia's",
                      [](auto& service, const auto& name, auto end) {
                        service.updateDevice("d1", {.friendlyName = name, .deviceName = "Tablet"}, end);
                      }),
      {.name = "getDevicePolicy",
       .method = "GET",
       .path = "/devices/d1/policy",
       .answer = devicePolicyBody(),
       .start = starting<DevicePolicy>([](auto& service, auto end) { service.getDevicePolicy("d1", end); })},
      writing<DevicePolicy>({.name = "updateDevicePolicy",
                             .method = "PUT",
                             .path = "/devices/d1/policy",
                             .body = R"({"is_blocked":true,"block_mode":"whitelist"})",
                             .answer = devicePolicyBody()},
                            "whitelist",
                            [](auto& service, const auto& mode, auto end) {
                              service.updateDevicePolicy("d1", true, mode, end);
                            }),
      writing<void>(
          {.name = "addBlockedDomain",
           .method = "POST",
           .path = "/devices/d1/policy/block",
           .body = R"({"domain":"x.example"})"},
          "x.example",
          [](auto& service, const auto& domain, auto end) { service.addBlockedDomain("d1", domain, end); }),
      {.name = "removeBlockedDomain",
       .method = "DELETE",
       .path = "/devices/d1/policy/block/x.example",
       .start = starting<void>(
           [](auto& service, auto end) { service.removeBlockedDomain("d1", "x.example", end); })},
      writing<void>(
          {.name = "addAllowedDomain",
           .method = "POST",
           .path = "/devices/d1/policy/allow",
           .body = R"({"domain":"x.example"})"},
          "x.example",
          [](auto& service, const auto& domain, auto end) { service.addAllowedDomain("d1", domain, end); }),
      {.name = "removeAllowedDomain",
       .method = "DELETE",
       .path = "/devices/d1/policy/allow/x.example",
       .start = starting<void>(
           [](auto& service, auto end) { service.removeAllowedDomain("d1", "x.example", end); })},
      {.name = "getDeviceLogs",
       .method = "GET",
       .path = "/devices/d1/logs?limit=25&offset=50",
       .answer = logsBody({}),
       .start = starting<std::vector<DNSLog>>(
           [](auto& service, auto end) { service.getDeviceLogs("d1", 25, 50, end); })},
      {.name = "getRecentDeviceLogs",
       .method = "GET",
       .path = "/devices/d1/logs?limit=20&since=2016-10-08T22:30:00Z",
       .ending = Ending::onMainQueue,
       .answer = logsBody({}),
       .start = starting<std::vector<DNSLog>>([](auto& service, auto end) {
         service.getRecentDeviceLogs({"d1"}, std::chrono::seconds(60), 20, end);
       })},
  };
}

std::vector<Call> familyCalls() {
  return {
      {.name = "getHomeNetwork",
       .method = "GET",
       .path = "/home-network",
       .answer = R"({"current_ip":"192.0.2.7","ip_matches":false})",
       .start = starting<HomeNetworkResponse>([](auto& service, auto end) { service.getHomeNetwork(end); })},
      writing<CreateHomeNetworkResponse>(
          {.name = "createHomeNetwork",
           .method = "POST",
           .path = "/home-network",
           .body = R"({"name":"Home","confirm":true})",
           .answer = createdNetworkBody()},
          "Home",
          [](auto& service, const auto& name, auto end) { service.createHomeNetwork(name, true, end); }),
      {.name = "updateHomeNetworkIP",
       .method = "POST",
       .path = "/home-network/update-ip",
       .body = R"({"confirm":true})",
       .answer = R"({"message":"m","public_ip":"192.0.2.7","updated_at":"u"})",
       .start = starting<UpdateHomeNetworkIPResponse>(
           [](auto& service, auto end) { service.updateHomeNetworkIP(end); })},
      {.name = "getFamily",
       .method = "GET",
       .path = "/family",
       .answer = R"({"members":[],"is_primary":true})",
       .start = starting<FamilyResponse>([](auto& service, auto end) { service.getFamily(end); })},
      writing<CreateInvitationResponse>(
          {.name = "createInvitation",
           .method = "POST",
           .path = "/family/invite",
           .body = R"({"invitee_name":"Sam"})",
           .answer = R"({"invite_code":"ABC123","expires_at":"e","qr_data":"q"})"},
          "Sam", [](auto& service, const auto& name, auto end) { service.createInvitation(name, end); }),
      {.name = "revokeInvitation",
       .method = "DELETE",
       .path = "/family/invite/i1",
       .start = starting<void>([](auto& service, auto end) { service.revokeInvitation("i1", end); })},
      {.name = "validateInvite",
       .method = "GET",
       .path = "/family/invite/ABC123",
       .token = Token::none,
       .judging = Judging::byBody,
       .answer = R"({"valid":true})",
       .start = starting<ValidateInviteResponse>(
           [](auto& service, auto end) { service.validateInvite("ABC123", end); })},
      {.name = "updateMemberPermissions",
       .method = "PUT",
       .path = "/family/members/m1",
       .body = R"({"can_manage_devices":false,"can_manage_policies":true,"is_active":true})",
       .start = starting<void>([](auto& service, auto end) {
         service.updateMemberPermissions(
             "m1", {.canManageDevices = false, .canManagePolicies = true, .isActive = true}, end);
       })},
      {.name = "removeMember",
       .method = "DELETE",
       .path = "/family/members/m1",
       .start = starting<void>([](auto& service, auto end) { service.removeMember("m1", end); })},
      writing<JoinFamilyResponse>(
          {.name = "joinFamily",
           .method = "POST",
           .path = "/family/join",
           .body =
               R"({"invite_code":"ABC123","email":"sam@example.org","password":"secret-password","display_name":"Sam"})",
           .token = Token::none,
           .judging = Judging::below400,
           .answer = joinedBody()},
          "Sam",
          [](auto& service, const auto& name, auto end) {
            JoinFamilyRequest account = newParent;
            account.displayName = name;
            service.joinFamily(account, end);
          }),
  };
}

}  // namespace quillmar
