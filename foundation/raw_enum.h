#pragma once

#include <array>
#include <optional>
#include <string_view>
#include <utility>

namespace quillmar {

// Specialised by each enumeration with raw values, its cases in order:
//   template <> inline constexpr std::array rawNames<Light> = rawCases<Light>({{Light::red, "red"}, …});
template <class E>
inline constexpr std::nullptr_t rawNames = nullptr;

template <class E, std::size_t n>
constexpr std::array<std::pair<E, std::string_view>, n> rawCases(
    const std::pair<E, std::string_view> (&cases)[n]) {
  return std::to_array(cases);
}

template <class E>
concept RawEnum = requires {
  rawNames<E>.size();
};

template <RawEnum E>
constexpr std::string_view rawValue(E value) {
  for (const auto& [known, name] : rawNames<E>) {
    if (known == value) {
      return name;
    }
  }
  return {};
}

template <RawEnum E>
constexpr std::optional<E> fromRawValue(std::string_view text) {
  for (const auto& [known, name] : rawNames<E>) {
    if (name == text) {
      return known;
    }
  }
  return std::nullopt;
}

}  // namespace quillmar
