#include <algorithm>
#include <array>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "client/records/account.h"
#include "client/records/checkin.h"
#include "client/records/device.h"
#include "client/records/device_policy.h"
#include "client/records/dns_log.h"
#include "client/records/enrollment.h"
#include "client/records/error_response.h"
#include "tests/client/record_cases.h"

namespace quillmar {
namespace {

const std::vector<ReceivedRecord> received{
    receivedRecord(AuthResponse{.token = "token",
                                .parentId = "parentId",
                                .email = "email",
                                .phone = "phone",
                                .name = "name",
                                .region = "region",
                                .dohServerId = "dohServerId",
                                .dohBaseURL = "dohBaseURL"},
                   {{"token", R"("token")"},
                    {"parent_id", R"("parentId")"},
                    {"email", R"("email")"},
                    maybe("phone", R"("phone")"),
                    {"name", R"("name")"},
                    maybe("region", R"("region")"),
                    maybe("doh_server_id", R"("dohServerId")"),
                    maybe("doh_base_url", R"("dohBaseURL")")}),
    receivedRecord(ErrorResponse{.error = "error"}, {{"error", R"("error")"}}),
    receivedRecord(tablet, tabletKeys),
    receivedRecord(DevicePolicy{.id = "id",
                                .deviceId = "deviceId",
                                .parentId = "parentId",
                                .isBlocked = true,
                                .blockMode = "blockMode",
                                .blockedDomains = {"a.example", "b.example"},
                                .allowedDomains = {},
                                .createdAt = "createdAt",
                                .updatedAt = "updatedAt"},
                   {{"id", R"("id")"},
                    {"device_id", R"("deviceId")"},
                    {"parent_id", R"("parentId")"},
                    {"is_blocked", "true"},
                    {"block_mode", R"("blockMode")"},
                    {"blocked_domains", R"(["a.example","b.example"])"},
                    {"allowed_domains", "[]"},
                    {"created_at", R"("createdAt")"},
                    {"updated_at", R"("updatedAt")"}}),
    receivedRecord(DNSLog{.id = 7,
                          .deviceId = "deviceId",
                          .parentId = "parentId",
                          .domain = "domain",
                          .queryType = "queryType",
                          .wasBlocked = true,
                          .timestamp = "timestamp"},
                   {{"id", "7"},
                    {"device_id", R"("deviceId")"},
                    {"parent_id", R"("parentId")"},
                    {"domain", R"("domain")"},
                    {"query_type", R"("queryType")"},
                    {"was_blocked", "true"},
                    {"timestamp", R"("timestamp")"}}),
    receivedRecord(DNSLogsResponse{}, {{"logs", "[]"}}),
    receivedRecord(
        InitEnrollmentResponse{
            .enrollmentCode = "enrollmentCode", .deviceId = "deviceId", .expiresAt = "expiresAt"},
        {{"enrollment_code", R"("enrollmentCode")"},
         {"device_id", R"("deviceId")"},
         {"expires_at", R"("expiresAt")"}}),
    receivedRecord(EnrollmentStatusResponse{.status = "status",
                                            .deviceId = "deviceId",
                                            .dohEndpoint = "dohEndpoint",
                                            .dohBaseUrl = "dohBaseUrl",
                                            .apiBaseUrl = "apiBaseUrl"},
                   {{"status", R"("status")"},
                    {"device_id", R"("deviceId")"},
                    maybe("doh_endpoint", R"("dohEndpoint")"),
                    maybe("doh_base_url", R"("dohBaseUrl")"),
                    maybe("api_base_url", R"("apiBaseUrl")")}),
    receivedRecord(QRCodeData{.enrollmentCode = "enrollmentCode",
                              .deviceId = "deviceId",
                              .deviceName = "deviceName",
                              .deviceType = "deviceType"},
                   {{"enrollment_code", R"("enrollmentCode")"},
                    {"device_id", R"("deviceId")"},
                    {"device_name", R"("deviceName")"},
                    {"device_type", R"("deviceType")"}}),
    receivedRecord(
        CompleteEnrollmentResponse{.message = "message", .device = tablet, .dohEndpoint = "dohEndpoint"},
        {{"message", R"("message")"},
         {"device", document(tabletKeys)},
         {"doh_endpoint", R"("dohEndpoint")"}}),
    receivedRecord(
        SetupInstructions{.platform = "platform", .dnsServerIP = "dnsServerIP", .steps = {"1", "2", "1"}},
        {{"platform", R"("platform")"},
         {"dns_server_ip", R"("dnsServerIP")"},
         {"steps", R"(["1","2","1"])"}}),
    receivedRecord(
        ManualEnrollmentResponse{.message = "message",
                                 .device = tablet,
                                 .dnsServer = "dnsServer",
                                 .setupInstructions = {.platform = "p", .dnsServerIP = "ip", .steps = {}},
                                 .note = "note"},
        {{"message", R"("message")"},
         {"device", document(tabletKeys)},
         {"dns_server", R"("dnsServer")"},
         {"setup_instructions", R"({"platform":"p","dns_server_ip":"ip","steps":[]})"},
         {"note", R"("note")"}}),
    receivedRecord(CheckinResponse{.status = "status",
                                   .dohEndpoint = "dohEndpoint",
                                   .dohBaseUrl = "dohBaseUrl",
                                   .serverTime = "serverTime"},
                   {{"status", R"("status")"},
                    maybe("doh_endpoint", R"("dohEndpoint")"),
                    maybe("doh_base_url", R"("dohBaseUrl")"),
                    maybe("server_time", R"("serverTime")")}),
};

const std::vector<SentRecord> sent{
    sentRecord(
        RegisterRequest{
            .email = "email", .password = "password", .phone = "phone", .name = "name", .region = "region"},
        {{"email", R"("email")"},
         {"password", R"("password")"},
         {"phone", R"("phone")"},
         {"name", R"("name")"},
         maybe("region", R"("region")")}),
    sentRecord(LoginRequest{.email = "email", .password = "password"},
               {{"email", R"("email")"}, {"password", R"("password")"}}),
    sentRecord(DeleteAccountRequest{.password = "password"}, {{"password", R"("password")"}}),
    sentRecord(UpdateDeviceRequest{.friendlyName = "friendlyName", .deviceName = "deviceName"},
               {maybe("friendly_name", R"("friendlyName")"), maybe("device_name", R"("deviceName")")}),
    sentRecord(UpdatePolicyRequest{.isBlocked = false, .blockMode = "blockMode"},
               {{"is_blocked", "false"}, {"block_mode", R"("blockMode")"}}),
    sentRecord(AddDomainRequest{.domain = "domain"}, {{"domain", R"("domain")"}}),
    sentRecord(
        InitEnrollmentRequest{.deviceId = "deviceId", .deviceName = "deviceName", .deviceType = "ios"},
        {{"device_id", R"("deviceId")"}, {"device_name", R"("deviceName")"}, {"device_type", R"("ios")"}}),
    sentRecord(QRCodeData{.enrollmentCode = "enrollmentCode",
                          .deviceId = "deviceId",
                          .deviceName = "deviceName",
                          .deviceType = "deviceType"},
               {{"enrollment_code", R"("enrollmentCode")"},
                {"device_id", R"("deviceId")"},
                {"device_name", R"("deviceName")"},
                {"device_type", R"("deviceType")"}}),
    sentRecord(
        CompleteEnrollmentRequest{
            .enrollmentCode = "enrollmentCode", .deviceName = "deviceName", .childId = "childId"},
        {{"enrollment_code", R"("enrollmentCode")"},
         {"device_name", R"("deviceName")"},
         maybe("child_id", R"("childId")")}),
    sentRecord(ManualEnrollmentRequest{.deviceName = "deviceName",
                                       .deviceType = "deviceType",
                                       .deviceIP = "deviceIP",
                                       .childId = "childId"},
               {{"device_name", R"("deviceName")"},
                {"device_type", R"("deviceType")"},
                maybe("device_ip", R"("deviceIP")"),
                maybe("child_id", R"("childId")")}),
    sentRecord(CheckinRequest{.deviceId = "deviceId", .deviceType = "ios"},
               {{"device_id", R"("deviceId")"}, {"device_type", R"("ios")"}}),
};

// Values of every JSON type.
constexpr auto samples = std::to_array<std::string_view>(
    {R"("5")", R"("true")", "5", "5.5", "1", "0", "true", "[]", R"([5])", "{}"});

bool isNumber(std::string_view json) { return json.front() >= '0' && json.front() <= '9'; }

bool isBool(std::string_view json) { return json == "true" || json == "false"; }

// Whether the sample is a valid value for a key whose value is like `json`.
bool hasSameType(std::string_view sample, std::string_view json) {
  if (isNumber(json)) {
    return isNumber(sample) && sample != "5.5";
  }
  if (isBool(json)) {
    return isBool(sample);
  }
  return sample.front() == json.front() && sample != "[5]";
}

TEST_P(ReceivedRecordTest, a_missing_required_key_is_rejected) {
  for (const Key& key : requiredOf(keys())) {
    expectRefusal(without(keys(), key.name), CodingError::Kind::missing, key.name);
  }
}

TEST_P(ReceivedRecordTest, null_for_a_required_key_is_rejected) {
  for (const Key& key : requiredOf(keys())) {
    const auto kind = isBool(key.json) ? CodingError::Kind::wrongFormat : CodingError::Kind::missing;
    expectRefusal(with(keys(), key.name, "null"), kind, key.name);
  }
}

TEST_P(ReceivedRecordTest, a_value_of_a_wrong_type_is_rejected) {
  for (const Key& key : keys()) {
    for (const std::string_view sample : samples) {
      if (!hasSameType(sample, key.json)) {
        expectRefusal(with(keys(), key.name, sample), CodingError::Kind::wrongFormat, key.name);
      }
    }
  }
}

TEST_P(ReceivedRecordTest, only_an_object_is_a_record) {
  for (const std::string_view text : {"[]", "null", "5", R"("x")", "", " ", "{", "{}x"}) {
    EXPECT_FALSE(GetParam().rewrite(text).ok()) << text;
  }
}

TEST_P(ReceivedRecordTest, decodes_into_the_fields_of_the_same_names) {
  EXPECT_TRUE(GetParam().decodesToExpected(document(keys()))) << document(keys());
}

TEST_P(ReceivedRecordTest, the_order_of_keys_does_not_matter) {
  std::vector<Key> reversed(keys().rbegin(), keys().rend());
  EXPECT_TRUE(GetParam().decodesToExpected(document(reversed)));
  std::rotate(reversed.begin(), reversed.begin() + 1, reversed.end());
  EXPECT_TRUE(GetParam().decodesToExpected(document(reversed)));
}

TEST_P(ReceivedRecordTest, unknown_keys_are_skipped_in_any_position) {
  for (std::size_t place = 0; place <= keys().size(); ++place) {
    auto more = keys();
    const auto at = more.begin() + static_cast<std::ptrdiff_t>(place);
    more.insert(at, {{"unknown", R"({"id":[null,5]})"}, {"", "null"}, {"ID", "5"}});
    EXPECT_TRUE(GetParam().decodesToExpected(document(more))) << place;
  }
}

TEST_P(ReceivedRecordTest, of_a_duplicate_key_the_first_counts) {
  for (const Key& key : keys()) {
    auto twice = keys();
    twice.push_back({key.name, "[[]]"});
    EXPECT_TRUE(GetParam().decodesToExpected(document(twice))) << key.name;

    auto wrongFirst = keys();
    wrongFirst.insert(wrongFirst.begin(), {key.name, "[[]]"});
    expectRefusal(wrongFirst, CodingError::Kind::wrongFormat, key.name);
  }
}

TEST_P(ReceivedRecordTest, absent_and_null_optionals_are_nil_or_the_default) {
  auto least = keys();
  for (const Key& key : keys()) {
    if (!key.isRequired) {
      least = lacking(least, key);
      EXPECT_EQ(rewritten(without(keys(), key.name)).value(), document(lacking(keys(), key)));
      EXPECT_EQ(rewritten(with(keys(), key.name, "null")).value(), document(lacking(keys(), key)));
    }
  }
  EXPECT_EQ(rewritten(requiredOf(keys())).value(), document(least));
}

TEST_P(ReceivedRecordTest, of_a_duplicate_key_a_first_null_counts) {
  for (const Key& key : keys()) {
    if (!key.isRequired) {
      auto nullFirst = keys();
      nullFirst.insert(nullFirst.begin(), {key.name, "null"});
      EXPECT_EQ(rewritten(nullFirst).value(), document(lacking(keys(), key)));
    }
  }
}

TEST_P(ReceivedRecordTest, an_empty_text_is_not_nil) {
  for (const Key& key : keys()) {
    if (key.json.front() == '"') {
      EXPECT_EQ(rewritten(with(keys(), key.name, R"("")")).value(),
                document(with(keys(), key.name, R"("")")));
    }
  }
}

TEST_P(SentRecordTest, writes_its_keys_in_table_order) {
  EXPECT_EQ(GetParam().whole.value(), document(GetParam().keys));
}

TEST_P(SentRecordTest, omits_nil_fields) {
  EXPECT_EQ(GetParam().least.value(), document(requiredOf(GetParam().keys)));
}

INSTANTIATE_TEST_SUITE_P(Records, ReceivedRecordTest, testing::ValuesIn(received), byName);
INSTANTIATE_TEST_SUITE_P(Records, SentRecordTest, testing::ValuesIn(sent), byName);

// Cases that the tables above don't cover.

CodingError refusal(const Result<DNSLogsResponse>& result) {
  const auto* error = result.ok() ? nullptr : result.error().as<CodingError>();
  EXPECT_NE(error, nullptr);
  return error ? *error : CodingError{};
}

std::string logEntry(std::string_view id) {
  return R"({"id":)" + std::string(id) +
         R"(,"device_id":"d","parent_id":"p","domain":"x","query_type":"A","was_blocked":false,"timestamp":"t"})";
}

TEST(Records, a_log_whose_id_is_a_text_fails_the_whole_answer) {
  const auto error =
      refusal(decodeJson<DNSLogsResponse>(R"({"logs":[)" + logEntry("1") + "," + logEntry(R"("2")") + "]}"));
  EXPECT_EQ(error.kind, CodingError::Kind::wrongFormat);
  EXPECT_EQ(error.keyPath, "logs[1].id");
}

TEST(Records, the_id_of_a_log_has_64_bits) {
  const auto decoded = decodeJson<DNSLogsResponse>(R"({"logs":[)" + logEntry("9223372036854775807") + "]}");
  ASSERT_TRUE(decoded.ok());
  EXPECT_EQ(decoded.value().logs.at(0).id, 9223372036854775807);
  EXPECT_FALSE(decodeJson<DNSLogsResponse>(R"({"logs":[)" + logEntry("9223372036854775808") + "]}").ok());
}

TEST(Records, logs_keep_their_order) {
  const auto decoded =
      decodeJson<DNSLogsResponse>(R"({"logs":[)" + logEntry("2") + "," + logEntry("1") + "]}");
  ASSERT_TRUE(decoded.ok());
  ASSERT_EQ(decoded.value().logs.size(), 2);
  EXPECT_EQ(decoded.value().logs[0].id, 2);
  EXPECT_EQ(decoded.value().logs[1].id, 1);
}

TEST(Records, one_invalid_log_fails_the_whole_answer) {
  for (const std::string_view bad : {"null", "5", "[]", "{}"}) {
    const std::string text = R"({"logs":[)" + logEntry("1") + "," + std::string(bad) + "]}";
    EXPECT_FALSE(decodeJson<DNSLogsResponse>(text).ok()) << bad;
  }
}

TEST(Records, a_key_missing_in_a_nested_record_is_named_with_its_path) {
  const auto decoded =
      decodeJson<CompleteEnrollmentResponse>(document({{"message", R"("m")"},
                                                       {"device", document(without(tabletKeys, "is_active"))},
                                                       {"doh_endpoint", R"("e")"}}));
  ASSERT_FALSE(decoded.ok());
  const auto* error = decoded.error().as<CodingError>();
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(error->kind, CodingError::Kind::missing);
  EXPECT_EQ(error->record, "Device");
  EXPECT_EQ(error->keyPath, "device.is_active");
}

TEST(Records, an_account_without_its_optional_keys_decodes) {
  EXPECT_EQ(decodeJson<AuthResponse>(authBody("t")).value(), authResponse("t"));
}

TEST(Records, text_is_unchanged_in_both_directions) {
  const std::string awkward =
      "\xF0\x9F\x91\xA9\xE2\x80\x8D\xF0\x9F\x91\xA7 \"quoted\" \\ /\n\t\x01 e\xCC\x81";
  const auto written = encodeJson(AddDomainRequest{.domain = awkward});
  ASSERT_TRUE(written.ok());
  const auto decoded = decodeJson<AddDomainRequest>(written.value());
  ASSERT_TRUE(decoded.ok());
  EXPECT_EQ(decoded.value().domain, awkward);
}

TEST(Records, text_that_is_not_utf8_is_not_encoded) {
  const auto written = encodeJson(AddDomainRequest{.domain = notUtf8});
  ASSERT_FALSE(written.ok());
  EXPECT_EQ(written.error().localizedDescription(), unwritableText);
}

}  // namespace
}  // namespace quillmar
