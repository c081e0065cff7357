#include "foundation/filled_text.h"

#include <gtest/gtest.h>

namespace quillmar {
namespace {

TEST(FilledText, fills_the_places_in_order) {
  EXPECT_EQ(filled("%@ (id: %@), %d times", {"Mia", "c1", "3"}), "Mia (id: c1), 3 times");
  EXPECT_EQ(filled("nothing to fill", {}), "nothing to fill");
}

TEST(FilledText, never_looks_for_places_in_what_it_fills_in) {
  EXPECT_EQ(filled("%@ and %@", {"%@ %d", "%s %n"}), "%@ %d and %s %n");
}

TEST(FilledText, leaves_a_place_without_a_value_and_drops_a_value_without_a_place) {
  EXPECT_EQ(filled("%@ and %@", {"one"}), "one and %@");
  EXPECT_EQ(filled("%@", {"one", "two"}), "one");
}

}  // namespace
}  // namespace quillmar
