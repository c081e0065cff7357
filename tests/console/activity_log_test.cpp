#include "console/activity_log.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <set>
#include <string>
#include <vector>

#include "testing/live_memory.h"

namespace quillmar {
namespace {

using LogPage = std::vector<DNSLog>;

DNSLog entryOf(std::int64_t id, const std::string& domain, const std::string& time = "2016-10-08T12:00:00Z",
               bool wasBlocked = false) {
  DNSLog log;
  log.id = id;
  log.domain = domain;
  log.timestamp = time;
  log.wasBlocked = wasBlocked;
  return log;
}

struct ActivityLogTest : testing::Test {
  ActivityLog log{DateStyles("en_US", "Australia/Sydney")};

  std::string nameAt(std::size_t index) { return std::string(log.name(log.entries()[index].name)); }
  std::string siteAt(std::size_t index) {
    return std::string(log.site(log.siteOf(log.entries()[index].name)));
  }
};

TEST_F(ActivityLogTest, has_an_id_once_however_often_and_from_wherever_it_comes) {
  EXPECT_EQ(log.add(0, {entryOf(3, "a.example"), entryOf(2, "b.example"), entryOf(3, "c.example")}), 2U);
  EXPECT_EQ(log.add(1, {entryOf(2, "d.example"), entryOf(1, "e.example")}), 1U);
  ASSERT_EQ(log.entries().size(), 3U);
  EXPECT_EQ(nameAt(0), "a.example");
  EXPECT_EQ(nameAt(2), "e.example");
  EXPECT_EQ(log.entries()[2].device, 1U);
}

TEST_F(ActivityLogTest, takes_any_number_for_an_id) {
  using Limits = std::numeric_limits<std::int64_t>;
  EXPECT_EQ(log.add(0, {entryOf(0, "a"), entryOf(-1, "b"), entryOf(Limits::min(), "c"),
                        entryOf(Limits::max(), "d"), entryOf(Limits::min(), "e")}),
            4U);
}

TEST_F(ActivityLogTest, finds_ids_again_among_many_in_any_order) {
  LogPage page;
  for (std::int64_t i = 0; i < 20'000; ++i) {
    page.push_back(entryOf(i * 7919 % 20'011 * (std::int64_t{1} << 32U), "a.example"));
  }
  EXPECT_EQ(log.add(0, page), 20'000U);
  EXPECT_EQ(log.add(0, page), 0U);
}

TEST_F(ActivityLogTest, keeps_no_more_than_its_capacity) {
  LogPage page;
  for (std::size_t i = 0; i < ActivityLog::capacity + 10; ++i) {
    page.push_back(entryOf(static_cast<std::int64_t>(i), "a.example"));
  }
  EXPECT_EQ(log.add(0, page), ActivityLog::capacity);
  EXPECT_TRUE(log.isFull());
  EXPECT_EQ(log.add(0, {entryOf(-1, "a.example")}), 0U);
}

TEST_F(ActivityLogTest, knows_the_site_of_a_name_in_any_case) {
  log.add(0, {entryOf(1, "WWW.Shop.Example.CO.UK"), entryOf(2, "www.shop.example.co.uk"),
              entryOf(3, "cdn.example.co.uk"), entryOf(4, "localhost"), entryOf(5, "")});
  EXPECT_EQ(nameAt(0), "www.shop.example.co.uk");
  EXPECT_EQ(log.entries()[0].name, log.entries()[1].name);
  EXPECT_EQ(siteAt(0), "example.co.uk");
  EXPECT_EQ(siteAt(2), "example.co.uk");
  EXPECT_EQ(siteAt(3), "localhost");
  EXPECT_EQ(siteAt(4), ".") << "the root of all names";
  EXPECT_EQ(log.nameCount(), 4U);
  EXPECT_EQ(log.siteCount(), 3U);
}

TEST_F(ActivityLogTest, reads_a_time_as_the_lists_do) {
  log.add(0, {entryOf(1, "a", "2016-10-08T12:00:00.5Z"), entryOf(2, "a", "2016-10-08T23:00:00"),
              entryOf(3, "a", "yesterday"), entryOf(4, "a", "")});
  EXPECT_EQ(log.entries()[0].time, *parseTimestamp("2016-10-08T12:00:00.500Z"));
  EXPECT_EQ(log.entries()[1].time, *parseTimestamp("2016-10-08T12:00:00Z")) << "without a zone it is local";
  EXPECT_EQ(log.entries()[2].time, ActivityLog::unreadable);
  EXPECT_EQ(log.entries()[3].time, ActivityLog::unreadable);
}

TEST_F(ActivityLogTest, gives_a_row_its_record_back) {
  log.add(0, {entryOf(7, "www.example.com", "2016-10-08T12:00:00Z", true)});
  const DNSLog record = log.recordOf(log.entries()[0]);
  EXPECT_EQ(record.id, 7);
  EXPECT_EQ(record.domain, "www.example.com");
  EXPECT_EQ(record.timestamp, "2016-10-08T12:00:00Z");
  EXPECT_TRUE(record.wasBlocked);
}

TEST_F(ActivityLogTest, shortens_what_is_too_long_for_a_name_to_whole_characters) {
  const std::string longest = std::string(249, 'a') + ".com";
  std::string umlauts;
  for (int i = 0; i < 32'500; ++i) {
    umlauts += "ä";
  }
  log.add(0, {entryOf(1, longest), entryOf(2, "x" + longest), entryOf(3, umlauts)});
  EXPECT_EQ(nameAt(0), longest);
  EXPECT_EQ(nameAt(1), "x" + std::string(249, 'a') + "…");
  EXPECT_EQ(nameAt(2), umlauts.substr(0, 250) + "…");
}

TEST_F(ActivityLogTest, shortens_bytes_that_are_no_text) {
  log.add(0, {entryOf(1, std::string(65'000, '\x80'))});
  EXPECT_EQ(nameAt(0), "…");
}

// The heap used per entry.
double bytesPerEntry(const LogPage& page) {
  const std::size_t before = liveBytes();
  ActivityLog log(DateStyles("en_US", "UTC"));
  log.add(0, page);
  return static_cast<double>(liveBytes() - before) / static_cast<double>(log.entries().size());
}

TEST_F(ActivityLogTest, needs_little_memory_also_if_every_name_is_another) {
  LogPage page;
  for (int i = 0; i < 200'000; ++i) {
    page.push_back(entryOf(i, "host" + std::to_string(i) + ".site" + std::to_string(i % 1000) + ".example"));
  }
  EXPECT_LT(bytesPerEntry(page), 150);
}

TEST_F(ActivityLogTest, does_not_keep_65000_letters) {
  LogPage page;
  for (int i = 0; i < 1000; ++i) {
    page.push_back(entryOf(i, std::string(65'000, 'w') + std::to_string(i)));
  }
  EXPECT_LT(bytesPerEntry(page), 2000);
}

}  // namespace
}  // namespace quillmar
