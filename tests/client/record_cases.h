#pragma once

#include <algorithm>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "client/records/device.h"
#include "foundation/json.h"
#include "tests/client/client_test.h"

// Tests that hold for every record, driven by a table of its keys. The tests are in records_test.cpp; each
// file of records adds its own tables.
namespace quillmar {

// One key of a record with its value as JSON, in encoding order. The tests build all their documents from
// these.
struct Key {
  std::string name;
  std::string json;
  bool isRequired = true;
  // What an absent or null key is decoded as, and then encoded as; nullopt: omitted.
  std::optional<std::string> otherwise = {};
};

inline Key maybe(std::string name, std::string json) { return {std::move(name), std::move(json), false, {}}; }
inline Key orElse(std::string name, std::string json, std::string otherwise) {
  return {std::move(name), std::move(json), false, std::move(otherwise)};
}

inline std::string document(const std::vector<Key>& keys) {
  std::string text = "{";
  for (const char* separator = ""; const Key& key : keys) {
    text += separator + ('"' + key.name + "\":" + key.json);
    separator = ",";
  }
  return text + "}";
}

// A record that the service sends.
struct ReceivedRecord {
  std::string name;
  std::vector<Key> keys;
  // Whether the decoded record equals the one with every value of `keys`.
  std::function<bool(std::string_view)> decodesToExpected;
  // Decodes, then encodes the result.
  Result<std::string> (*rewrite)(std::string_view text);
};

// A record that the client sends: encoded with all fields, and without the optional ones.
struct SentRecord {
  std::string name;
  std::vector<Key> keys;
  Result<std::string> whole;
  Result<std::string> least;
};

inline void PrintTo(const ReceivedRecord& tested, std::ostream* out) { *out << tested.name; }
inline void PrintTo(const SentRecord& tested, std::ostream* out) { *out << tested.name; }

template <Record T>
ReceivedRecord receivedRecord(T expected, std::vector<Key> keys) {
  return {.name = std::string(recordName<T>()),
          .keys = std::move(keys),
          .decodesToExpected =
              [expected = std::move(expected)](std::string_view text) {
                const auto decoded = decodeJson<T>(text);
                return decoded.ok() && decoded.value() == expected;
              },
          .rewrite = [](std::string_view text) -> Result<std::string> {
            const auto decoded = decodeJson<T>(text);
            return decoded.ok() ? encodeJson(decoded.value()) : Result<std::string>(decoded.error());
          }};
}

template <Record T>
SentRecord sentRecord(const T& whole, std::vector<Key> keys) {
  T least = whole;
  forEachField<T>([&](const auto& field) {
    if constexpr (isOptional<typename std::remove_cvref_t<decltype(field)>::Type>) {
      least.*field.member = std::nullopt;
    }
  });
  return {std::string(recordName<T>()), std::move(keys), encodeJson(whole), encodeJson(least)};
}

inline const Device tablet{.id = "id",
                           .parentId = "parentId",
                           .childId = "childId",
                           .deviceName = "deviceName",
                           .deviceType = "deviceType",
                           .dohEndpoint = "dohEndpoint",
                           .isActive = true,
                           .createdAt = "createdAt",
                           .updatedAt = "updatedAt",
                           .friendlyName = "friendlyName",
                           .isOnline = false,
                           .lastSeenAt = "lastSeenAt"};
inline const std::vector<Key> tabletKeys{{"id", R"("id")"},
                                         {"parent_id", R"("parentId")"},
                                         maybe("child_id", R"("childId")"),
                                         {"device_name", R"("deviceName")"},
                                         {"device_type", R"("deviceType")"},
                                         {"doh_endpoint", R"("dohEndpoint")"},
                                         {"is_active", "true"},
                                         {"created_at", R"("createdAt")"},
                                         {"updated_at", R"("updatedAt")"},
                                         maybe("friendly_name", R"("friendlyName")"),
                                         maybe("is_online", "false"),
                                         maybe("last_seen_at", R"("lastSeenAt")")};

inline std::vector<Key> without(std::vector<Key> keys, std::string_view name) {
  std::erase_if(keys, [&](const Key& key) { return key.name == name; });
  return keys;
}

inline std::vector<Key> with(std::vector<Key> keys, std::string_view name, std::string_view json) {
  for (Key& key : keys) {
    if (key.name == name) {
      key.json = json;
    }
  }
  return keys;
}

inline std::vector<Key> requiredOf(std::vector<Key> keys) {
  std::erase_if(keys, [](const Key& key) { return !key.isRequired; });
  return keys;
}

// The encoded form of a record without this key.
inline std::vector<Key> lacking(const std::vector<Key>& keys, const Key& key) {
  return key.otherwise ? with(keys, key.name, *key.otherwise) : without(keys, key.name);
}

class ReceivedRecordTest : public testing::TestWithParam<ReceivedRecord> {
 protected:
  const std::vector<Key>& keys() const { return GetParam().keys; }
  Result<std::string> rewritten(const std::vector<Key>& changed) const {
    return GetParam().rewrite(document(changed));
  }
  // Expects the document to be rejected at this key.
  void expectRefusal(const std::vector<Key>& changed, CodingError::Kind kind, const std::string& key) const {
    const std::string text = document(changed);
    const auto refused = GetParam().rewrite(text);
    ASSERT_FALSE(refused.ok()) << text;
    const auto* error = refused.error().as<CodingError>();
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->kind, kind) << text;
    // A wrong type instead of a record is an error of that record.
    EXPECT_TRUE(error->record == GetParam().name || kind == CodingError::Kind::wrongFormat) << text;
    EXPECT_EQ(error->keyPath.substr(0, error->keyPath.find('[')), key) << text;
  }
};

class SentRecordTest : public testing::TestWithParam<SentRecord> {};

inline const auto byName = [](const auto& tested) { return tested.param.name; };

}  // namespace quillmar
