#include "foundation/search.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace quillmar {
namespace {

bool isFound(std::string_view part, std::string_view text) {
  return SearchKey(text).contains(SearchKey(part));
}

// The text with brackets around the found places.
std::string marked(std::string_view part, std::string_view text) {
  std::string result;
  std::size_t done = 0;
  for (const auto& [start, size] : occurrences(SearchKey(part), text)) {
    result.append(text.substr(done, start - done)).append("[").append(text.substr(start, size)).append("]");
    done = start + size;
  }
  return result.append(text.substr(done));
}

TEST(Search, finds_a_part_anywhere) {
  EXPECT_TRUE(isFound("example", "www.example.com"));
  EXPECT_TRUE(isFound("www.example.com", "www.example.com"));
  EXPECT_FALSE(isFound("examples", "www.example.com"));
  EXPECT_FALSE(isFound("www.example.com", "example"));
}

TEST(Search, counts_neither_case_nor_accents) {
  for (const auto& [part, text] :
       std::vector<std::pair<std::string_view, std::string_view>>{{"anna", "ANNÁ"},
                                                                  {"ÁNNA", "anna"},
                                                                  {"zoe", "Zoë"},
                                                                  {"zoe", "Zoe\u0308"},
                                                                  {"zoë", "Zoe\u0308"},
                                                                  {"lukasz", "Łukasz"},
                                                                  {"soren", "Søren"},
                                                                  {"strasse", "Straße"},
                                                                  {"straße", "STRASSE"},
                                                                  {"isik", "Işık"},
                                                                  {"ışık", "IŞIK"},
                                                                  {"istanbul", "İstanbul"},
                                                                  {"nguyen", "Nguyễn"},
                                                                  {"αλεξης", "ΑΛΈΞΗΣ"},
                                                                  {"елка", "Ёлка"},
                                                                  {"đuc", "duc"},
                                                                  {"full", "ｆｕｌｌ"},
                                                                  {"12", "١٢"},
                                                                  {"office", "oﬃce"}}) {
    EXPECT_TRUE(isFound(part, text)) << part << " in " << text;
  }
}

TEST(Search, knows_the_scripts_of_the_world) {
  for (const auto& [part, text] : std::vector<std::pair<std::string_view, std::string_view>>{
           {"احمد", "أَحْمَد"},  // without the vowels
           {"שלום", "שָׁלוֹם"},  // without the points
           {"かき", "ガキ"},  // the other syllabary, without the voicing
           {"하", "한글"},    // a syllable that is being typed
           {"小", "李小龙"},
           {"कुमार", "राज कुमार"},
           {"มเ", "สมเกียรติ"},  // a vowel whose consonant follows
           {"ⴰⵎ", "ⴰⵎⴰⵣⵉⵖ"}}) {
    EXPECT_TRUE(isFound(part, text)) << part << " in " << text;
  }
}

TEST(Search, keeps_different_letters_apart) {
  for (const auto& [part, text] : std::vector<std::pair<std::string_view, std::string_view>>{{"क", "ख"},
                                                                                             {"कु", "कमार"},
                                                                                             {"李", "王"},
                                                                                             {"и", "ы"},
                                                                                             {"a.b", "ab"},
                                                                                             {"a b", "ab"},
                                                                                             {"o", "0"},
                                                                                             {"ㅏ", "호"}}) {
    EXPECT_FALSE(isFound(part, text)) << part << " in " << text;
  }
}

TEST(Search, counts_neither_invisible_characters_nor_marks_alone) {
  EXPECT_TRUE(isFound("anna", "an\u200B\u200Dna"));
  EXPECT_TRUE(SearchKey("").isEmpty());
  EXPECT_TRUE(SearchKey("\u0301\u200B").isEmpty());
  EXPECT_TRUE(isFound("\u0301", "anna"));
  EXPECT_FALSE(SearchKey(".").isEmpty());
}

TEST(Search, reads_any_bytes) {
  EXPECT_TRUE(isFound("b",
                      "a\xFF\xC3"
                      "b"));
  EXPECT_FALSE(isFound("anna", std::string(100000, '\xFF')));
  EXPECT_TRUE(isFound("z", std::string(100000, 'a') + "z"));
  EXPECT_EQ(marked("b",
                   "a\xFF\xC3"
                   "b"),
            "a\xFF\xC3[b]");
}

TEST(Occurrences, are_whole_letters) {
  EXPECT_EQ(marked("an", "Anna und Hán"), "[An]na und H[án]");
  EXPECT_EQ(marked("an", "Ha\u0301n\u0303o"), "H[a\u0301n\u0303]o");
  EXPECT_EQ(marked("e", "Æther"), "[Æ]th[e]r");
  EXPECT_EQ(marked("ae", "Æther"), "[Æ]ther");
  EXPECT_EQ(marked("하", "한글"), "[한]글");
  EXPECT_EQ(marked("小", "李小龙"), "李[小]龙");
  EXPECT_EQ(marked("b", "😀b😀b"), "😀[b]😀[b]");
  EXPECT_EQ(marked("😀", "a😀b"), "a[😀]b");
  EXPECT_EQ(marked("s", "Straße"), "[S]tra[ß]e");
}

TEST(Occurrences, do_not_overlap) { EXPECT_EQ(marked("aa", "aaaaa"), "[aa][aa]a"); }

TEST(Occurrences, are_none_of_an_empty_key) {
  EXPECT_TRUE(occurrences(SearchKey(), "anna").empty());
  EXPECT_TRUE(occurrences(SearchKey("\u0301"), "anna").empty());
  EXPECT_TRUE(occurrences(SearchKey("a"), "").empty());
}

TEST(Search, works_on_every_thread) {
  bool found = false;
  std::thread([&found] { found = isFound("zoe", "Zoë"); }).join();
  EXPECT_TRUE(found);
}

}  // namespace
}  // namespace quillmar
