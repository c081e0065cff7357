#include "foundation/json_decode.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/foundation/sample_record.h"

namespace quillmar {
namespace {

using namespace std::string_literals;

using testing::ElementsAre;
using testing::IsEmpty;

// A valid document; `changes` replace fields, or remove them if empty.
std::string document(const std::map<std::string, std::string>& changes = {}) {
  std::map<std::string, std::string> fields = {{"name", R"("Rex")"},
                                               {"legs", "4"},
                                               {"is_furry", "true"},
                                               {"toys", R"(["ball","rope"])"},
                                               {"owner", R"({"name":"Ann"})"}};
  for (const auto& [key, text] : changes) {
    fields[key] = text;
  }
  std::string text = "{";
  for (const auto& [key, value] : fields) {
    if (!value.empty()) {
      text += (text.size() > 1 ? ",\"" : "\"") + key + "\":" + value;
    }
  }
  return text + "}";
}

Pet decoded(const std::string& text) {
  auto result = decodeJson<Pet>(text);
  EXPECT_TRUE(result.ok()) << text << ": " << (result ? "" : result.error().localizedDescription());
  return result ? std::move(result).value() : Pet();
}

CodingError refusal(std::string_view text) {
  const auto result = decodeJson<Pet>(text);
  EXPECT_FALSE(result.ok()) << text;
  const auto* error = result ? nullptr : result.error().as<CodingError>();
  EXPECT_NE(error, nullptr) << text;
  return error ? *error : CodingError();
}

TEST(Decoding, reads_every_field) {
  const auto pet = decoded(document({{"nick_name", R"("R")"},
                                     {"age", "3"},
                                     {"is_tame", "false"},
                                     {"vet", R"({"name":"Vic"})"},
                                     {"friends", R"([{"name":"Bob"},{"name":"Cleo"}])"},
                                     {"order", "9"}}));
  EXPECT_EQ(pet.name, "Rex");
  EXPECT_EQ(pet.legs, 4);
  EXPECT_TRUE(pet.isFurry);
  EXPECT_THAT(pet.toys, ElementsAre("ball", "rope"));
  EXPECT_EQ(pet.owner, Owner{"Ann"});
  EXPECT_EQ(pet.nickName, "R");
  EXPECT_EQ(pet.age, 3);
  EXPECT_EQ(pet.isTame, false);
  EXPECT_EQ(pet.vet, Owner{"Vic"});
  EXPECT_THAT(pet.friends, ElementsAre(Owner{"Bob"}, Owner{"Cleo"}));
  EXPECT_EQ(pet.order, 9);
}

TEST(Decoding, treats_null_as_absent_where_a_value_is_optional) {
  for (const std::string absent : {"", "null"}) {
    const auto pet = decoded(document({{"nick_name", absent},
                                       {"age", absent},
                                       {"is_tame", absent},
                                       {"vet", absent},
                                       {"friends", absent},
                                       {"order", absent}}));
    EXPECT_EQ(pet.nickName, std::nullopt);
    EXPECT_EQ(pet.age, std::nullopt);
    EXPECT_EQ(pet.isTame, std::nullopt);
    EXPECT_EQ(pet.vet, std::nullopt);
    EXPECT_THAT(pet.friends, IsEmpty());
    EXPECT_EQ(pet.order, 4);
  }
}

TEST(Decoding, reads_whole_numbers_however_they_are_written) {
  const std::vector<std::pair<std::string, std::int64_t>> cases = {
      {"5", 5},
      {"-0", 0},
      {"5.0", 5},
      {"1e3", 1000},
      {"-2.5e1", -25},
      {"9223372036854775807", std::numeric_limits<std::int64_t>::max()},
      {"-9223372036854775808", std::numeric_limits<std::int64_t>::min()}};
  for (const auto& [text, number] : cases) {
    EXPECT_EQ(decoded(document({{"legs", text}})).legs, number) << text;
    EXPECT_EQ(decoded(document({{"age", text}})).age, number) << text;
  }
}

TEST(Decoding, reads_text_as_it_is) {
  EXPECT_EQ(decoded(document({{"name", R"("")"}})).name, "");
  EXPECT_EQ(decoded(document({{"name", R"("a\u0000\n\u00e9\ud83d\ude00é")"}})).name, "a\0\né😀é"s);
}

TEST(Decoding, reads_an_empty_list) { EXPECT_THAT(decoded(document({{"toys", "[]"}})).toys, IsEmpty()); }

TEST(Decoding, skips_keys_that_the_record_does_not_name) {
  EXPECT_EQ(decoded(document({{"colour", R"({"deep":[1,2.5,"x"]})"}})), decoded(document()));
}

TEST(Decoding, takes_the_first_of_a_key_given_twice) {
  EXPECT_EQ(decoded(R"({"name":"Rex","name":"Max","legs":4,"legs":"x","is_furry":true,"toys":[],
                        "owner":{"name":"Ann"},"age":null,"age":3})"),
            decoded(document({{"toys", "[]"}})));
}

TEST(Decoding, reads_escaped_keys) {
  EXPECT_EQ(decoded(document({{"n\\u0061me", R"("Ida")"}, {"name", ""}})).name, "Ida");
}

TEST(Decoding, allows_white_space_around_the_document) {
  EXPECT_EQ(decoded(" \t\r\n" + document() + "\n "), decoded(document()));
}

struct Refused {
  std::string field;
  std::string text;
  CodingError::Kind kind;
};

void PrintTo(const Refused& refused, std::ostream* out) { *out << refused.field << " as " << refused.text; }

class DecodingRefuses : public testing::TestWithParam<Refused> {};

TEST_P(DecodingRefuses, the_whole_record) {
  const auto text = document({{GetParam().field, GetParam().text}});
  const auto error = refusal(text);
  EXPECT_EQ(error.kind, GetParam().kind);
  EXPECT_EQ(error.record, "Pet");
  EXPECT_EQ(error.keyPath, GetParam().field);
  if (!GetParam().text.empty()) {
    EXPECT_EQ(error.offset, text.find(GetParam().text, text.find('"' + GetParam().field + '"')));
  }
}

constexpr auto missing = CodingError::Kind::missing;
constexpr auto wrong = CodingError::Kind::wrongFormat;

INSTANTIATE_TEST_SUITE_P(
    RequiredValues, DecodingRefuses,
    testing::Values(Refused{"legs", "", missing}, Refused{"legs", "null", missing},
                    Refused{"legs", "5.5", wrong}, Refused{"legs", "9223372036854775808", wrong},
                    Refused{"legs", "-9223372036854777856.0", wrong}, Refused{"legs", "1e300", wrong},
                    Refused{"legs", "true", wrong}, Refused{"legs", R"("5")", wrong},
                    Refused{"legs", "[5]", wrong},                                         //
                    Refused{"is_furry", "", missing}, Refused{"is_furry", "null", wrong},  //
                    Refused{"is_furry", "1", wrong}, Refused{"is_furry", "0", wrong},      //
                    Refused{"is_furry", R"("true")", wrong},                               //
                    Refused{"name", "", missing}, Refused{"name", "null", missing},
                    Refused{"name", "5", wrong}, Refused{"name", "true", wrong},
                    Refused{"name", "{}", wrong},                                       //
                    Refused{"toys", "", missing}, Refused{"toys", "null", missing},     //
                    Refused{"toys", "{}", wrong}, Refused{"toys", R"("ball")", wrong},  //
                    Refused{"owner", "", missing}));

INSTANTIATE_TEST_SUITE_P(OptionalValues, DecodingRefuses,
                         testing::Values(Refused{"nick_name", "5", wrong}, Refused{"nick_name", "[]", wrong},
                                         Refused{"age", R"("5")", wrong}, Refused{"age", "5.5", wrong},
                                         Refused{"age", "false", wrong}, Refused{"is_tame", "1", wrong},
                                         Refused{"is_tame", R"("false")", wrong},
                                         Refused{"friends", "{}", wrong}, Refused{"order", R"("5")", wrong}));

TEST(Decoding, refuses_the_whole_list_for_one_bad_element) {
  const auto text = document({{"toys", R"(["ball",5,"rope"])"}});
  EXPECT_EQ(refusal(text), (CodingError{wrong, "Pet", "toys[1]", text.find("5,")}));
  EXPECT_EQ(refusal(document({{"toys", "[null]"}})).kind, missing);
}

TEST(Decoding, reports_the_nested_record_that_failed) {
  const auto text = document({{"friends", R"([{"name":"Bob"},{"name":7}])"}});
  EXPECT_EQ(refusal(text), (CodingError{wrong, "Owner", "friends[1].name", text.find("7}")}));
}

TEST(Decoding, reports_the_object_that_lacks_a_key) {
  const auto text = document({{"vet", R"({"nom":"Vic"})"}});
  EXPECT_EQ(refusal(text), (CodingError{missing, "Owner", "vet.name", text.find(R"({"nom")")}));
}

TEST(Decoding, refuses_a_nested_record_that_is_not_an_object) {
  const auto text = document({{"owner", R"("Ann")"}});
  EXPECT_EQ(refusal(text), (CodingError{wrong, "Owner", "owner", text.find(R"("Ann")")}));
  EXPECT_EQ(refusal(document({{"friends", "[[]]"}})).kind, wrong);
}

TEST(Decoding, refuses_a_document_that_is_not_an_object) {
  for (const auto* text : {"[]", "5", "true", R"("x")"}) {
    EXPECT_EQ(refusal(text), (CodingError{wrong, "Pet", "", 0})) << text;
  }
  EXPECT_EQ(refusal("null").kind, missing);
}

TEST(Decoding, refuses_a_malformed_document_wherever_the_fault_lies) {
  const std::string good = document();
  std::vector<std::string> texts = {"",
                                    " ",
                                    "{",
                                    good + "x",
                                    good + good,
                                    good + ",",
                                    good.substr(0, good.size() - 1),
                                    "\xEF\xBB\xBF"
                                    "x" +
                                        good,
                                    "// note\n" + good,
                                    document({{"name", "'Rex'"}}),
                                    document({{"legs", "04"}}),
                                    document({{"legs", "+4"}}),
                                    document({{"legs", ".5"}}),
                                    document({{"legs", "5."}}),
                                    document({{"legs", "NaN"}}),
                                    document({{"toys", R"(["ball",])"}}),
                                    "\0"s};
  for (const auto* unread : {"tru", "[1,]", "{\"a\"}", "{a:1}", "01", "1.", "\"\\x\"", "\"\\u12\"",
                             "\"\\ud800\"", "\"\xff\"", "\"\n\"", "\"", "[", "nul", "-", "1e", "--1"}) {
    texts.push_back(document({{"unread", unread}}));
  }
  for (const auto& text : texts) {
    EXPECT_EQ(refusal(text).kind, wrong) << text;
  }
}

TEST(Decoding, reports_the_byte_at_which_a_document_is_malformed) {
  EXPECT_EQ(refusal("").offset, 0U);
  EXPECT_EQ(refusal(R"({"name" "Rex"})").offset, 8U);
  EXPECT_EQ(refusal(R"({"name":"Rex)").offset, 12U);
  EXPECT_EQ(refusal(R"({"name":"Rex",})").offset, 14U);
  EXPECT_EQ(refusal("{}{").offset, 2U);
  EXPECT_EQ(refusal(R"({"name":"\x"})").offset, 10U);
  EXPECT_EQ(refusal(R"({"name":"\u00g0"})").offset, 13U);
  EXPECT_EQ(refusal("{\"name\":\"\xff\"}").offset, 9U);
}

TEST(Decoding, refuses_endless_nesting) {
  const std::string deep = std::string(100000, '[') + std::string(100000, ']');
  EXPECT_EQ(refusal(document({{"unread", deep}})).kind, wrong);
}

TEST(Decoding, tells_the_person_only_whether_something_is_missing) {
  EXPECT_EQ(refusal(document({{"name", ""}})).localizedDescription(),
            "The data couldn’t be read because it is missing.");
  EXPECT_EQ(refusal(document({{"name", "5"}})).localizedDescription(),
            "The data couldn’t be read because it isn’t in the correct format.");
}

TEST(Decoding, keeps_nothing_of_a_document_for_the_next) {
  EXPECT_EQ(decoded(document({{"age", "3"}})).age, 3);
  refusal("{");
  EXPECT_EQ(decoded(document()).age, std::nullopt);
}

}  // namespace
}  // namespace quillmar
