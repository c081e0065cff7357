#include "sandbox/misbehaviour_fields.h"

#include <array>
#include <type_traits>

namespace quillmar::sandbox {
namespace {

using std::chrono::milliseconds;

// Calls `visit` with the JSON key and the member of each field.
template <class Visit>
void eachField(Visit visit) {
  visit("only_path", &Misbehaviour::onlyPath);
  visit("latency_ms", &Misbehaviour::latency);
  visit("body_ms", &Misbehaviour::bodyTime);
  visit("hold", &Misbehaviour::hold);
  visit("fail_everything", &Misbehaviour::failEverything);
  visit("error_count", &Misbehaviour::errorCount);
  visit("error_share", &Misbehaviour::errorShare);
  visit("error_status", &Misbehaviour::errorStatus);
  visit("error_body", &Misbehaviour::errorBody);
  visit("drop_count", &Misbehaviour::dropCount);
  visit("drop_share", &Misbehaviour::dropShare);
  visit("drop", &Misbehaviour::drop);
  visit("refuse_refresh", &Misbehaviour::refuseRefresh);
  visit("checkin_status", &Misbehaviour::checkinStatus);
  visit("without_endpoint", &Misbehaviour::withoutEndpoint);
  visit("public_address", &Misbehaviour::publicAddress);
}

template <class Value>
struct Word {
  std::string_view text;
  Value value;
};

constexpr std::array errorBodies{Word<ErrorBody>{"json", ErrorBody::json},
                                 Word<ErrorBody>{"html", ErrorBody::html}};
constexpr std::array drops{Word<Drop>{"before_answer", Drop::beforeAnswer},
                           Word<Drop>{"in_body", Drop::inBody}};

constexpr const auto& wordsFor(ErrorBody) { return errorBodies; }
constexpr const auto& wordsFor(Drop) { return drops; }

template <class Value>
void readWord(Input& input, const char* key, Value& value) {
  const auto given = input.optionalText(key);
  bool known = !given;
  for (const auto& word : wordsFor(value)) {
    if (given != word.text) {
      continue;
    }
    value = word.value;
    known = true;
  }
  input.require(known, std::string{"“"} + key + "” can't be that.");
}

template <class Value>
void readValue(Input& input, const char* key, Value& value) {
  if constexpr (std::is_same_v<Value, bool>) {
    value = input.optionalFlag(key).value_or(value);
  } else if constexpr (std::is_same_v<Value, double>) {
    value = input.optionalNumber(key).value_or(value);
    input.require(value >= 0 && value <= 1, std::string{"“"} + key + "” lies between 0 and 1.");
  } else if constexpr (std::is_same_v<Value, std::string>) {
    value = input.optionalText(key).value_or(value);
  } else if constexpr (std::is_same_v<Value, std::optional<std::string>>) {
    if (auto given = input.optionalText(key)) {
      value = given;
    }
  } else if constexpr (std::is_enum_v<Value>) {
    readWord(input, key, value);
  } else {
    const auto given = input.optionalInteger(key);
    input.require(!given || (*given >= 0 && *given <= 1'000'000),
                  std::string{"“"} + key + "” is out of range.");
    if (given) {
      value = Value(static_cast<int>(*given));
    }
  }
}

Json shown(const std::optional<std::string>& value) { return orNull(value); }
Json shown(milliseconds value) { return value.count(); }

template <class Value>
Json shown(const Value& value) {
  if constexpr (std::is_enum_v<Value>) {
    for (const auto& word : wordsFor(value)) {
      if (word.value == value) {
        return word.text;
      }
    }
    return nullptr;
  } else {
    return value;
  }
}

}  // namespace

void readMisbehaviour(Input& input, const Json& object, Misbehaviour& misbehaviour) {
  eachField([&](const char* key, auto member) {
    const auto found = object.find(key);
    if (found != object.end() && found->is_null()) {
      misbehaviour.*member = Misbehaviour{}.*member;
    }
    readValue(input, key, misbehaviour.*member);
  });
  input.require(misbehaviour.errorStatus >= 400 && misbehaviour.errorStatus <= 599,
                "“error_status” is no error.");
}

Json describe(const Misbehaviour& misbehaviour) {
  auto json = Json::object();
  eachField([&](const char* key, auto member) { json[key] = shown(misbehaviour.*member); });
  return json;
}

}  // namespace quillmar::sandbox
