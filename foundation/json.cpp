#include "foundation/json.h"

#include "foundation/json_decode.h"
#include "foundation/json_locate.h"

namespace quillmar {
namespace {

Value::List listFrom(simdjson::dom::array array);
Value::Map mapFrom(simdjson::dom::object object);

Value valueFrom(simdjson::dom::element element) {
  switch (element.type()) {
    case simdjson::dom::element_type::ARRAY:
      return listFrom(element.get_array().value_unsafe());
    case simdjson::dom::element_type::OBJECT:
      return mapFrom(element.get_object().value_unsafe());
    case simdjson::dom::element_type::INT64:
      return element.get_int64().value_unsafe();
    case simdjson::dom::element_type::UINT64:
      return static_cast<double>(element.get_uint64().value_unsafe());
    case simdjson::dom::element_type::DOUBLE:
      return element.get_double().value_unsafe();
    case simdjson::dom::element_type::STRING:
      return std::string(element.get_string().value_unsafe());
    case simdjson::dom::element_type::BOOL:
      return element.get_bool().value_unsafe();
    case simdjson::dom::element_type::NULL_VALUE:
      break;
  }
  return {};
}

Value::List listFrom(simdjson::dom::array array) {
  Value::List list;
  for (const auto element : array) {
    list.push_back(valueFrom(element));
  }
  return list;
}

Value::Map mapFrom(simdjson::dom::object object) {
  Value::Map map;
  for (const auto entry : object) {
    map.emplace_back(std::string(entry.key), valueFrom(entry.value));
  }
  return map;
}

std::string pathText(const std::vector<JsonStep>& path) {
  std::string text;
  for (const auto& step : path) {
    if (const auto* index = std::get_if<std::size_t>(&step)) {
      text += '[' + std::to_string(*index) + ']';
    } else {
      text += text.empty() ? "" : ".";
      text += std::get<std::string_view>(step);
    }
  }
  return text;
}

}  // namespace

namespace detail {

simdjson::error_code parseDocument(std::string_view text, simdjson::dom::element& root) {
  thread_local simdjson::dom::parser parser;
  return parser.parse(text.data(), text.size()).get(root);
}

CodingError malformed(std::string_view text, std::string_view record) {
  return {CodingError::Kind::wrongFormat, std::string(record), {}, firstBadByte(text)};
}

CodingError describe(std::string_view text, const DecodeFailure& failure) {
  const std::vector<JsonStep> path(failure.reversedPath.rbegin(), failure.reversedPath.rend());
  return {failure.kind, std::string(failure.record), pathText(path), locate(text, path)};
}

std::optional<std::int64_t> wholeNumber(simdjson::dom::element element) {
  std::int64_t whole = 0;
  if (element.get(whole) == simdjson::SUCCESS) {
    return whole;
  }
  constexpr double limit = 9223372036854775808.0;
  double real = 0;
  const bool fits = element.is_double() && element.get(real) == simdjson::SUCCESS && real >= -limit &&
                    real < limit && std::trunc(real) == real;
  return fits ? std::optional(static_cast<std::int64_t>(real)) : std::nullopt;
}

}  // namespace detail

std::string CodingError::localizedDescription() const {
  switch (kind) {
    case Kind::missing:
      return "The data couldn’t be read because it is missing.";
    case Kind::wrongFormat:
      return "The data couldn’t be read because it isn’t in the correct format.";
    case Kind::unwritable:
      break;
  }
  return "The data couldn’t be written because it isn’t in the correct format.";
}

Result<std::string> checkedJson(std::string document, std::string_view record) {
  if (!simdjson::validate_utf8(document)) {
    return Error(CodingError{CodingError::Kind::unwritable, std::string(record), {}, 0});
  }
  return document;
}

Result<Value> parseJson(std::string_view text) {
  simdjson::dom::element root;
  if (detail::parseDocument(text, root) != simdjson::SUCCESS) {
    return Error(detail::malformed(text, "Value"));
  }
  return valueFrom(root);
}

}  // namespace quillmar
