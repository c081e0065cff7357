#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "console/activity_time_filter.h"
#include "console/devices_section.h"
#include "console/keyed_rows.h"
#include "console/policy_section.h"
#include "console/root_domain.h"

namespace quillmar {

// The names of a list's members.
struct SiteListNames {
  std::string_view logs;
  std::string_view isLoading;
  std::string_view rows;
};

// Which entries a list fetches and keeps.
struct SiteListQuery {
  std::size_t limit;
  // nullopt: blocked and allowed entries.
  std::optional<bool> wasBlocked;
  std::size_t mostSites;
  std::string_view failureLine;
};

// The sites that a child's devices queried: each site once, with its newest entry, newest first. A refresh
// without changes neither announces nor creates a row.
class SiteLog {
 public:
  SiteLog(const SiteLog&) = delete;
  SiteLog& operator=(const SiteLog&) = delete;
  virtual ~SiteLog() = default;

  Published<std::vector<DNSLog>> logs;
  Published<bool> isLoading;

  // Fetches now, and every 2 seconds if the filter is real time.
  void start(ActivityTimeFilter filter);
  void stop() { timer_.reset(); }
  bool isRefreshing() const { return timer_ != nullptr; }

 protected:
  SiteLog(ChildPage& page, const DevicesSection& devices, const SiteListNames& names,
          const SiteListQuery& query);

  std::string timeText(const DNSLog& log) const;
  ChildPage& page() const { return page_; }

 private:
  virtual void showRows() = 0;
  void fetch(ActivityTimeFilter filter);
  void finish(Result<std::vector<DNSLog>> result);

  ChildPage& page_;
  const DevicesSection& devices_;
  const SiteListQuery query_;
  std::unique_ptr<Timer> timer_;
};

// A SiteLog with one row per site; a row lasts as long as its site is in the list. Swiping a row allows or
// blocks the site.
template <class Row>
class SiteList final : public SiteLog {
 public:
  SiteList(ChildPage& page, const DevicesSection& devices, PolicySection& policy, const SiteListNames& names,
           const SiteListQuery& query)
      : SiteLog(page, devices, names, query), rows(page.screen(), names.rows), policy_(policy) {}

  Rows<Row> rows;

  // Updates all rows: sites may have been allowed or removed.
  void showRows() override;
  void updateTimes();

 private:
  static constexpr bool isAllowable = std::is_base_of_v<AllowableRow, Row>;
  void changePolicy(const DNSLog& swiped);

  PolicySection& policy_;
};

template <class Row>
void SiteList<Row>::showRows() {
  showInRows(
      rows, logs(), [](const DNSLog& log) { return rootDomain(log); },
      [this](const DNSLog& log) {
        return std::make_shared<Row>(
            log, page().screen().weakly([this](const DNSLog& swiped) { changePolicy(swiped); }));
      },
      [this](Row& row, const DNSLog& log) {
        row.show(log, timeText(log));
        if constexpr (isAllowable) {
          setIfChanged(row.isAlreadyAllowed, policy_.isDomainAllowed(row.site()));
        }
      });
}

template <class Row>
void SiteList<Row>::updateTimes() {
  for (std::size_t i = 0; i < rows.size(); ++i) {
    setIfChanged(rows[i].timeText, timeText(rows[i].log()));
  }
}

template <class Row>
void SiteList<Row>::changePolicy(const DNSLog& swiped) {
  if constexpr (isAllowable) {
    policy_.allowFromLog(swiped);
  } else {
    policy_.blockFromLog(swiped);
  }
}

}  // namespace quillmar
