#pragma once

// The definition of `decodeJson`. Included only by sources that instantiate it, because it includes simdjson.

#include <simdjson.h>

#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "foundation/convert.h"
#include "foundation/json.h"
#include "foundation/record.h"

namespace quillmar {
namespace detail {

// The path is collected from the innermost key outwards.
struct DecodeFailure {
  CodingError::Kind kind = CodingError::Kind::wrongFormat;
  std::string_view record;
  std::vector<std::variant<std::string_view, std::size_t>> reversedPath;
};

// Uses this thread's parser and reuses its memory: the element is valid until the next call.
simdjson::error_code parseDocument(std::string_view text, simdjson::dom::element& root);
CodingError malformed(std::string_view text, std::string_view record);
CodingError describe(std::string_view text, const DecodeFailure& failure);

inline bool refuse(DecodeFailure& failure, CodingError::Kind kind) {
  failure.kind = kind;
  return false;
}

// null counts as absent, except for a Bool.
template <class T>
bool refuseType(simdjson::dom::element element, DecodeFailure& failure) {
  const bool absent = element.is_null() && !std::same_as<T, bool>;
  return refuse(failure, absent ? CodingError::Kind::missing : CodingError::Kind::wrongFormat);
}

std::optional<std::int64_t> wholeNumber(simdjson::dom::element element);

template <class T>
bool decodeElement(simdjson::dom::element element, T& out, DecodeFailure& failure);

// Finds the members of an object; of equal keys the first counts. While the members stand in the order of
// asking, the next one is found without a search.
class Members {
 public:
  explicit Members(simdjson::dom::object object)
      : object_(object), next_(object.begin()), end_(object.end()) {}

  std::optional<simdjson::dom::element> find(std::string_view key) {
    simdjson::dom::element found;
    if (next_ != end_ && next_.key_equals(key)) {
      found = next_.value();
      ++next_;
    } else if (object_.at_key(key).get(found) != simdjson::SUCCESS) {
      return std::nullopt;
    }
    return found;
  }

 private:
  simdjson::dom::object object_;
  simdjson::dom::object::iterator next_;
  simdjson::dom::object::iterator end_;
};

template <class R, class F>
bool decodeField(Members& members, const F& field, R& out, DecodeFailure& failure) {
  using Type = typename F::Type;
  const auto member = members.find(field.key);
  bool decoded = false;
  if (member && !member->is_null()) {
    decoded = decodeElement(*member, out.*field.member, failure);
  } else if (field.presence == Presence::required) {
    failure.record = recordName<R>();
    const bool wrongType = std::same_as<Type, bool> && member;
    decoded = refuse(failure, wrongType ? CodingError::Kind::wrongFormat : CodingError::Kind::missing);
  } else {
    if constexpr (!std::same_as<std::remove_cvref_t<decltype(field.fallback)>, std::nullptr_t>) {
      out.*field.member = Type(field.fallback);
    }
    return true;
  }
  if (!decoded) {
    if (failure.record.empty()) {
      failure.record = recordName<R>();
    }
    failure.reversedPath.emplace_back(field.key);
  }
  return decoded;
}

template <class T>
bool decodeList(simdjson::dom::element element, std::vector<T>& out, DecodeFailure& failure) {
  simdjson::dom::array array;
  if (element.get(array) != simdjson::SUCCESS) {
    return refuseType<std::vector<T>>(element, failure);
  }
  out.clear();
  out.reserve(array.size());
  for (const simdjson::dom::element item : array) {
    if (!decodeElement(item, out.emplace_back(), failure)) {
      failure.reversedPath.emplace_back(out.size() - 1);
      return false;
    }
  }
  return true;
}

template <class T>
bool decodeElement(simdjson::dom::element element, T& out, DecodeFailure& failure) {
  if constexpr (isOptional<T>) {
    return decodeElement(element, out.emplace(), failure);
  } else if constexpr (isList<T>) {
    return decodeList(element, out, failure);
  } else if constexpr (Record<T>) {
    simdjson::dom::object object;
    if (element.get(object) != simdjson::SUCCESS) {
      failure.record = recordName<T>();
      return refuseType<T>(element, failure);
    }
    Members members(object);
    return wire<T>(
        [&](const auto&... fields) { return (decodeField(members, fields, out, failure) && ...); });
  } else if constexpr (std::same_as<T, bool>) {
    return element.get(out) == simdjson::SUCCESS || refuseType<T>(element, failure);
  } else if constexpr (std::same_as<T, std::int64_t>) {
    const auto number = wholeNumber(element);
    out = number.value_or(0);
    return number.has_value() || refuseType<T>(element, failure);
  } else {
    static_assert(std::same_as<T, std::string> || std::same_as<T, Secret>, "not a type of the wire");
    std::string_view text;
    if (element.get(text) != simdjson::SUCCESS) {
      return refuseType<T>(element, failure);
    }
    out = std::string(text);
    return true;
  }
}

}  // namespace detail

template <Record T>
Result<T> decodeJson(std::string_view text) {
  simdjson::dom::element root;
  if (detail::parseDocument(text, root) != simdjson::SUCCESS) {
    return Error(detail::malformed(text, recordName<T>()));
  }
  T decoded{};
  detail::DecodeFailure failure;
  if (!detail::decodeElement(root, decoded, failure)) {
    return Error(detail::describe(text, failure));
  }
  return decoded;
}

}  // namespace quillmar
