#include "console/site_rows.h"

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "tests/console/child_detail_fixture.h"

namespace quillmar {
namespace {

using Drag = std::pair<double, double>;

// One of the four kinds of row, with what it has fired.
struct RowKind {
  std::string name;
  double direction;
  double minimumDistance;
  std::string strip;
  std::string stripColor;
  // The maximum height of a drag that is 100 points wide.
  double steepestOf100;
  std::function<std::shared_ptr<SwipeRow>(std::vector<std::string>& fired)> make;
};

void PrintTo(const RowKind& kind, std::ostream* out) { *out << kind.name; }

LogRow::Reaction recordingLog(std::vector<std::string>& fired) {
  return [&fired](const DNSLog& log) { fired.push_back(log.domain); };
}

const std::vector<RowKind> kinds{
    {"RecentActivityRow", 1, 30, "Allow", "brandGreen", 50,
     [](auto& fired) {
       return std::make_shared<RecentActivityRow>(makeLog("x.example", 5), recordingLog(fired));
     }},
    {"BlockedSiteRow", 1, 30, "Allow", "brandGreen", 50,
     [](auto& fired) {
       return std::make_shared<BlockedSiteRow>(makeLog("x.example", 5, true), recordingLog(fired));
     }},
    {"AllowedSiteRow", 1, 30, "Block", "brandRed", 50,
     [](auto& fired) {
       return std::make_shared<AllowedSiteRow>(makeLog("x.example", 5), recordingLog(fired));
     }},
    {"PermanentAllowedSiteRow", -1, 10, "Remove", "brandRed", 100,
     [](auto& fired) {
       return std::make_shared<PermanentAllowedSiteRow>(
           "x.example", [&fired](const std::string& domain) { fired.push_back(domain); });
     }},
};

struct SwipedRow : testing::TestWithParam<RowKind> {
  // Drags by this distance in the row's direction.
  void drag(double dx, double dy = 0) { row->dragChanged(dx * GetParam().direction, dy); }
  void end(double dx = 0, double dy = 0) { row->dragEnded(dx * GetParam().direction, dy); }
  // The offset in the row's direction.
  double offset() const { return row->offset() * GetParam().direction; }

  std::vector<std::string> fired;
  std::shared_ptr<SwipeRow> row = GetParam().make(fired);
};

TEST_P(SwipedRow, has_its_measures_and_its_strip) {
  EXPECT_EQ(row->typeName(), GetParam().name);
  EXPECT_EQ(row->swipeThreshold(), 80 * GetParam().direction);
  EXPECT_EQ(row->minimumDistance(), GetParam().minimumDistance);
  EXPECT_EQ(row->stripTitle(), GetParam().strip);
  EXPECT_EQ(row->stripColor(), GetParam().stripColor);
  EXPECT_EQ(row->offset(), 0);
  EXPECT_FALSE(row->showsStrip());
}

TEST_P(SwipedRow, follows_a_drag_in_its_own_direction) {
  drag(40);
  EXPECT_EQ(offset(), 40);
  EXPECT_TRUE(row->showsStrip());
  drag(25);
  EXPECT_EQ(offset(), 25);
}

TEST_P(SwipedRow, does_not_follow_a_drag_in_the_other_direction) {
  drag(-200);
  EXPECT_EQ(offset(), 0);
  drag(30);
  drag(-10);
  EXPECT_EQ(offset(), 30) << "the last accepted offset stays";
  drag(0);
  EXPECT_EQ(offset(), 30);
}

TEST_P(SwipedRow, does_not_follow_a_steep_drag) {
  const double steepest = GetParam().steepestOf100;
  drag(100, steepest);
  EXPECT_EQ(offset(), 0) << "the limit itself is too steep";
  drag(100, -steepest);
  EXPECT_EQ(offset(), 0);
  drag(100, steepest - 1);
  EXPECT_EQ(offset(), 100);
  row->offset = 0.0;
  drag(100, 1 - steepest);
  EXPECT_EQ(offset(), 100);
}

TEST_P(SwipedRow, fires_beyond_the_threshold_and_returns) {
  drag(81);
  EXPECT_TRUE(fired.empty()) << "not while it is dragged";
  end(81);
  EXPECT_EQ(fired, std::vector<std::string>{"x.example"});
  EXPECT_EQ(offset(), 0);
  EXPECT_FALSE(row->showsStrip());
}

TEST_P(SwipedRow, does_not_fire_at_the_threshold) {
  drag(80);
  end(80);
  EXPECT_TRUE(fired.empty());
  EXPECT_EQ(offset(), 0);
}

TEST_P(SwipedRow, uses_the_last_accepted_offset) {
  drag(100);
  drag(81, 500);
  end(10, 500);
  EXPECT_EQ(fired.size(), 1U) << "100 was accepted, what came after was not";
  drag(79);
  drag(300, 500);
  end(300, 500);
  EXPECT_EQ(fired.size(), 1U) << "79 was accepted";
}

TEST_P(SwipedRow, does_not_fire_for_a_drag_that_is_steep_from_the_start) {
  drag(81, 200);
  end(81, 200);
  EXPECT_TRUE(fired.empty());
}

TEST_P(SwipedRow, fires_once_per_swipe) {
  drag(200);
  end(200);
  end(200);
  EXPECT_EQ(fired.size(), 1U);
}

INSTANTIATE_TEST_SUITE_P(Kinds, SwipedRow, testing::ValuesIn(kinds),
                         [](const auto& tested) { return tested.param.name; });

struct SiteRows : testing::Test {
  static DNSLog visit(bool wasBlocked) { return makeLog("WWW.Shop.Example.co.uk", 5, wasBlocked); }

  std::vector<std::string> fired;
};

TEST_F(SiteRows, a_row_shows_the_site_and_not_the_name) {
  const RecentActivityRow row(visit(false), recordingLog(fired));
  EXPECT_EQ(row.site(), "example.co.uk");
}

TEST_F(SiteRows, a_recent_row_shows_the_querys_result_by_icon_and_badge) {
  RecentActivityRow row(visit(false), recordingLog(fired));
  EXPECT_EQ(row.icon(), "checkmark.circle.fill");
  EXPECT_EQ(row.iconColor(), "brandGreen");
  EXPECT_EQ(row.badge(), std::nullopt);
  row.log = visit(true);
  EXPECT_EQ(row.icon(), "xmark.circle.fill");
  EXPECT_EQ(row.iconColor(), "brandRed");
  EXPECT_EQ(row.badge(), "Blocked");
  EXPECT_EQ(row.badgeColor(), "brandRed");
  row.isAlreadyAllowed = true;
  EXPECT_EQ(row.icon(), "xmark.circle.fill") << "it was blocked then";
  EXPECT_EQ(row.badge(), "Allowed");
  EXPECT_EQ(row.badgeColor(), "brandGreen");
  row.log = visit(false);
  EXPECT_EQ(row.badge(), "Allowed");
}

TEST_F(SiteRows, a_blocked_row_shows_that_the_site_is_now_allowed) {
  BlockedSiteRow row(visit(true), recordingLog(fired));
  EXPECT_EQ(row.icon(), "xmark.circle.fill");
  EXPECT_EQ(row.iconColor(), "brandRed");
  EXPECT_EQ(row.badge(), std::nullopt);
  row.isAlreadyAllowed = true;
  EXPECT_EQ(row.badge(), "Now Allowed");
  EXPECT_EQ(row.badgeIcon(), "checkmark");
}

TEST_F(SiteRows, a_row_of_an_allowed_site_neither_moves_nor_fires) {
  RecentActivityRow recent(visit(true), recordingLog(fired));
  BlockedSiteRow blocked(visit(true), recordingLog(fired));
  for (AllowableRow* row : {static_cast<AllowableRow*>(&recent), static_cast<AllowableRow*>(&blocked)}) {
    row->isAlreadyAllowed = true;
    EXPECT_FALSE(row->dragChanged(200, 0));
    EXPECT_EQ(row->offset(), 0);
    row->dragEnded(200, 0);
    EXPECT_FALSE(row->allow.isEnabled());
    EXPECT_FALSE(row->allow());
  }
  EXPECT_TRUE(fired.empty());
}

TEST_F(SiteRows, a_row_whose_site_becomes_allowed_during_a_drag_returns_and_does_not_fire) {
  BlockedSiteRow row(visit(true), recordingLog(fired));
  row.dragChanged(200, 0);
  row.isAlreadyAllowed = true;
  row.dragEnded(200, 0);
  EXPECT_TRUE(fired.empty());
  EXPECT_EQ(row.offset(), 0);
}

TEST_F(SiteRows, an_action_does_the_same_as_a_drag) {
  RecentActivityRow recent(makeLog("a.example", 1), recordingLog(fired));
  BlockedSiteRow blocked(makeLog("b.example", 1, true), recordingLog(fired));
  AllowedSiteRow visited(makeLog("c.example", 1), recordingLog(fired));
  PermanentAllowedSiteRow permanent("d.example",
                                    [this](const std::string& domain) { fired.push_back(domain); });
  EXPECT_TRUE(recent.allow());
  EXPECT_TRUE(blocked.allow());
  EXPECT_TRUE(visited.block());
  EXPECT_TRUE(permanent.remove());
  EXPECT_EQ(fired, (std::vector<std::string>{"a.example", "b.example", "c.example", "d.example"}));
}

TEST_F(SiteRows, a_recent_row_never_stays_open) {
  RecentActivityRow row(visit(true), recordingLog(fired));
  row.dragChanged(200, 0);
  EXPECT_FALSE(row.isSwiped());
  row.dragEnded(200, 0);
  EXPECT_FALSE(row.isSwiped());
}

TEST_F(SiteRows, hostile_names_are_shown_unchanged) {
  const std::string hostile = "<b>%s\u202E" + std::string(65536, 'x') + ".evil\x01.example";
  const PermanentAllowedSiteRow row(hostile, {});
  EXPECT_EQ(row.domain(), hostile);
  const AllowedSiteRow visited(makeLog("<i>.<b>%@\u202E.example", 1), {});
  EXPECT_EQ(visited.site(), "<b>%@\u202E.example");
}

TEST_F(SiteRows, showing_an_equal_entry_announces_nothing) {
  AllowedSiteRow row(visit(false), {});
  const DNSLog log = row.log();
  row.show(log, "Just now");
  int changes = 0;
  const auto listening = row.observe([&](const Member& /*any*/) { ++changes; });
  row.show(log, "Just now");
  EXPECT_EQ(changes, 0);
  row.show(log, "1 min ago");
  EXPECT_EQ(changes, 1);
}

}  // namespace
}  // namespace quillmar
