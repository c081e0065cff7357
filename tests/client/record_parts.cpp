// The client decodes these only as parts of others, the tests by themselves too. Compiled by itself: where
// the decoder is defined, each record that is decoded is compiled again.

#include "client/records/device_policy.h"
#include "client/records/dns_log.h"
#include "client/records/enrollment.h"
#include "client/records/family.h"
#include "client/records/home_network.h"
#include "foundation/json_decode.h"

namespace quillmar {

template Result<AddDomainRequest> decodeJson(std::string_view text);
template Result<DNSLog> decodeJson(std::string_view text);
template Result<Family> decodeJson(std::string_view text);
template Result<FamilyInvitation> decodeJson(std::string_view text);
template Result<FamilyMember> decodeJson(std::string_view text);
template Result<HomeNetwork> decodeJson(std::string_view text);
template Result<HomeNetworkPolicy> decodeJson(std::string_view text);
template Result<SetupInstructions> decodeJson(std::string_view text);

}  // namespace quillmar
