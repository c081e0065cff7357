#pragma once

#include <string>
#include <vector>

#include "client/records/dns_log.h"
#include "client/records/family.h"
#include "tests/client/client_test.h"

namespace quillmar {

// Bodies as the service sends them, with required keys only.

inline std::string profileBody() {
  return R"({"id":"c1","family_id":"f1","name":"Mia","display_order":2,"is_active":true,)"
         R"("created_at":"c","updated_at":"u"})";
}

inline std::string childBody() {
  return R"({"id":"c1","family_id":"f1","name":"Mia","is_active":true,"created_at":"c","updated_at":"u"})";
}

inline std::string childPolicyBody() {
  return R"({"id":"p1","child_id":"c1","family_id":"f1","is_blocked":false,"block_mode":"blacklist",)"
         R"("created_at":"c","updated_at":"u"})";
}

inline std::string devicePolicyBody() {
  return R"({"id":"p1","device_id":"d1","parent_id":"a1","is_blocked":false,"block_mode":"blacklist",)"
         R"("blocked_domains":[],"allowed_domains":[],"created_at":"c","updated_at":"u"})";
}

inline std::string createdNetworkBody() {
  return R"({"message":"m","home_network":{"id":"n1","parent_id":"a1","name":"Home","is_active":true,)"
         R"("created_at":"c","updated_at":"u"},"policy":{"id":"p1","home_network_id":"n1","parent_id":"a1",)"
         R"("is_blocked":false,"block_mode":"blacklist","blocked_domains":[],"allowed_domains":[],)"
         R"("created_at":"c","updated_at":"u"}})";
}

inline std::string joinedBody() {
  return R"({"message":"m","token":"secret-token-renewed","parent_id":"a2","family_id":"f1",)"
         R"("family_name":"The Lees","role":"member"})";
}

inline DNSLog logEntry(std::int64_t id, const std::string& timestamp, const std::string& device = "d1") {
  return {.id = id,
          .deviceId = device,
          .parentId = "a1",
          .domain = "site" + std::to_string(id) + ".example",
          .queryType = "A",
          .wasBlocked = false,
          .timestamp = timestamp};
}

inline std::string logsBody(std::vector<DNSLog> logs) {
  return encodeJson(DNSLogsResponse{std::move(logs)}).value();
}

inline const JoinFamilyRequest newParent{
    .inviteCode = "ABC123", .email = "sam@example.org", .password = password, .displayName = "Sam"};

}  // namespace quillmar
