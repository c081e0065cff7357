// Decoding an answer with 100 DNS logs, against two well-known parsers that fill the same records. All three
// check that each field exists and has its type.

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "bench/measure.h"
#include "client/records/dns_log.h"
#include "foundation/json.h"
#include "foundation/json_decode.h"

namespace quillmar::bench {
namespace {

constexpr int entryCount = 100;
constexpr int decodingsARound = 200;
constexpr int rounds = 101;

using Decoded = std::optional<DNSLogsResponse>;

std::string answerOfTheService() {
  DNSLogsResponse answer;
  for (int i = 0; i < entryCount; ++i) {
    const std::string number = std::to_string(i);
    answer.logs.push_back({.id = 8812000 + i,
                           .deviceId = "5B0E2C1A-77D4-4F0B-9C43-0D1E8A6F2B9C",
                           .parentId = "C9A1F6D2-3E58-4B7A-8F10-64D2B5E7A301",
                           .domain = "cdn" + number + ".assets.video-example.net",
                           .queryType = i % 3 == 0 ? "AAAA" : "A",
                           .wasBlocked = i % 7 == 0,
                           .timestamp = "2016-10-08T22:31:" + std::to_string(10 + i % 50) + ".123456Z"});
  }
  return encodeJson(answer).value();
}

Decoded decodeByUs(const std::string& text) {
  auto decoded = decodeJson<DNSLogsResponse>(text);
  return decoded.ok() ? Decoded(std::move(decoded).value()) : std::nullopt;
}

namespace with_nlohmann {

using Json = nlohmann::json;

bool take(Json& object, const char* key, std::string& out) {
  const auto found = object.find(key);
  if (found == object.end() || !found->is_string()) {
    return false;
  }
  out = std::move(found->get_ref<std::string&>());
  return true;
}

bool take(const Json& object, const char* key, std::int64_t& out) {
  const auto found = object.find(key);
  if (found == object.end() || !found->is_number_integer()) {
    return false;
  }
  out = found->get<std::int64_t>();
  return true;
}

bool take(const Json& object, const char* key, bool& out) {
  const auto found = object.find(key);
  if (found == object.end() || !found->is_boolean()) {
    return false;
  }
  out = found->get<bool>();
  return true;
}

Decoded decode(const std::string& text) {
  Json document = Json::parse(text, nullptr, false);
  const auto list = document.find("logs");
  if (list == document.end() || !list->is_array()) {
    return std::nullopt;
  }
  DNSLogsResponse answer;
  answer.logs.reserve(list->size());
  for (Json& entry : *list) {
    DNSLog& log = answer.logs.emplace_back();
    const bool complete = entry.is_object() && take(entry, "id", log.id) &&
                          take(entry, "device_id", log.deviceId) && take(entry, "parent_id", log.parentId) &&
                          take(entry, "domain", log.domain) && take(entry, "query_type", log.queryType) &&
                          take(entry, "was_blocked", log.wasBlocked) &&
                          take(entry, "timestamp", log.timestamp);
    if (!complete) {
      return std::nullopt;
    }
  }
  return answer;
}

}  // namespace with_nlohmann

namespace with_qt {

bool take(const QJsonObject& object, QLatin1String key, std::string& out) {
  const QJsonValue value = object.value(key);
  if (!value.isString()) {
    return false;
  }
  out = value.toString().toStdString();
  return true;
}

bool take(const QJsonObject& object, QLatin1String key, std::int64_t& out) {
  const QJsonValue value = object.value(key);
  if (!value.isDouble()) {
    return false;
  }
  out = value.toInteger();
  return true;
}

bool take(const QJsonObject& object, QLatin1String key, bool& out) {
  const QJsonValue value = object.value(key);
  if (!value.isBool()) {
    return false;
  }
  out = value.toBool();
  return true;
}

Decoded decode(const std::string& text) {
  const auto size = static_cast<qsizetype>(text.size());
  const QJsonDocument document = QJsonDocument::fromJson(QByteArray::fromRawData(text.data(), size));
  const QJsonValue list = document.object().value(QLatin1String("logs"));
  if (!list.isArray()) {
    return std::nullopt;
  }
  DNSLogsResponse answer;
  const QJsonArray entries = list.toArray();
  answer.logs.reserve(static_cast<std::size_t>(entries.size()));
  for (const QJsonValue entry : entries) {
    const QJsonObject object = entry.toObject();
    DNSLog& log = answer.logs.emplace_back();
    const bool complete = entry.isObject() && take(object, QLatin1String("id"), log.id) &&
                          take(object, QLatin1String("device_id"), log.deviceId) &&
                          take(object, QLatin1String("parent_id"), log.parentId) &&
                          take(object, QLatin1String("domain"), log.domain) &&
                          take(object, QLatin1String("query_type"), log.queryType) &&
                          take(object, QLatin1String("was_blocked"), log.wasBlocked) &&
                          take(object, QLatin1String("timestamp"), log.timestamp);
    if (!complete) {
      return std::nullopt;
    }
  }
  return answer;
}

}  // namespace with_qt

// A candidate with a different result doesn't count.
template <class Decode>
auto repeatedly(Decode decode, const std::string& text, const DNSLogsResponse& expected) {
  return [=] {
    for (int i = 0; i < decodingsARound; ++i) {
      const Decoded decoded = decode(text);
      if (!decoded || decoded->logs.size() != expected.logs.size()) {
        std::abort();
      }
    }
    if (!(*decode(text) == expected)) {
      std::abort();
    }
  };
}

int run() {
  const std::string text = answerOfTheService();
  const DNSLogsResponse expected = decodeByUs(text).value();
  const auto times =
      race(rounds, {repeatedly(decodeByUs, text, expected), repeatedly(with_nlohmann::decode, text, expected),
                    repeatedly(with_qt::decode, text, expected)});
  std::printf("decode: %.1fx nlohmann, %.1fx QJsonDocument (%.1f µs for %zu bytes)\n", times[1] / times[0],
              times[2] / times[0], times[0].count() / (decodingsARound + 1) * 1e6, text.size());
  return 0;
}

}  // namespace
}  // namespace quillmar::bench

int main() { return quillmar::bench::run(); }
