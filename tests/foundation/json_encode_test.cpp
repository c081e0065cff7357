#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "foundation/convert.h"
#include "foundation/json.h"
#include "foundation/json_decode.h"
#include "foundation/value.h"
#include "tests/foundation/sample_record.h"

namespace quillmar {
namespace {

using namespace std::string_literals;

Pet rex() {
  Pet pet;
  pet.name = "Rex";
  pet.legs = 4;
  pet.owner = {"Ann"};
  return pet;
}

std::string encoded(const Pet& pet) {
  auto result = encodeJson(pet);
  EXPECT_TRUE(result.ok());
  return result ? std::move(result).value() : std::string();
}

TEST(Encoding, writes_keys_in_table_order_without_nil) {
  EXPECT_EQ(
      encoded(rex()),
      R"({"name":"Rex","legs":4,"is_furry":false,"toys":[],"owner":{"name":"Ann"},"friends":[],"order":7})");
}

TEST(Encoding, writes_every_present_field) {
  auto pet = rex();
  pet.toys = {"ball", "rope"};
  pet.nickName = "";
  pet.age = 0;
  pet.isTame = false;
  pet.vet = Owner{"Vic"};
  pet.friends = {{"Bob"}};
  EXPECT_EQ(encoded(pet), R"({"name":"Rex","legs":4,"is_furry":false,"toys":["ball","rope"],)"
                          R"("owner":{"name":"Ann"},"nick_name":"","age":0,"is_tame":false,)"
                          R"("vet":{"name":"Vic"},"friends":[{"name":"Bob"}],"order":7})");
}

TEST(Encoding, is_read_back_as_the_same_record) {
  auto pet = rex();
  pet.name = "\"\\/\b\f\n\r\t\0\x1f é 👍"s;
  pet.legs = std::numeric_limits<std::int64_t>::min();
  pet.age = std::numeric_limits<std::int64_t>::max();
  pet.friends = {{"Bob"}, {""}};
  const auto again = decodeJson<Pet>(encoded(pet));
  ASSERT_TRUE(again.ok());
  EXPECT_EQ(again.value(), pet);
}

TEST(Encoding, refuses_text_that_is_not_utf_8) {
  auto pet = rex();
  pet.friends = {{"Bob"}, {"\xff"}};
  const auto result = encodeJson(pet);
  ASSERT_FALSE(result.ok());
  ASSERT_NE(result.error().as<CodingError>(), nullptr);
  EXPECT_EQ(result.error().as<CodingError>()->kind, CodingError::Kind::unwritable);
  EXPECT_EQ(result.error().as<CodingError>()->record, "Pet");
}

TEST(Encoding, escapes_control_characters_and_leaves_the_rest_as_it_is) {
  EXPECT_EQ(writeJson("\"\\\b\f\n\r\t"s), R"("\"\\\b\f\n\r\t")");
  EXPECT_EQ(writeJson("\0\x1f\x7f"s), "\"\\u0000\\u001f\x7f\"");
  EXPECT_EQ(writeJson("é/👍"), "\"é/👍\"");
}

TEST(Encoding, writes_every_kind_of_value) {
  const Value::Map map = {{"b", true}, {"a", Value::List{1, 2.5, "x", Value()}}, {"", Value::Map()}};
  EXPECT_EQ(writeJson(map), R"({"b":true,"a":[1,2.5,"x",null],"":{}})");
  EXPECT_EQ(writeJson(false), "false");
  EXPECT_EQ(writeJson(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
  EXPECT_EQ(writeJson(Value::List()), "[]");
}

TEST(Encoding, writes_a_real_number_that_reads_back_as_one) {
  const std::vector<std::pair<double, std::string>> cases = {
      {0.1, "0.1"},
      {5.0, "5.0"},
      {-0.0, "-0.0"},
      {1e300, "1e+300"},
      {123456789012345680000.0, "123456789012345683968.0"},
      {9007199254740993.0, "9007199254740992.0"}};
  for (const auto& [number, text] : cases) {
    EXPECT_EQ(writeJson(number), text);
    EXPECT_EQ(parseJson(text).value(), Value(number)) << text;
  }
}

TEST(Encoding, writes_numbers_without_a_json_form_as_null) {
  EXPECT_EQ(writeJson(std::nan("")), "null");
  EXPECT_EQ(writeJson(std::numeric_limits<double>::infinity()), "null");
}

TEST(Encoding, prints_a_record_with_its_name) {
  std::ostringstream out;
  out << Owner{"Ann"};
  EXPECT_EQ(out.str(), R"(Owner {"name":"Ann"})");
}

TEST(Parsing, gives_any_document_as_a_value) {
  const std::vector<std::pair<std::string, Value>> cases = {
      {"null", Value()},
      {"true", true},
      {"-5", -5},
      {"2.5", 2.5},
      {"5.0", 5.0},
      {"9223372036854775807", std::numeric_limits<std::int64_t>::max()},
      {"18446744073709551615", 18446744073709551615.0},
      {R"("x")", "x"},
      {"[]", Value::List()},
      {"{}", Value::Map()},
      {R"({"b":[1,{"c":null}],"a":""})",
       Value::Map{{"b", Value::List{1, Value::Map{{"c", Value()}}}}, {"a", ""}}},
  };
  for (const auto& [text, value] : cases) {
    const auto parsed = parseJson(text);
    ASSERT_TRUE(parsed.ok()) << text;
    EXPECT_EQ(parsed.value(), value) << text;
  }
}

TEST(Parsing, refuses_an_invalid_document) {
  for (const auto* text : {"", "{", "[1,]", "nul", "1 2", "'x'"}) {
    const auto parsed = parseJson(text);
    ASSERT_FALSE(parsed.ok()) << text;
    EXPECT_EQ(parsed.error().localizedDescription(),
              "The data couldn’t be read because it isn’t in the correct format.");
  }
}

TEST(AValue, finds_the_first_entry_of_a_key) {
  const Value map = Value::Map{{"a", 1}, {"b", 2}, {"a", 3}};
  ASSERT_NE(map.find("a"), nullptr);
  EXPECT_EQ(*map.find("a"), Value(1));
  EXPECT_EQ(map.find("c"), nullptr);
  EXPECT_EQ(Value("a").find("a"), nullptr);
}

TEST(AValue, equals_a_value_of_the_same_type_only) {
  EXPECT_EQ(Value(1), Value(1));
  EXPECT_FALSE(Value(1) == Value(1.0));
  EXPECT_FALSE(Value(1) == Value(true));
  EXPECT_FALSE(Value("") == Value());
}

}  // namespace
}  // namespace quillmar
