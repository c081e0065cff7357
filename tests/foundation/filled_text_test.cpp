#include "foundation/filled_text.h"

#include <gtest/gtest.h>

namespace quillmar {
namespace {

TEST(FilledText, replaces_placeholders_in_order) {
  EXPECT_EQ(filled("%@ (id: %@), %d times", {"Mia", "c1", "3"}), "Mia (id: c1), 3 times");
  EXPECT_EQ(filled("nothing to fill", {}), "nothing to fill");
}

TEST(FilledText, never_replaces_placeholders_in_inserted_values) {
  EXPECT_EQ(filled("%@ and %@", {"%@ %d", "%s %n"}), "%@ %d and %s %n");
}

TEST(FilledText, keeps_a_placeholder_without_a_value_and_drops_a_surplus_value) {
  EXPECT_EQ(filled("%@ and %@", {"one"}), "one and %@");
  EXPECT_EQ(filled("%@", {"one", "two"}), "one");
}

}  // namespace
}  // namespace quillmar
