#include "sandbox/calls/calls.h"
#include "sandbox/router.h"

namespace quillmar::sandbox {

std::span<const Route> routes() {
  using enum Access;
  using enum Payload;
  // clang-format off
  static constexpr Route table[] = {
    {"POST",   "/api/v1/auth/register",                       anyone,    body, calls::registerAccount},
    {"POST",   "/api/v1/auth/login",                          anyone,    body, calls::login},
    {"POST",   "/api/v1/auth/refresh",                        refresher, none, calls::refreshToken},
    {"DELETE", "/api/v1/auth/account",                        account,   body, calls::deleteAccount},

    {"POST",   "/api/v1/enrollment/init",                     anyone,    body, calls::initEnrollment},
    {"GET",    "/api/v1/enrollment/status/{}",                anyone,    none, calls::enrollmentStatus},
    {"POST",   "/api/v1/enrollment/complete",                 devices,   body, calls::completeEnrollment},
    {"POST",   "/api/v1/enrollment/manual",                   devices,   body, calls::manualEnrollment},
    {"POST",   "/api/v1/device/checkin",                      anyone,    body, calls::checkin},

    {"PUT",    "/api/v1/devices/{}",                          devices,   body, calls::updateDevice},
    {"DELETE", "/api/v1/devices/{}",                          devices,   none, calls::deleteDevice},
    {"GET",    "/api/v1/devices/{}/logs",                     member,    none, calls::deviceLogs},
    {"GET",    "/api/v1/devices/{}/policy",                   member,    none, calls::showPolicy<Owner::device>},
    {"PUT",    "/api/v1/devices/{}/policy",                   policies,  body, calls::updatePolicy<Owner::device>},
    {"POST",   "/api/v1/devices/{}/policy/block",             policies,  body, calls::addToList<Owner::device, List::blocked>},
    {"DELETE", "/api/v1/devices/{}/policy/block/{}",          policies,  none, calls::removeFromList<Owner::device, List::blocked>},
    {"POST",   "/api/v1/devices/{}/policy/allow",             policies,  body, calls::addToList<Owner::device, List::allowed>},
    {"DELETE", "/api/v1/devices/{}/policy/allow/{}",          policies,  none, calls::removeFromList<Owner::device, List::allowed>},

    {"GET",    "/api/v1/children",                            member,    none, calls::listChildren},
    {"POST",   "/api/v1/children",                            devices,   body, calls::createChild},
    {"GET",    "/api/v1/children/{}",                         member,    none, calls::showChild},
    {"PUT",    "/api/v1/children/{}",                         devices,   body, calls::updateChild},
    {"DELETE", "/api/v1/children/{}",                         devices,   none, calls::deleteChild},
    {"POST",   "/api/v1/children/{}/devices",                 devices,   body, calls::linkDevice},
    {"DELETE", "/api/v1/children/{}/devices/{}",              devices,   none, calls::unlinkDevice},
    {"PUT",    "/api/v1/children/{}/policy",                  policies,  body, calls::updatePolicy<Owner::child>},
    {"POST",   "/api/v1/children/{}/policy/block",            policies,  body, calls::addToList<Owner::child, List::blocked>},
    {"DELETE", "/api/v1/children/{}/policy/block/{}",         policies,  none, calls::removeFromList<Owner::child, List::blocked>},
    {"POST",   "/api/v1/children/{}/policy/allow",            policies,  body, calls::addToList<Owner::child, List::allowed>},
    {"DELETE", "/api/v1/children/{}/policy/allow/{}",         policies,  none, calls::removeFromList<Owner::child, List::allowed>},

    {"GET",    "/api/v1/family",                              account,   none, calls::showFamily},
    {"POST",   "/api/v1/family/invite",                       primary,   body, calls::createInvitation},
    {"GET",    "/api/v1/family/invite/{}",                    anyone,    none, calls::validateInvitation},
    {"DELETE", "/api/v1/family/invite/{}",                    primary,   none, calls::revokeInvitation},
    {"POST",   "/api/v1/family/join",                         anyone,    body, calls::joinFamily},
    {"PUT",    "/api/v1/family/members/{}",                   primary,   body, calls::updateMember},
    {"DELETE", "/api/v1/family/members/{}",                   primary,   none, calls::removeMember},

    {"GET",    "/api/v1/home-network",                        member,    none, calls::showHomeNetwork},
    {"POST",   "/api/v1/home-network",                        devices,   body, calls::createHomeNetwork},
    {"POST",   "/api/v1/home-network/update-ip",              devices,   body, calls::updateHomeNetworkAddress},

    {"GET",    "/dns-query/{}",                               anyone,    none, calls::dnsByGet},
    {"POST",   "/dns-query/{}",                               anyone,    none, calls::dnsByPost},

    {"POST",   "/sandbox/approve",                            anyone,    body, calls::approve},
    {"GET",    "/sandbox/misbehaviour",                       anyone,    none, calls::showMisbehaviour},
    {"POST",   "/sandbox/misbehaviour",                       anyone,    body, calls::misbehave},
    {"POST",   "/sandbox/expire-tokens",                      anyone,    none, calls::expireTokens},
    {"POST",   "/sandbox/endpoint",                           anyone,    body, calls::moveEndpoint},
    {"POST",   "/sandbox/clock",                              anyone,    body, calls::advanceClock},
    {"GET",    "/sandbox/requests",                           anyone,    none, calls::showRequests},
    {"DELETE", "/sandbox/requests",                           anyone,    none, calls::clearRequests},
    {"POST",   "/sandbox/reset",                              anyone,    none, calls::reset},
  };
  // clang-format on
  return table;
}

}  // namespace quillmar::sandbox
