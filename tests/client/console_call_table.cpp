#include <concepts>
#include <string>
#include <utility>
#include <vector>

#include "client/child_calls.h"
#include "client/device_calls.h"
#include "client/family_calls.h"
#include "client/home_network_calls.h"
#include "tests/client/call_table.h"
#include "tests/client/console_answers.h"

namespace quillmar {
namespace {

template <class T>
std::function<void(NetworkService&, Completion<void>)> starting(
    std::invocable<NetworkService&, Completion<T>> auto call) {
  return [call](NetworkService& service, Completion<void> end) { call(service, ending<T>(std::move(end))); };
}

// A call with this text in its body.
template <class T>
ContractCall writing(ContractCall call, const std::string& text,
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

std::vector<ContractCall> childCalls() {
  return {
      {.name = "getChildren",
       .method = "GET",
       .path = "/children",
       .answer = R"({"children":[)" + childBody() + "]}",
       .answerRecord = "ChildrenResponse",
       .acceptsEmptyObject = true,
       .leavesTrail = true,
       .start = starting<ChildrenResponse>(
           [](auto& service, auto end) { service.send(calls::getChildren, end); })},
      writing<ChildProfileWithDevices>({.name = "createChild",
                                        .method = "POST",
                                        .path = "/children",
                                        .body = R"({"name":"Mia"})",
                                        .bodyRecord = "CreateChildRequest",
                                        .answer = childBody(),
                                        .answerRecord = "ChildProfileWithDevices",
                                        .leavesTrail = true},
                                       "Mia",
                                       [](auto& service, const auto& name, auto end) {
                                         service.send(calls::createChild,
                                                      {.name = name, .photoURL = {}, .birthYear = {}}, end);
                                       }),
      {.name = "getChild",
       .method = "GET",
       .path = "/children/c1",
       .pattern = "/children/{}",
       .answer = childBody(),
       .answerRecord = "ChildProfileWithDevices",
       .start = starting<ChildProfileWithDevices>(
           [](auto& service, auto end) { service.send(calls::getChild, {"c1"}, end); })},
      writing<ChildProfile>({.name = "updateChild",
                             .method = "PUT",
                             .path = "/children/c1",
                             .pattern = "/children/{}",
                             .body = R"({"name":"Mia"})",
                             .bodyRecord = "UpdateChildRequest",
                             .answer = profileBody(),
                             .answerRecord = "ChildProfile"},
                            "Mia",
                            [](auto& service, const auto& name, auto end) {
                              UpdateChildRequest changes;
                              changes.name = name;
                              service.send(calls::updateChild, {"c1"}, changes, end);
                            }),
      {.name = "deleteChild",
       .method = "DELETE",
       .path = "/children/c1",
       .pattern = "/children/{}",
       .start =
           starting<void>([](auto& service, auto end) { service.send(calls::deleteChild, {"c1"}, end); })},
      writing<void>({.name = "linkDevice",
                     .method = "POST",
                     .path = "/children/c1/devices",
                     .pattern = "/children/{}/devices",
                     .body = R"({"device_id":"d1"})",
                     .bodyRecord = "LinkDeviceRequest"},
                    "d1",
                    [](auto& service, const auto& device, auto end) {
                      service.send(calls::linkDevice, {"c1"}, {device}, end);
                    }),
      {.name = "unlinkDevice",
       .method = "DELETE",
       .path = "/children/c1/devices/d1",
       .pattern = "/children/{}/devices/{}",
       .start = starting<void>([](auto& service, auto end) {
         service.send(calls::unlinkDevice, {"c1", "d1"}, end);
       })},
      writing<ChildPolicy>({.name = "updateChildPolicy",
                            .method = "PUT",
                            .path = "/children/c1/policy",
                            .pattern = "/children/{}/policy",
                            .body = R"({"is_blocked":false,"block_mode":"blacklist"})",
                            .bodyRecord = "UpdatePolicyRequest",
                            .answer = childPolicyBody(),
                            .answerRecord = "ChildPolicy"},
                           "blacklist",
                           [](auto& service, const auto& mode, auto end) {
                             service.send(calls::updateChildPolicy, {"c1"}, {false, mode}, end);
                           }),
      writing<ChildPolicy>({.name = "addChildBlockedDomain",
                            .method = "POST",
                            .path = "/children/c1/policy/block",
                            .pattern = "/children/{}/policy/block",
                            .body = R"({"domain":"x.example"})",
                            .bodyRecord = "AddDomainRequest",
                            .answer = childPolicyBody(),
                            .answerRecord = "ChildPolicy"},
                           "x.example",
                           [](auto& service, const auto& domain, auto end) {
                             service.send(calls::addChildBlockedDomain, {"c1"}, {domain}, end);
                           }),
      {.name = "removeChildBlockedDomain",
       .method = "DELETE",
       .path = "/children/c1/policy/block/x.example",
       .pattern = "/children/{}/policy/block/{}",
       .answer = childPolicyBody(),
       .answerRecord = "ChildPolicy",
       .start = starting<ChildPolicy>([](auto& service, auto end) {
         service.send(calls::removeChildBlockedDomain, {"c1", "x.example"}, end);
       })},
      writing<ChildPolicy>({.name = "addChildAllowedDomain",
                            .method = "POST",
                            .path = "/children/c1/policy/allow",
                            .pattern = "/children/{}/policy/allow",
                            .body = R"({"domain":"x.example"})",
                            .bodyRecord = "AddDomainRequest",
                            .answer = childPolicyBody(),
                            .answerRecord = "ChildPolicy"},
                           "x.example",
                           [](auto& service, const auto& domain, auto end) {
                             service.send(calls::addChildAllowedDomain, {"c1"}, {domain}, end);
                           }),
      {.name = "removeChildAllowedDomain",
       .method = "DELETE",
       .path = "/children/c1/policy/allow/x.example",
       .pattern = "/children/{}/policy/allow/{}",
       .answer = childPolicyBody(),
       .answerRecord = "ChildPolicy",
       .start = starting<ChildPolicy>([](auto& service, auto end) {
         service.send(calls::removeChildAllowedDomain, {"c1", "x.example"}, end);
       })},
  };
}

std::vector<ContractCall> deviceCalls() {
  return {
      {.name = "deleteDevice",
       .method = "DELETE",
       .path = "/devices/d1",
       .pattern = "/devices/{}",
       .start =
           starting<void>([](auto& service, auto end) { service.send(calls::deleteDevice, {"d1"}, end); })},
      writing<Device>({.name = "updateDevice",
                       .method = "PUT",
                       .path = "/devices/d1",
                       .pattern = "/devices/{}",
                       .body = R"({"friendly_name":"Mia's","device_name":"Tablet"})",
                       .bodyRecord = "UpdateDeviceRequest",
                       .answer = deviceBody(),
                       .answerRecord = "Device"},
                      "Mia's",
                      [](auto& service, const auto& name, auto end) {
                        service.send(calls::updateDevice, {"d1"},
                                     {.friendlyName = name, .deviceName = "Tablet"}, end);
                      }),
      {.name = "getDevicePolicy",
       .method = "GET",
       .path = "/devices/d1/policy",
       .pattern = "/devices/{}/policy",
       .answer = devicePolicyBody(),
       .answerRecord = "DevicePolicy",
       .start = starting<DevicePolicy>(
           [](auto& service, auto end) { service.send(calls::getDevicePolicy, {"d1"}, end); })},
      writing<DevicePolicy>({.name = "updateDevicePolicy",
                             .method = "PUT",
                             .path = "/devices/d1/policy",
                             .pattern = "/devices/{}/policy",
                             .body = R"({"is_blocked":true,"block_mode":"whitelist"})",
                             .bodyRecord = "UpdatePolicyRequest",
                             .answer = devicePolicyBody(),
                             .answerRecord = "DevicePolicy"},
                            "whitelist",
                            [](auto& service, const auto& mode, auto end) {
                              service.send(calls::updateDevicePolicy, {"d1"}, {true, mode}, end);
                            }),
      writing<void>({.name = "addBlockedDomain",
                     .method = "POST",
                     .path = "/devices/d1/policy/block",
                     .pattern = "/devices/{}/policy/block",
                     .body = R"({"domain":"x.example"})",
                     .bodyRecord = "AddDomainRequest"},
                    "x.example",
                    [](auto& service, const auto& domain, auto end) {
                      service.send(calls::addBlockedDomain, {"d1"}, {domain}, end);
                    }),
      {.name = "removeBlockedDomain",
       .method = "DELETE",
       .path = "/devices/d1/policy/block/x.example",
       .pattern = "/devices/{}/policy/block/{%path}",
       .start = starting<void>([](auto& service, auto end) {
         service.send(calls::removeBlockedDomain, {"d1", "x.example"}, end);
       })},
      writing<void>({.name = "addAllowedDomain",
                     .method = "POST",
                     .path = "/devices/d1/policy/allow",
                     .pattern = "/devices/{}/policy/allow",
                     .body = R"({"domain":"x.example"})",
                     .bodyRecord = "AddDomainRequest"},
                    "x.example",
                    [](auto& service, const auto& domain, auto end) {
                      service.send(calls::addAllowedDomain, {"d1"}, {domain}, end);
                    }),
      {.name = "removeAllowedDomain",
       .method = "DELETE",
       .path = "/devices/d1/policy/allow/x.example",
       .pattern = "/devices/{}/policy/allow/{%path}",
       .start = starting<void>([](auto& service, auto end) {
         service.send(calls::removeAllowedDomain, {"d1", "x.example"}, end);
       })},
      {.name = "getDeviceLogs",
       .method = "GET",
       .path = "/devices/d1/logs?limit=25&offset=50",
       .pattern = "/devices/{}/logs?limit={}&offset={}",
       .answer = logsBody({}),
       .answerRecord = "DNSLogsResponse",
       .start = starting<DNSLogsResponse>([](auto& service, auto end) {
         service.send(calls::getDeviceLogs, {"d1", 25, 50}, end);
       })},
      {.name = "getRecentDeviceLogs",
       .method = "GET",
       .path = "/devices/d1/logs?limit=20&since=2016-10-08T22:30:00Z",
       .pattern = "/devices/{}/logs?limit={}&since={%query}",
       .ending = Ending::onMainQueue,
       .answer = logsBody({}),
       .answerRecord = "DNSLogsResponse",
       .start = starting<std::vector<DNSLog>>([](auto& service, auto end) {
         service.getRecentDeviceLogs({"d1"}, std::chrono::seconds(60), 20, end);
       })},
  };
}

std::vector<ContractCall> familyCalls() {
  return {
      {.name = "getHomeNetwork",
       .method = "GET",
       .path = "/home-network",
       .answer = R"({"current_ip":"192.0.2.7","ip_matches":false})",
       .answerRecord = "HomeNetworkResponse",
       .start = starting<HomeNetworkResponse>(
           [](auto& service, auto end) { service.send(calls::getHomeNetwork, end); })},
      writing<CreateHomeNetworkResponse>({.name = "createHomeNetwork",
                                          .method = "POST",
                                          .path = "/home-network",
                                          .body = R"({"name":"Home","confirm":true})",
                                          .bodyRecord = "CreateHomeNetworkRequest",
                                          .answer = createdNetworkBody(),
                                          .answerRecord = "CreateHomeNetworkResponse"},
                                         "Home",
                                         [](auto& service, const auto& name, auto end) {
                                           service.send(calls::createHomeNetwork, {name, true}, end);
                                         }),
      {.name = "updateHomeNetworkIP",
       .method = "POST",
       .path = "/home-network/update-ip",
       .body = R"({"confirm":true})",
       .bodyRecord = "UpdateHomeNetworkIPRequest",
       .answer = R"({"message":"m","public_ip":"192.0.2.7","updated_at":"u"})",
       .answerRecord = "UpdateHomeNetworkIPResponse",
       .start = starting<UpdateHomeNetworkIPResponse>([](auto& service, auto end) {
         service.send(calls::updateHomeNetworkIP, {.confirm = true}, end);
       })},
      {.name = "getFamily",
       .method = "GET",
       .path = "/family",
       .answer = R"({"members":[],"is_primary":true})",
       .answerRecord = "FamilyResponse",
       .start =
           starting<FamilyResponse>([](auto& service, auto end) { service.send(calls::getFamily, end); })},
      writing<CreateInvitationResponse>(
          {.name = "createInvitation",
           .method = "POST",
           .path = "/family/invite",
           .body = R"({"invitee_name":"Sam"})",
           .bodyRecord = "CreateInvitationRequest",
           .answer = R"({"invite_code":"ABC123","expires_at":"e","qr_data":"q"})",
           .answerRecord = "CreateInvitationResponse"},
          "Sam",
          [](auto& service, const auto& name, auto end) {
            service.send(calls::createInvitation, {name}, end);
          }),
      {.name = "revokeInvitation",
       .method = "DELETE",
       .path = "/family/invite/i1",
       .pattern = "/family/invite/{}",
       .start = starting<void>(
           [](auto& service, auto end) { service.send(calls::revokeInvitation, {"i1"}, end); })},
      {.name = "validateInvite",
       .method = "GET",
       .path = "/family/invite/ABC123",
       .pattern = "/family/invite/{}",
       .token = Token::none,
       .judging = Judging::byBody,
       .answer = R"({"valid":true})",
       .answerRecord = "ValidateInviteResponse",
       .start = starting<ValidateInviteResponse>(
           [](auto& service, auto end) { service.send(calls::validateInvite, {"ABC123"}, end); })},
      {.name = "updateMemberPermissions",
       .method = "PUT",
       .path = "/family/members/m1",
       .pattern = "/family/members/{}",
       .body = R"({"can_manage_devices":false,"can_manage_policies":true,"is_active":true})",
       .bodyRecord = "UpdateMemberPermissionsRequest",
       .start = starting<void>([](auto& service, auto end) {
         service.send(calls::updateMemberPermissions, {"m1"},
                      {.canManageDevices = false, .canManagePolicies = true, .isActive = true}, end);
       })},
      {.name = "removeMember",
       .method = "DELETE",
       .path = "/family/members/m1",
       .pattern = "/family/members/{}",
       .start =
           starting<void>([](auto& service, auto end) { service.send(calls::removeMember, {"m1"}, end); })},
      writing<JoinFamilyResponse>(
          {.name = "joinFamily",
           .method = "POST",
           .path = "/family/join",
           .body =
               R"({"invite_code":"ABC123","email":"sam@example.org","password":"secret-password","display_name":"Sam"})",
           .bodyRecord = "JoinFamilyRequest",
           .token = Token::none,
           .judging = Judging::below400,
           .answer = joinedBody(),
           .answerRecord = "JoinFamilyResponse"},
          "Sam",
          [](auto& service, const auto& name, auto end) {
            JoinFamilyRequest account = newParent;
            account.displayName = name;
            service.send(calls::joinFamily, account, end);
          }),
  };
}

}  // namespace quillmar
