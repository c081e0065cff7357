#pragma once

#include <concepts>
#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

namespace quillmar {

// A record is a plain struct with one table of its fields. Decoding, encoding, equality, printing and the
// maps that front ends see are all made from that table:
//
//   struct Point { std::int64_t x; std::optional<std::string> label; };
//   template <> inline constexpr auto wire<Point> = record(required("x", &Point::x), optional("label",
//   &Point::label));

enum class Presence { required, optional, orElse };

template <class R, class T, class Default = std::nullptr_t>
struct Field {
  using Type = T;
  std::string_view key;
  T R::*member;
  Presence presence;
  Default fallback{};
};

// Absent or of the wrong type: the record is refused. Always written.
template <class R, class T>
constexpr Field<R, T> required(std::string_view key, T R::*member) {
  return {key, member, Presence::required};
}

// Absent and null give nil; nil is not written.
template <class R, class T>
constexpr Field<R, T> optional(std::string_view key, T R::*member) {
  return {key, member, Presence::optional};
}

// Absent and null give the fallback; always written.
template <class R, class T, class Default>
constexpr Field<R, T, Default> orElse(std::string_view key, T R::*member, Default fallback) {
  return {key, member, Presence::orElse, fallback};
}

// Absent and null give the empty list; always written.
template <class R, class T>
constexpr Field<R, std::vector<T>> orEmpty(std::string_view key, std::vector<T> R::*member) {
  return {key, member, Presence::orElse};
}

// The table is a function that calls `visit(fields...)`: a tuple takes far longer to compile.
template <class... Fields>
constexpr auto record(Fields... fields) {
  return [fields...](auto&& visit) { return visit(fields...); };
}

template <class T>
inline constexpr std::nullptr_t wire = nullptr;

template <class T>
concept Record = !std::same_as<std::remove_cvref_t<decltype(wire<T>)>, std::nullptr_t>;

// Calls `visit(field)` for each field of the record's table, in its order.
template <Record T, class Visitor>
constexpr void forEachField(Visitor&& visit) {
  wire<T>([&](const auto&... fields) { (visit(fields), ...); });
}

template <Record T>
constexpr bool operator==(const T& one, const T& other) {
  return wire<T>(
      [&](const auto&... fields) { return ((one.*fields.member == other.*fields.member) && ...); });
}

namespace detail {
template <class T>
constexpr std::string_view functionName() {
  return __PRETTY_FUNCTION__;
}
}  // namespace detail

// For logs of developers' builds and for tests.
template <class T>
constexpr std::string_view recordName() {
  constexpr std::string_view name = detail::functionName<T>();
  constexpr std::size_t start = name.find("T = ") + 4;
  constexpr std::size_t end = name.find_first_of(";]", start);
  constexpr std::string_view qualified = name.substr(start, end - start);
  constexpr std::size_t colon = qualified.rfind(':');
  return colon == std::string_view::npos ? qualified : qualified.substr(colon + 1);
}

}  // namespace quillmar
