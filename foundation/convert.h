#pragma once

#include <concepts>
#include <cstdint>
#include <limits>
#include <optional>
#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

#include "foundation/raw_enum.h"
#include "foundation/record.h"
#include "foundation/secret.h"
#include "foundation/value.h"

namespace quillmar {

template <class T>
inline constexpr bool isOptional = false;
template <class T>
inline constexpr bool isOptional<std::optional<T>> = true;

template <class T>
inline constexpr bool isList = false;
template <class T>
inline constexpr bool isList<std::vector<T>> = true;

// Milliseconds since 1970.
inline Value toValue(Date date) { return date.time_since_epoch().count(); }
inline Value toValue(const Secret& secret) { return secret.text(); }

// What front ends see: a scalar as it is, an enumeration as its raw value, nil as nil, a record as the map of
// its fields that are not nil.
template <class T>
Value toValue(const T& value) {
  if constexpr (std::constructible_from<Value, const T&>) {
    return Value(value);
  } else if constexpr (RawEnum<T>) {
    return Value(rawValue(value));
  } else if constexpr (isOptional<T>) {
    return value ? toValue(*value) : Value();
  } else if constexpr (isList<T>) {
    Value::List list;
    list.reserve(value.size());
    for (const auto& element : value) {
      list.push_back(toValue(element));
    }
    return list;
  } else {
    static_assert(Record<T>, "a type that front ends see needs a field table or raw names");
    Value::Map map;
    forEachField<T>([&](const auto& field) {
      if (Value entry = toValue(value.*field.member); !entry.isNil()) {
        map.emplace_back(std::string(field.key), std::move(entry));
      }
    });
    return map;
  }
}

// From a person's input; nullopt if the value's type is not the field's.
template <class T>
std::optional<T> fromValue(const Value& value) {
  if constexpr (std::same_as<T, Value>) {
    return value;
  } else if constexpr (isOptional<T>) {
    if (value.isNil()) {
      return T();
    }
    if (auto inner = fromValue<typename T::value_type>(value)) {
      return T(std::move(*inner));
    }
    return std::nullopt;
  } else if constexpr (std::same_as<T, bool>) {
    return value.boolean() ? std::optional(*value.boolean()) : std::nullopt;
  } else if constexpr (std::same_as<T, std::string> || std::same_as<T, Secret>) {
    return value.string() ? std::optional<T>(*value.string()) : std::nullopt;
  } else if constexpr (RawEnum<T>) {
    return value.string() ? fromRawValue<T>(*value.string()) : std::nullopt;
  } else if constexpr (std::integral<T>) {
    const auto* number = value.integer();
    return number && std::in_range<T>(*number) ? std::optional(static_cast<T>(*number)) : std::nullopt;
  } else {
    static_assert(std::floating_point<T>, "not a type that a person can put in");
    if (const auto* number = value.real()) {
      return static_cast<T>(*number);
    }
    return value.integer() ? std::optional(static_cast<T>(*value.integer())) : std::nullopt;
  }
}

template <Record T>
std::ostream& operator<<(std::ostream& out, const T& record) {
  return out << recordName<T>() << ' ' << writeJson(toValue(record));
}

}  // namespace quillmar
