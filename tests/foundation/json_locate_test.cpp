#include "foundation/json_locate.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace quillmar {
namespace {

using namespace std::string_view_literals;

const std::string text = R"( {"a": [10, {"b" : "x,]}" , "c":null}], "a":1, "d":{}} )";

TEST(Locating, finds_where_a_value_begins) {
  EXPECT_EQ(locate(text, {}), 1U);
  EXPECT_EQ(locate(text, {"a"sv}), text.find('['));
  EXPECT_EQ(locate(text, {"a"sv, 0U}), text.find("10"));
  EXPECT_EQ(locate(text, {"a"sv, 1U}), text.find(R"({"b")"));
  EXPECT_EQ(locate(text, {"a"sv, 1U, "b"sv}), text.find(R"("x,)"));
  EXPECT_EQ(locate(text, {"a"sv, 1U, "c"sv}), text.find("null"));
  EXPECT_EQ(locate(text, {"d"sv}), text.find("{}"));
}

TEST(Locating, stops_at_the_last_container_if_the_path_does_not_exist) {
  EXPECT_EQ(locate(text, {"e"sv}), 1U);
  EXPECT_EQ(locate(text, {"a"sv, 2U}), text.find('['));
  EXPECT_EQ(locate(text, {"a"sv, 1U, "e"sv, "f"sv}), text.find(R"({"b")"));
  EXPECT_EQ(locate(text, {"d"sv, "x"sv}), text.find("{}"));
  EXPECT_EQ(locate(text, {0U}), 1U);
}

TEST(Locating, does_not_take_a_value_for_a_key) {
  const std::string tricky = R"({"x":"b","b":1})";
  EXPECT_EQ(locate(tricky, {"b"sv}), tricky.find("1"));
}

TEST(Locating, finds_keys_however_they_are_escaped) {
  const std::string escaped = R"({"\u0061\n":1,"z":2})";
  EXPECT_EQ(locate(escaped, {"a\n"sv}), escaped.find("1,"));
}

TEST(Locating, finds_the_first_byte_that_does_not_fit) {
  const std::vector<std::pair<std::string, std::size_t>> cases = {{"", 0},
                                                                  {"  ", 2},
                                                                  {"nul", 3},
                                                                  {"nulx", 3},
                                                                  {"{", 1},
                                                                  {"{}", 2},
                                                                  {"{} x", 3},
                                                                  {"{\"a\"}", 4},
                                                                  {"{\"a\":}", 5},
                                                                  {"{a:1}", 1},
                                                                  {"[1,]", 3},
                                                                  {"[1 2]", 3},
                                                                  {"01", 1},
                                                                  {"-", 1},
                                                                  {"1.", 2},
                                                                  {"1.x", 2},
                                                                  {"1e", 2},
                                                                  {"1e+", 3},
                                                                  {"+1", 0},
                                                                  {"\"a", 2},
                                                                  {"\"a\nb\"", 2},
                                                                  {"\"\\x\"", 2},
                                                                  {"\"\\u12x4\"", 5},
                                                                  {"\"\\u12", 5},
                                                                  {"\"\\", 2},
                                                                  {"\"\xff\"", 1},
                                                                  {"\"a\xC3\"", 2},
                                                                  {"[\"é\",\xff]", 6},
                                                                  {"'x'", 0},
                                                                  {"\xEF\xBB\xBF{}", 0},
                                                                  {"{\"a\":1,}", 7},
                                                                  {"{,}", 1},
                                                                  {"[,]", 1},
                                                                  {"\"\\ud800\"", 1},
                                                                  {"\"\\ud83d\\ude00\"", 14}};
  for (const auto& [document, offset] : cases) {
    EXPECT_EQ(firstBadByte(document), offset) << document;
  }
}

TEST(Locating, gives_up_at_deep_nesting) {
  const std::string deep(100000, '[');
  EXPECT_LT(firstBadByte(deep), 2000U);
}

}  // namespace
}  // namespace quillmar
