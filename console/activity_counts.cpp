#include "console/activity_counts.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace quillmar {
namespace {

// The index of the part that contains the time. The bounds are the starts of the parts, then the end.
std::optional<std::size_t> partWith(Date time, const std::vector<Date>& bounds) {
  if (bounds.empty() || time < bounds.front() || time >= bounds.back()) {
    return std::nullopt;
  }
  const auto after = std::ranges::upper_bound(bounds, time);
  return static_cast<std::size_t>(after - bounds.begin()) - 1;
}

std::size_t partCount(const std::vector<Date>& bounds) { return bounds.empty() ? 0 : bounds.size() - 1; }

void rank(const ActivityLog& log, std::vector<SiteCount>& sites, std::size_t limit) {
  const auto end = sites.begin() + static_cast<std::ptrdiff_t>(std::min(limit, sites.size()));
  std::ranges::partial_sort(sites, end, [&](const SiteCount& one, const SiteCount& other) {
    return one.count.total() != other.count.total() ? one.count.total() > other.count.total()
                                                    : log.site(one.site) < log.site(other.site);
  });
  sites.erase(end, sites.end());
}

}  // namespace

ActivityCounts::ActivityCounts(ActivityScope scope)
    : scope_(std::move(scope)), days_(partCount(scope_.days)), hours_(partCount(scope_.hours)) {}

void ActivityCounts::add(const ActivityLog& log) {
  sites_.resize(log.siteCount());
  firstSeen_.resize(log.siteCount(), Date::max());
  const auto& entries = log.entries();
  for (; counted_ < entries.size(); ++counted_) {
    const auto& entry = entries[counted_];
    if (!scope_.device || entry.device == *scope_.device) {
      add(entry, log.siteOf(entry.name));
    }
  }
}

void ActivityCounts::add(const ActivityLog::Entry& entry, std::uint32_t site) {
  if (entry.time == ActivityLog::unreadable) {
    ++unreadable_;
    return;
  }
  firstSeen_[site] = std::min(firstSeen_[site], entry.time);
  if (const auto day = partWith(entry.time, scope_.days)) {
    days_[*day].add(entry.wasBlocked);
  }
  if (const auto hour = partWith(entry.time, scope_.hours)) {
    hours_[*hour].add(entry.wasBlocked);
    day_.add(entry.wasBlocked);
    sites_[site].add(entry.wasBlocked);
  }
}

std::vector<SiteCount> ActivityCounts::most(const ActivityLog& log, bool wasBlocked,
                                            std::size_t limit) const {
  std::vector<SiteCount> sites;
  for (std::uint32_t site = 0; site < sites_.size(); ++site) {
    const ActivityCount count =
        wasBlocked ? ActivityCount{0, sites_[site].blocked} : ActivityCount{sites_[site].allowed, 0};
    if (count.total() > 0) {
      sites.push_back({site, count});
    }
  }
  rank(log, sites, limit);
  return sites;
}

std::vector<SiteCount> ActivityCounts::firstSeen(const ActivityLog& log, std::size_t limit) const {
  std::vector<SiteCount> sites;
  for (std::uint32_t site = 0; site < sites_.size(); ++site) {
    if (isFirstSeen(site)) {
      sites.push_back({site, sites_[site]});
    }
  }
  rank(log, sites, limit);
  return sites;
}

std::size_t ActivityCounts::firstSeenCount() const {
  std::size_t count = 0;
  for (std::uint32_t site = 0; site < sites_.size(); ++site) {
    count += isFirstSeen(site) ? 1 : 0;
  }
  return count;
}

bool ActivityCounts::isFirstSeen(std::uint32_t site) const {
  return site < firstSeen_.size() && partWith(firstSeen_[site], scope_.hours).has_value();
}

bool ActivityItems::contains(const ActivityLog::Entry& entry, std::uint32_t site) const {
  return entry.time >= span_.from && entry.time < span_.to &&
         (!span_.device || entry.device == *span_.device) && (!span_.site || site == *span_.site) &&
         (!span_.wasBlocked || entry.wasBlocked == *span_.wasBlocked);
}

void ActivityItems::add(const ActivityLog& log) {
  items_.resize(2 * std::size_t{span_.site ? log.nameCount() : log.siteCount()});
  const auto& entries = log.entries();
  for (; counted_ < entries.size(); ++counted_) {
    const auto& entry = entries[counted_];
    const std::uint32_t site = log.siteOf(entry.name);
    if (contains(entry, site)) {
      const std::uint32_t text = span_.site ? entry.name : site;
      auto& item = items_[2 * std::size_t{text} + (entry.wasBlocked ? 1 : 0)];
      if (item.count == 0 || entries[item.newest].time < entry.time) {
        item.newest = static_cast<std::uint32_t>(counted_);
      }
      item.text = text;
      item.wasBlocked = entry.wasBlocked;
      ++item.count;
    }
  }
}

void ActivityItems::keepNewest(const ActivityLog& log, std::vector<ActivityItem>& items,
                               std::size_t limit) const {
  const auto timeOf = [&](const ActivityItem& item) { return log.entries()[item.newest].time; };
  const auto end = items.begin() + static_cast<std::ptrdiff_t>(std::min(limit, items.size()));
  std::ranges::partial_sort(items, end, [&](const ActivityItem& one, const ActivityItem& other) {
    if (timeOf(one) != timeOf(other)) {
      return timeOf(one) > timeOf(other);
    }
    const int order = textOf(log, one).compare(textOf(log, other));
    return order != 0 ? order < 0 : one.wasBlocked < other.wasBlocked;
  });
  items.erase(end, items.end());
}

}  // namespace quillmar
