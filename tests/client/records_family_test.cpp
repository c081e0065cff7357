#include <string>
#include <string_view>
#include <vector>

#include "client/records/child.h"
#include "client/records/family.h"
#include "client/records/home_network.h"
#include "tests/client/record_cases.h"

namespace quillmar {
namespace {

const ChildPolicy childPolicy{.id = "id",
                              .childId = "childId",
                              .familyId = "familyId",
                              .isBlocked = true,
                              .blockMode = "blockMode",
                              .blockedDomains = {"a.example", "b.example"},
                              .allowedDomains = {"c.example"},
                              .createdAt = "createdAt",
                              .updatedAt = "updatedAt"};
const std::vector<Key> childPolicyKeys{{"id", R"("id")"},
                                       {"child_id", R"("childId")"},
                                       {"family_id", R"("familyId")"},
                                       {"is_blocked", "true"},
                                       {"block_mode", R"("blockMode")"},
                                       orElse("blocked_domains", R"(["a.example","b.example"])", "[]"),
                                       orElse("allowed_domains", R"(["c.example"])", "[]"),
                                       {"created_at", R"("createdAt")"},
                                       {"updated_at", R"("updatedAt")"}};

const ChildProfileWithDevices child{.id = "id",
                                    .familyId = "familyId",
                                    .name = "name",
                                    .photoURL = "photoURL",
                                    .birthYear = 2015,
                                    .displayOrder = 7,
                                    .isActive = true,
                                    .createdAt = "createdAt",
                                    .updatedAt = "updatedAt",
                                    .devices = {tablet},
                                    .policy = childPolicy};
const std::vector<Key> childKeys{{"id", R"("id")"},
                                 {"family_id", R"("familyId")"},
                                 {"name", R"("name")"},
                                 maybe("photo_url", R"("photoURL")"),
                                 maybe("birth_year", "2015"),
                                 orElse("display_order", "7", "0"),
                                 {"is_active", "true"},
                                 {"created_at", R"("createdAt")"},
                                 {"updated_at", R"("updatedAt")"},
                                 orElse("devices", "[" + document(tabletKeys) + "]", "[]"),
                                 maybe("policy", document(childPolicyKeys))};

const FamilyMember member{.id = "id",
                          .familyId = "familyId",
                          .parentId = "parentId",
                          .role = "role",
                          .displayName = "displayName",
                          .canManageDevices = true,
                          .canManagePolicies = false,
                          .isActive = true,
                          .invitedBy = "invitedBy",
                          .joinedAt = "joinedAt",
                          .createdAt = "createdAt",
                          .email = "email"};
const std::vector<Key> memberKeys{{"id", R"("id")"},
                                  {"family_id", R"("familyId")"},
                                  {"parent_id", R"("parentId")"},
                                  {"role", R"("role")"},
                                  {"display_name", R"("displayName")"},
                                  {"can_manage_devices", "true"},
                                  {"can_manage_policies", "false"},
                                  {"is_active", "true"},
                                  maybe("invited_by", R"("invitedBy")"),
                                  maybe("joined_at", R"("joinedAt")"),
                                  {"created_at", R"("createdAt")"},
                                  maybe("email", R"("email")")};

const FamilyInvitation invitation{.id = "id",
                                  .familyId = "familyId",
                                  .inviteCode = "inviteCode",
                                  .invitedBy = "invitedBy",
                                  .inviteeName = "inviteeName",
                                  .status = "status",
                                  .createdAt = "createdAt",
                                  .expiresAt = "expiresAt"};
const std::vector<Key> invitationKeys{{"id", R"("id")"},
                                      {"family_id", R"("familyId")"},
                                      {"invite_code", R"("inviteCode")"},
                                      {"invited_by", R"("invitedBy")"},
                                      maybe("invitee_name", R"("inviteeName")"),
                                      {"status", R"("status")"},
                                      {"created_at", R"("createdAt")"},
                                      {"expires_at", R"("expiresAt")"}};

const Family family{.id = "id",
                    .name = "name",
                    .primaryParentId = "primaryParentId",
                    .createdAt = "createdAt",
                    .updatedAt = "updatedAt"};
const std::vector<Key> familyKeys{{"id", R"("id")"},
                                  {"name", R"("name")"},
                                  {"primary_parent_id", R"("primaryParentId")"},
                                  {"created_at", R"("createdAt")"},
                                  {"updated_at", R"("updatedAt")"}};

const HomeNetwork network{.id = "id",
                          .parentId = "parentId",
                          .name = "name",
                          .publicIP = "publicIP",
                          .isActive = true,
                          .createdAt = "createdAt",
                          .updatedAt = "updatedAt"};
const std::vector<Key> networkKeys{{"id", R"("id")"},
                                   {"parent_id", R"("parentId")"},
                                   {"name", R"("name")"},
                                   maybe("public_ip", R"("publicIP")"),
                                   {"is_active", "true"},
                                   {"created_at", R"("createdAt")"},
                                   {"updated_at", R"("updatedAt")"}};

const HomeNetworkPolicy networkPolicy{.id = "id",
                                      .homeNetworkId = "homeNetworkId",
                                      .parentId = "parentId",
                                      .isBlocked = false,
                                      .blockMode = "blockMode",
                                      .blockedDomains = {"a.example"},
                                      .allowedDomains = {},
                                      .createdAt = "createdAt",
                                      .updatedAt = "updatedAt"};
const std::vector<Key> networkPolicyKeys{{"id", R"("id")"},
                                         {"home_network_id", R"("homeNetworkId")"},
                                         {"parent_id", R"("parentId")"},
                                         {"is_blocked", "false"},
                                         {"block_mode", R"("blockMode")"},
                                         {"blocked_domains", R"(["a.example"])"},
                                         {"allowed_domains", "[]"},
                                         {"created_at", R"("createdAt")"},
                                         {"updated_at", R"("updatedAt")"}};

const std::vector<ReceivedRecord> receivedByFamilies{
    receivedRecord(childPolicy, childPolicyKeys),
    receivedRecord(child, childKeys),
    receivedRecord(
        ChildrenResponse{.children = {child}, .unassignedDevices = {tablet, tablet}},
        {orElse("children", "[" + document(childKeys) + "]", "[]"),
         orElse("unassigned_devices", "[" + document(tabletKeys) + "," + document(tabletKeys) + "]", "[]")}),
    receivedRecord(ChildProfile{.id = "id",
                                .familyId = "familyId",
                                .name = "name",
                                .photoURL = "photoURL",
                                .birthYear = 2015,
                                .displayOrder = 7,
                                .isActive = true,
                                .createdAt = "createdAt",
                                .updatedAt = "updatedAt"},
                   {{"id", R"("id")"},
                    {"family_id", R"("familyId")"},
                    {"name", R"("name")"},
                    maybe("photo_url", R"("photoURL")"),
                    maybe("birth_year", "2015"),
                    {"display_order", "7"},
                    {"is_active", "true"},
                    {"created_at", R"("createdAt")"},
                    {"updated_at", R"("updatedAt")"}}),
    receivedRecord(family, familyKeys),
    receivedRecord(member, memberKeys),
    receivedRecord(invitation, invitationKeys),
    receivedRecord(FamilyResponse{.family = family,
                                  .members = {member},
                                  .pendingInvitations = std::vector{invitation},
                                  .isPrimary = true},
                   {maybe("family", document(familyKeys)),
                    {"members", "[" + document(memberKeys) + "]"},
                    maybe("pending_invitations", "[" + document(invitationKeys) + "]"),
                    {"is_primary", "true"}}),
    receivedRecord(
        CreateInvitationResponse{.inviteCode = "inviteCode", .expiresAt = "expiresAt", .qrData = "qrData"},
        {{"invite_code", R"("inviteCode")"}, {"expires_at", R"("expiresAt")"}, {"qr_data", R"("qrData")"}}),
    receivedRecord(ValidateInviteResponse{.valid = true,
                                          .familyName = "familyName",
                                          .invitedBy = "invitedBy",
                                          .expiresAt = "expiresAt",
                                          .error = "error"},
                   {{"valid", "true"},
                    maybe("family_name", R"("familyName")"),
                    maybe("invited_by_name", R"("invitedBy")"),
                    maybe("expires_at", R"("expiresAt")"),
                    maybe("error", R"("error")")}),
    receivedRecord(JoinFamilyResponse{.message = "message",
                                      .token = "token",
                                      .parentId = "parentId",
                                      .familyId = "familyId",
                                      .familyName = "familyName",
                                      .role = "role"},
                   {{"message", R"("message")"},
                    {"token", R"("token")"},
                    {"parent_id", R"("parentId")"},
                    {"family_id", R"("familyId")"},
                    {"family_name", R"("familyName")"},
                    {"role", R"("role")"}}),
    receivedRecord(network, networkKeys),
    receivedRecord(networkPolicy, networkPolicyKeys),
    receivedRecord(
        HomeNetworkResponse{
            .homeNetwork = network, .policy = networkPolicy, .currentIP = "currentIP", .ipMatches = true},
        {maybe("home_network", document(networkKeys)),
         maybe("policy", document(networkPolicyKeys)),
         {"current_ip", R"("currentIP")"},
         {"ip_matches", "true"}}),
    receivedRecord(
        CreateHomeNetworkResponse{.message = "message", .homeNetwork = network, .policy = networkPolicy},
        {{"message", R"("message")"},
         {"home_network", document(networkKeys)},
         {"policy", document(networkPolicyKeys)}}),
    receivedRecord(
        UpdateHomeNetworkIPResponse{.message = "message", .publicIP = "publicIP", .updatedAt = "updatedAt"},
        {{"message", R"("message")"}, {"public_ip", R"("publicIP")"}, {"updated_at", R"("updatedAt")"}}),
};

const std::vector<SentRecord> sentByFamilies{
    sentRecord(CreateChildRequest{.name = "name", .photoURL = "photoURL", .birthYear = 2015},
               {{"name", R"("name")"}, maybe("photo_url", R"("photoURL")"), maybe("birth_year", "2015")}),
    sentRecord(
        UpdateChildRequest{
            .name = "name", .photoURL = "photoURL", .birthYear = 2015, .displayOrder = 0, .isActive = false},
        {maybe("name", R"("name")"), maybe("photo_url", R"("photoURL")"), maybe("birth_year", "2015"),
         maybe("display_order", "0"), maybe("is_active", "false")}),
    sentRecord(LinkDeviceRequest{.deviceId = "deviceId"}, {{"device_id", R"("deviceId")"}}),
    sentRecord(CreateInvitationRequest{.inviteeName = "inviteeName"},
               {maybe("invitee_name", R"("inviteeName")")}),
    sentRecord(JoinFamilyRequest{.inviteCode = "inviteCode",
                                 .email = "email",
                                 .password = "password",
                                 .displayName = "displayName"},
               {{"invite_code", R"("inviteCode")"},
                {"email", R"("email")"},
                {"password", R"("password")"},
                {"display_name", R"("displayName")"}}),
    sentRecord(
        UpdateMemberPermissionsRequest{
            .canManageDevices = true, .canManagePolicies = false, .isActive = false},
        {maybe("can_manage_devices", "true"), maybe("can_manage_policies", "false"),
         maybe("is_active", "false")}),
    sentRecord(CreateHomeNetworkRequest{.name = "name", .confirm = true},
               {maybe("name", R"("name")"), {"confirm", "true"}}),
    sentRecord(UpdateHomeNetworkIPRequest{.confirm = true}, {{"confirm", "true"}}),
};

INSTANTIATE_TEST_SUITE_P(Family, ReceivedRecordTest, testing::ValuesIn(receivedByFamilies), byName);
INSTANTIATE_TEST_SUITE_P(Family, SentRecordTest, testing::ValuesIn(sentByFamilies), byName);

// Cases that the tables above don't cover.

TEST(FamilyRecords, an_empty_object_is_a_family_without_children_and_devices) {
  EXPECT_EQ(decodeJson<ChildrenResponse>("{}").value(), ChildrenResponse());
}

TEST(FamilyRecords, one_invalid_child_fails_the_whole_answer) {
  const auto decoded = decodeJson<ChildrenResponse>(R"({"children":[)" + document(childKeys) + "," +
                                                    document(without(childKeys, "family_id")) + "]}");
  ASSERT_FALSE(decoded.ok());
  const auto* error = decoded.error().as<CodingError>();
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(error->kind, CodingError::Kind::missing);
  EXPECT_EQ(error->record, "ChildProfileWithDevices");
  EXPECT_EQ(error->keyPath, "children[1].family_id");
}

TEST(FamilyRecords, an_optional_list_with_an_invalid_element_is_rejected) {
  EXPECT_FALSE(decodeJson<ChildrenResponse>(R"({"unassigned_devices":[null]})").ok());
  EXPECT_FALSE(decodeJson<ChildPolicy>(document(with(childPolicyKeys, "blocked_domains", "[null]"))).ok());
  EXPECT_FALSE(decodeJson<ChildPolicy>(document(with(childPolicyKeys, "allowed_domains", "[5]"))).ok());
}

TEST(FamilyRecords, an_invalid_policy_fails_the_child) {
  EXPECT_FALSE(decodeJson<ChildProfileWithDevices>(document(with(childKeys, "policy", "{}"))).ok());
}

TEST(FamilyRecords, children_keep_their_order_and_ignore_display_order) {
  const auto decoded =
      decodeJson<ChildrenResponse>(R"({"children":[)" + document(with(childKeys, "display_order", "2")) +
                                   "," + document(with(childKeys, "display_order", "1")) + "]}");
  ASSERT_TRUE(decoded.ok());
  ASSERT_EQ(decoded.value().children.size(), 2);
  EXPECT_EQ(decoded.value().children[0].displayOrder, 2);
  EXPECT_EQ(decoded.value().children[1].displayOrder, 1);
}

TEST(FamilyRecords, missing_pending_invitations_differ_from_an_empty_list) {
  const auto decoded = decodeJson<FamilyResponse>(R"({"members":[],"is_primary":false})");
  ASSERT_TRUE(decoded.ok());
  EXPECT_EQ(decoded.value().pendingInvitations, std::nullopt);
  EXPECT_NE(decodeJson<FamilyResponse>(R"({"members":[],"is_primary":false,"pending_invitations":[]})")
                .value()
                .pendingInvitations,
            std::nullopt);
}

TEST(FamilyRecords, invited_by_is_an_id_in_one_record_and_a_name_in_the_other) {
  const auto decoded = decodeJson<ValidateInviteResponse>(R"({"valid":true,"invited_by":"p1"})");
  ASSERT_TRUE(decoded.ok());
  EXPECT_EQ(decoded.value().invitedBy, std::nullopt);
}

TEST(FamilyRecords, a_record_with_nothing_set_is_an_empty_object) {
  EXPECT_EQ(encodeJson(UpdateChildRequest()).value(), "{}");
  EXPECT_EQ(encodeJson(UpdateMemberPermissionsRequest()).value(), "{}");
  EXPECT_EQ(encodeJson(CreateInvitationRequest()).value(), "{}");
}

TEST(FamilyRecords, an_empty_text_is_sent_and_nil_is_not) {
  UpdateChildRequest changes;
  changes.name = "";
  EXPECT_EQ(encodeJson(changes).value(), R"({"name":""})");
}

}  // namespace
}  // namespace quillmar
