#include "family/family_texts.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "foundation/date_format.h"
#include "testing/virtual_dispatch.h"

namespace quillmar {
namespace {

using namespace std::chrono_literals;

constexpr Date now = VirtualDispatch::defaultStart;

FamilyInvitation expiring(const std::string& expiresAt) {
  FamilyInvitation invitation;
  invitation.expiresAt = expiresAt;
  return invitation;
}

FamilyMember named(const std::string& displayName) {
  FamilyMember member;
  member.displayName = displayName;
  return member;
}

FamilyMember withRole(const std::string& role) {
  FamilyMember member;
  member.role = role;
  return member;
}

TEST(FamilyTexts, remaining_time_is_in_whole_hours_and_minutes) {
  struct Row {
    Duration ahead;
    std::string text;
  };
  for (const auto& row : std::vector<Row>{{90min, "1h 30m"},
                                          {59min, "59m"},
                                          {30s, "0m"},
                                          {1s, "0m"},
                                          {0s, "Expired"},
                                          {-1s, "Expired"},
                                          {-1h, "Expired"},
                                          {60min, "1h 0m"},
                                          {60min - 1s, "59m"},
                                          {2h - 1s, "1h 59m"},
                                          {24h, "24h 0m"},
                                          {100h + 5min + 59s, "100h 5m"}}) {
    const auto invitation = expiring(formatISO8601(now + row.ahead));
    EXPECT_EQ(timeRemaining(invitation, now), row.text) << invitation.expiresAt;
    EXPECT_EQ(isExpired(invitation, now), row.ahead <= 0s) << invitation.expiresAt;
  }
}

TEST(FamilyTexts, an_expiry_can_have_fractions_and_any_zone) {
  EXPECT_EQ(timeRemaining(expiring("2016-10-08T23:31:00.000Z"), now), "1h 0m");
  EXPECT_EQ(timeRemaining(expiring("2016-10-08T22:31:00.001Z"), now), "0m");
  EXPECT_FALSE(isExpired(expiring("2016-10-08T22:31:00.001Z"), now));
  EXPECT_EQ(timeRemaining(expiring("2016-10-09T09:31:00+10:00"), now), "1h 0m");
  EXPECT_EQ(timeRemaining(expiring("9999-12-31T23:59:59Z"), now), "69979537h 28m");
}

TEST(FamilyTexts, an_invalid_expiry_is_unknown_and_not_expired) {
  for (const std::string& text :
       {std::string(), std::string("tomorrow"), std::string("2016-10-08"), std::string("2016-10-08T22:00:00"),
        std::string("1475965860"), std::string("2016-13-08T22:00:00Z"), std::string("٢٠١٦-10-08T22:00:00Z"),
        std::string(1'000'000, '2')}) {
    EXPECT_EQ(timeRemaining(expiring(text), now), "Unknown") << text.substr(0, 40);
    EXPECT_FALSE(isExpired(expiring(text), now));
  }
}

TEST(FamilyTexts, initials_come_from_two_words_or_the_first_two_characters) {
  struct Row {
    std::string name, initials;
  };
  for (const auto& row : std::vector<Row>{
           {"Ann Lee", "AL"},
           {"ann marie lee", "AM"},
           {"  ann   lee ", "AL"},
           {"Ann", "AN"},
           {"a", "A"},
           {"", ""},
           {" ann", " A"},
           {"   ", "  "},
           {"ann\tlee", "AN"},
           {"👨‍👩‍👧 👩‍👩‍👦 👨‍👨‍👦",
            "👨‍👩‍👧👩‍👩‍👦"},
           {"👨‍👩‍👧👩‍👩‍👦👨‍👨‍👦", "👨‍👩‍👧👩‍👩‍👦"},
           {"ßa", "SSA"},
           {"émile", "ÉM"}}) {
    EXPECT_EQ(memberInitials(named(row.name)), row.initials) << row.name;
  }
}

TEST(FamilyTexts, only_the_exact_role_makes_a_primary_parent) {
  EXPECT_EQ(roleLabel(withRole("primary")), "Primary");
  for (const std::string role : {"member", "Primary", "primary ", "", "admin"}) {
    EXPECT_EQ(roleLabel(withRole(role)), "Member") << role;
    EXPECT_TRUE(canEdit(withRole(role), true)) << role;
    EXPECT_FALSE(canEdit(withRole(role), false)) << role;
  }
  EXPECT_FALSE(canEdit(withRole("primary"), true));
  EXPECT_FALSE(canEdit(withRole("primary"), false));
}

}  // namespace
}  // namespace quillmar
