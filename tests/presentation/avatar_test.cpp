#include "presentation/avatar.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace quillmar {
namespace {

std::string nameOf(int number) { return "Child " + std::to_string(number); }

TEST(AvatarColor, stays_the_same_for_a_name_in_one_process) {
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(avatarColor(nameOf(i)), avatarColor(nameOf(i)));
  }
}

TEST(AvatarColor, is_one_of_six_and_all_six_are_used) {
  std::set<SemanticColor> seen;
  for (int i = 0; i < 1000; ++i) {
    seen.insert(avatarColor(nameOf(i)));
  }
  EXPECT_EQ(seen,
            (std::set{SemanticColor::brandBlue, SemanticColor::brandTeal, SemanticColor::brandGreen,
                      SemanticColor::brandOrange, SemanticColor::systemPurple, SemanticColor::systemOrange}));
}

TEST(AvatarColor, may_differ_between_runs) {
  std::set<SemanticColor> seen;
  for (int run = 0; run < 100; ++run) {
    seen.insert(avatarColor("Mia", std::to_string(run)));
  }
  EXPECT_GT(seen.size(), 1U);
}

TEST(AvatarColor, exists_for_an_empty_name) { EXPECT_EQ(avatarColor(""), avatarColor("")); }

TEST(AvatarColor, system_orange_differs_from_brand_orange) {
  EXPECT_NE(color(SemanticColor::systemOrange), color(SemanticColor::brandOrange));
}

TEST(AvatarLetter, is_the_first_character_in_its_own_case) {
  EXPECT_EQ(avatarLetter("Mia"), "M");
  EXPECT_EQ(avatarLetter("mia"), "m");
  EXPECT_EQ(avatarLetter("👨‍👩‍👧 and more"), "👨‍👩‍👧");
  EXPECT_EQ(avatarLetter("é"), "é");
  EXPECT_EQ(avatarLetter(""), "");
}

}  // namespace
}  // namespace quillmar
