#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "console/activity_log.h"

// Counting is incremental: each class here counts an entry once, when it is new in the log.
namespace quillmar {

struct ActivityCount {
  std::uint32_t allowed = 0;
  std::uint32_t blocked = 0;

  std::uint32_t total() const { return allowed + blocked; }
  void add(bool wasBlocked) { ++(wasBlocked ? blocked : allowed); }
  bool operator==(const ActivityCount&) const = default;
};

// The entries to count.
struct ActivityScope {
  // nullopt: all devices.
  std::optional<std::uint32_t> device;
  // The starts of consecutive days, then the end of the last one.
  std::vector<Date> days;
  std::vector<Date> hours;
};

struct SiteCount {
  std::uint32_t site = 0;
  ActivityCount count;
};

// Requests by day, by hour of one day, and by site on that day.
class ActivityCounts {
 public:
  explicit ActivityCounts(ActivityScope scope);

  // Counts the entries added to the log since the last call.
  void add(const ActivityLog& log);

  const ActivityScope& scope() const { return scope_; }
  const std::vector<ActivityCount>& days() const { return days_; }
  const std::vector<ActivityCount>& hours() const { return hours_; }
  // The day whose hours are counted.
  ActivityCount day() const { return day_; }
  // Entries without a readable time. They count for no day and no hour.
  std::uint32_t unreadable() const { return unreadable_; }
  // The sites with most requests of this kind on the day; sites with equal counts are sorted by name.
  std::vector<SiteCount> most(const ActivityLog& log, bool wasBlocked, std::size_t limit) const;
  // The sites with no request before the day, those with most requests first.
  std::vector<SiteCount> firstSeen(const ActivityLog& log, std::size_t limit) const;
  std::size_t firstSeenCount() const;
  bool isFirstSeen(std::uint32_t site) const;

 private:
  void add(const ActivityLog::Entry& entry, std::uint32_t site);

  const ActivityScope scope_;
  std::size_t counted_ = 0;
  std::uint32_t unreadable_ = 0;
  ActivityCount day_;
  std::vector<ActivityCount> days_;
  std::vector<ActivityCount> hours_;
  std::vector<ActivityCount> sites_;
  std::vector<Date> firstSeen_;
};

// The entries to list.
struct ActivitySpan {
  std::optional<std::uint32_t> device;
  // `to` is excluded.
  Date from;
  Date to;
  // nullopt: one item for each site. Otherwise one item for each name of this site.
  std::optional<std::uint32_t> site;
  std::optional<bool> wasBlocked;
};

// A site, or a name of the chosen site; blocked and allowed requests are two items.
struct ActivityItem {
  std::uint32_t text = 0;
  bool wasBlocked = false;
  std::uint32_t count = 0;
  std::uint32_t newest = 0;  // the index of its newest entry
};

class ActivityItems {
 public:
  explicit ActivityItems(const ActivitySpan& span) : span_(span) {}

  // Counts the entries that the log has more than at the last call.
  void add(const ActivityLog& log);

  const ActivitySpan& span() const { return span_; }
  std::string_view textOf(const ActivityLog& log, const ActivityItem& item) const {
    return span_.site ? log.name(item.text) : log.site(item.text);
  }
  // The items that `isWanted` accepts, in no particular order.
  template <class IsWanted>
  std::vector<ActivityItem> matching(IsWanted isWanted) const {
    std::vector<ActivityItem> items;
    for (const ActivityItem& item : items_) {
      if (item.count > 0 && isWanted(item)) {
        items.push_back(item);
      }
    }
    return items;
  }
  // Keeps the newest items and sorts them, the newest first.
  void keepNewest(const ActivityLog& log, std::vector<ActivityItem>& items, std::size_t limit) const;

 private:
  bool contains(const ActivityLog::Entry& entry, std::uint32_t site) const;

  ActivitySpan span_;
  std::size_t counted_ = 0;
  // Indexed by text and kind: for each text the allowed item, then the blocked one.
  std::vector<ActivityItem> items_;
};

}  // namespace quillmar
