#include "console/child_activity_view.h"

#include <algorithm>
#include <numeric>
#include <unordered_set>
#include <utility>

#include "console/keyed_rows.h"
#include "foundation/text.h"

namespace quillmar {
namespace {

constexpr int dayCount = 7;
constexpr std::size_t mostSiteBars = 10;
// A front end can replace this many rows within a frame, for each letter that is typed.
constexpr std::size_t rowsAtFirst = 20;
constexpr std::size_t moreRows = 50;
constexpr std::size_t hoursPerLabel = 6;

constexpr auto oneDay = std::chrono::days(1);

// The top of a chart's scale: at least `count`, round, and even, so that its middle is a whole number.
std::uint32_t scaleFor(std::uint32_t count) {
  for (std::uint64_t unit = 1;; unit *= 10) {
    for (const std::uint64_t steps : {2U, 4U, 6U, 8U, 10U}) {
      if (steps * unit >= count) {
        return static_cast<std::uint32_t>(steps * unit);
      }
    }
  }
}

std::uint32_t largest(const std::vector<ActivityCount>& counts) {
  std::uint32_t most = 0;
  for (const ActivityCount& count : counts) {
    most = std::max(most, count.total());
  }
  return most;
}

void showParts(ActivityBar& bar, const ActivityCount& count, std::uint32_t whole) {
  const auto part = [whole](std::uint32_t number) {
    return whole == 0 ? 0.0 : static_cast<double>(number) / static_cast<double>(whole);
  };
  setIfChanged(bar.allowed, part(count.allowed));
  setIfChanged(bar.blocked, part(count.blocked));
}

}  // namespace

ChildActivityView::ChildActivityView(ChildPage& page, DevicesSection& devices, PolicySection& policy)
    : ScreenModel("ChildActivityView"),
      page_(page),
      devices_(devices),
      policy_(policy),
      calendar_(page.calendar()),
      log_(page.dateStyles()),
      filling(page, *this, calendar_, log_, [this] { countNews(); }),
      today_(calendar_.dayOf(page.dispatch().now())),
      chosenDay_(today_),
      mostRows_(rowsAtFirst),
      passingTime_(page.environment(), weakly([this] { followDate(); })) {
  recount();
  reactions_.push_back(devices.devices.onChange(weakly([this] {
    if (isOnScreen()) {
      filling.load(devices_.devices());
    }
  })));
  // The policy's own reaction, registered earlier, has already updated its set of allowed sites.
  reactions_.push_back(policy.allowedDomains.onChange(weakly([this] { showRows(); })));
  reactions_.push_back(filter.onChange([this] { selectRows(); }));
}

void ChildActivityView::onAppear() {
  filling.load(devices_.devices());
  passingTime_.start();
}

void ChildActivityView::onDisappear() {
  filling.close();
  passingTime_.stop();
}

ActivityContent ChildActivityView::computeContent() const {
  if (!log_.entries().empty()) {
    return ActivityContent::charts;
  }
  if (filling.deviceNames().empty()) {
    return ActivityContent::noDevices;
  }
  return filling.state() == FillingState::complete ? ActivityContent::empty : ActivityContent::waiting;
}

std::vector<ChoiceItem> ChildActivityView::computeDeviceChoices() const {
  std::vector<ChoiceItem> choices{{"All Devices", !chosenDevice_}};
  for (auto& name : filling.deviceNames()) {
    const bool isSelected = chosenDevice_ && *chosenDevice_ + 1 == choices.size();
    choices.push_back({std::move(name), isSelected});
  }
  return choices;
}

void ChildActivityView::chooseDeviceAt(std::int64_t choice) {
  if (choice < 0 || std::cmp_greater(choice, filling.deviceNames().size())) {
    return;
  }
  chosenDevice_ = choice == 0 ? std::nullopt : std::optional(static_cast<std::uint32_t>(choice - 1));
  recount();
}

void ChildActivityView::chooseDay(LocalDay day) {
  chosenDay_ = day;
  recount();
}

void ChildActivityView::choose(const ChosenBar& bar) {
  chosen_ = chosen_ == bar ? ChosenBar() : bar;
  selectItems();
}

void ChildActivityView::showMore() {
  mostRows_ += moreRows;
  showRows();
}

void ChildActivityView::followDate() {
  const LocalDay former = std::exchange(today_, calendar_.dayOf(page_.dispatch().now()));
  if (former == today_) {
    return;
  }
  if (chosenDay_ == former || chosenDay_ > today_ || chosenDay_ <= today_ - dayCount * oneDay) {
    chosenDay_ = today_;
  }
  recount();
}

void ChildActivityView::recount() {
  days_.clear();
  for (int back = dayCount - 1; back >= 0; --back) {
    days_.push_back(today_ - back * oneDay);
  }
  chosen_ = ChosenBar();
  counts_.emplace(scope());
  counts_->add(log_);
  selectItems();
}

void ChildActivityView::countNews() {
  counts_->add(log_);
  items_->add(log_);
  showCharts();
  showRows();
}

void ChildActivityView::selectItems() {
  items_.emplace(span());
  items_->add(log_);
  searchKeys_.clear();
  showCharts();
  selectRows();
}

ActivityScope ChildActivityView::scope() const {
  std::vector<Date> starts;
  for (const LocalDay day : days_) {
    starts.push_back(calendar_.startOf(day));
  }
  starts.push_back(calendar_.startOf(today_ + oneDay));
  return {.device = chosenDevice_, .days = std::move(starts), .hours = calendar_.hoursOf(chosenDay_)};
}

ActivitySpan ChildActivityView::span() const {
  const auto& hours = counts_->scope().hours;
  return {.device = chosenDevice_,
          .from = chosen_.hour ? hours[*chosen_.hour] : hours.front(),
          .to = chosen_.hour ? hours[*chosen_.hour + 1] : hours.back(),
          .site = chosen_.site,
          .wasBlocked = chosen_.wasBlocked};
}

// The charts.

void ChildActivityView::showCharts() {
  showDays();
  showHours();
  showSites(visitedBars, counts_->most(log_, false, mostSiteBars), false);
  showSites(blockedBars, counts_->most(log_, true, mostSiteBars), true);
  showNewSiteBars();
  const auto unreadable = counts_->unreadable();
  setIfChanged(unreadableText,
               unreadable == 0
                   ? std::nullopt
                   : std::optional(requestsText(unreadable) + (unreadable == 1 ? " has" : " have") +
                                   " no readable time and can't be shown in the charts."));
}

void ChildActivityView::showDays() {
  const auto scale = scaleFor(largest(counts_->days()));
  setIfChanged(daysTop, calendar_.number(scale));
  setIfChanged(daysMiddle, calendar_.number(scale / 2));
  ActivityCount week;
  for (const ActivityCount& count : counts_->days()) {
    week.allowed += count.allowed;
    week.blocked += count.blocked;
  }
  setIfChanged(daysNumber, numberText(week));
  // A bar belongs to its place and not to its day, so that it grows and shrinks at midnight.
  std::vector<std::size_t> places(days_.size());
  std::iota(places.begin(), places.end(), std::size_t{0});
  showInRows(
      dayBars, places, [](std::size_t place) { return std::to_string(place); },
      [this](std::size_t place) {
        return std::make_shared<ActivityBar>(weakly([this, place] { chooseDay(days_[place]); }));
      },
      [&](ActivityBar& bar, std::size_t place) {
        setIfChanged(bar.label, calendar_.weekday(days_[place]));
        setIfChanged(bar.name, dayName(days_[place]));
        setIfChanged(bar.number, numberText(counts_->days()[place]));
        setIfChanged(bar.isSelected, days_[place] == chosenDay_);
        showParts(bar, counts_->days()[place], scale);
      });
}

void ChildActivityView::showHours() {
  const auto& hours = counts_->hours();
  const auto scale = scaleFor(largest(hours));
  setIfChanged(hoursTop, calendar_.number(scale));
  setIfChanged(hoursMiddle, calendar_.number(scale / 2));
  setIfChanged(hoursTitle, dayName(chosenDay_));
  setIfChanged(hoursNumber, numberText(counts_->day()));
  std::vector<std::size_t> places(hours.size());
  std::iota(places.begin(), places.end(), std::size_t{0});
  showInRows(
      hourBars, places, [](std::size_t place) { return std::to_string(place); },
      [this](std::size_t place) {
        return std::make_shared<ActivityBar>(weakly([this, place] { choose({.hour = place}); }));
      },
      [&](ActivityBar& bar, std::size_t place) {
        const Date start = counts_->scope().hours[place];
        setIfChanged(bar.label, place % hoursPerLabel == 0 ? calendar_.hour(start) : std::string());
        setIfChanged(bar.name, hourName(place));
        setIfChanged(bar.number, numberText(hours[place]));
        setIfChanged(bar.isSelected, chosen_.hour == place);
        showParts(bar, hours[place], scale);
      });
}

void ChildActivityView::showSites(Rows<ActivityBar>& bars, const std::vector<SiteCount>& sites,
                                  std::optional<bool> wasBlocked) {
  const std::uint32_t most = sites.empty() ? 0 : sites.front().count.total();
  const ActivityCount day = counts_->day();
  const std::uint32_t whole = !wasBlocked ? day.total() : *wasBlocked ? day.blocked : day.allowed;
  showInRows(
      bars, sites, [this](const SiteCount& site) { return std::string(log_.site(site.site)); },
      [&](const SiteCount& site) {
        return std::make_shared<ActivityBar>(weakly(
            [this, site = site.site, wasBlocked] { choose({.site = site, .wasBlocked = wasBlocked}); }));
      },
      [&](ActivityBar& bar, const SiteCount& site) {
        setIfChanged(bar.name, std::string(log_.site(site.site)));
        setIfChanged(bar.number,
                     requestsText(site.count.total()) + ", " + percentText(site.count.total(), whole));
        setIfChanged(bar.isSelected, chosen_ == ChosenBar{.site = site.site, .wasBlocked = wasBlocked});
        showParts(bar, site.count, most);
      });
}

bool ChildActivityView::knowsEarlierDays() const {
  const auto reached = filling.reached();
  return filling.state() == FillingState::complete || (reached && *reached < counts_->scope().hours.front());
}

void ChildActivityView::showNewSiteBars() {
  setIfChanged(newSitesTitle, "First Seen " + whenText());
  if (!knowsEarlierDays()) {
    setIfChanged(newSitesCaption, std::string("Shown once earlier days are loaded"));
    setIfChanged(allNewSitesTitle, {});
    showSites(newSiteBars, {}, std::nullopt);
    return;
  }
  const auto reached = filling.reached();
  setIfChanged(newSitesCaption, reached && *reached < counts_->scope().hours.front()
                                    ? "Not in any request since " + page_.dateStyles().mediumDate(*reached)
                                    : std::string("There are no earlier requests to compare with"));
  const std::size_t count = counts_->firstSeenCount();
  setIfChanged(allNewSitesTitle,
               count > mostSiteBars
                   ? std::optional("Show All " + calendar_.number(static_cast<std::int64_t>(count)))
                   : std::nullopt);
  showSites(newSiteBars, counts_->firstSeen(log_, mostSiteBars), std::nullopt);
}

// The rows.

void ChildActivityView::selectRows() {
  mostRows_ = rowsAtFirst;
  showRows(RowsFor::otherSelection);
  shownSites.select();
}

void ChildActivityView::showRows(RowsFor selection) {
  auto items = items_->matching(
      [this](const ActivityItem& item) { return !chosen_.isFirstSeen || counts_->isFirstSeen(item.text); });
  shownSites.setListSize(items.size());
  std::erase_if(items, [this](const ActivityItem& item) { return !matches(item); });
  setIfChanged(rowsTitle, computeRowsTitle());
  setIfChanged(rowsCount, calendar_.number(std::ssize(items)));
  setIfChanged(hasMoreRows, items.size() > mostRows_);
  setIfChanged(showsNames, chosen_.site.has_value());
  items_->keepNewest(log_, items, mostRows_);
  if (selection == RowsFor::otherSelection) {
    gatherSpareRows(items);
  }
  showInRows(
      siteRows, items, [this](const ActivityItem& item) { return keyOf(item); },
      [this](const ActivityItem& item) { return rowFor(item); },
      [this](LogRow& row, const ActivityItem& item) { showRow(row, item); });
  spareBlocked_.clear();
  spareAllowed_.clear();
}

std::string ChildActivityView::keyOf(const ActivityItem& item) const {
  return (item.wasBlocked ? "blocked " : "allowed ") + std::string(items_->textOf(log_, item));
}

// A row that is just being swiped goes with its site.
void ChildActivityView::gatherSpareRows(const std::vector<ActivityItem>& items) {
  std::unordered_set<std::string> wanted;
  for (const ActivityItem& item : items) {
    wanted.insert(keyOf(item));
  }
  for (const auto& [key, object] : siteRows.nested()) {
    auto row = std::static_pointer_cast<LogRow>(object);
    if (!wanted.contains(key) && row->offset() == 0) {
      (row->log().wasBlocked ? spareBlocked_ : spareAllowed_).push_back(std::move(row));
    }
  }
}

bool ChildActivityView::matches(const ActivityItem& item) const {
  if (!filter.isActive()) {
    return true;
  }
  searchKeys_.resize(std::max<std::size_t>(searchKeys_.size(), item.text + 1));
  SearchKey& key = searchKeys_[item.text];
  if (key.isEmpty()) {
    key = SearchKey(items_->textOf(log_, item));
  }
  return key.contains(filter.wanted());
}

std::shared_ptr<LogRow> ChildActivityView::rowFor(const ActivityItem& item) {
  if (auto& spare = item.wasBlocked ? spareBlocked_ : spareAllowed_; !spare.empty()) {
    auto row = std::move(spare.back());
    spare.pop_back();
    return row;
  }
  const DNSLog log = log_.recordOf(log_.entries()[item.newest]);
  if (item.wasBlocked) {
    return std::make_shared<BlockedSiteRow>(
        log, weakly([this](const DNSLog& chosen) { policy_.allowFromLog(chosen); }));
  }
  return std::make_shared<AllowedSiteRow>(
      log, weakly([this](const DNSLog& chosen) { policy_.blockFromLog(chosen); }));
}

void ChildActivityView::showRow(LogRow& row, const ActivityItem& item) const {
  const auto& entry = log_.entries()[item.newest];
  row.show(log_.recordOf(entry), page_.dateStyles().shortTime(entry.time));
  setIfChanged(row.countText, requestsText(item.count));
  if (auto* const allowable = dynamic_cast<AllowableRow*>(&row)) {
    setIfChanged(allowable->isAlreadyAllowed, policy_.isDomainAllowed(row.site()));
  }
}

std::string ChildActivityView::computeRowsTitle() const {
  if (chosen_.hour) {
    return hourName(*chosen_.hour);
  }
  if (chosen_.site) {
    return std::string(log_.site(*chosen_.site));
  }
  return chosen_.isFirstSeen ? newSitesTitle() : "All Sites";
}

// Texts.

std::string ChildActivityView::requestsText(std::uint32_t count) const {
  return calendar_.number(count) + (count == 1 ? " request" : " requests");
}

std::string ChildActivityView::numberText(const ActivityCount& count) const {
  if (count.total() == 0) {
    return "No requests";
  }
  return requestsText(count.total()) +
         (count.blocked > 0 ? ", " + calendar_.number(count.blocked) + " blocked" : "");
}

std::string ChildActivityView::percentText(std::uint32_t count, std::uint32_t of) const {
  const double share = static_cast<double>(count) / static_cast<double>(of);
  constexpr double least = 0.01;
  return share < least ? "<" + calendar_.percent(least) : calendar_.percent(share);
}

std::string ChildActivityView::dayName(LocalDay day) const {
  if (day == today_) {
    return "Today";
  }
  return day == today_ - oneDay ? "Yesterday" : calendar_.weekdayAndDate(day);
}

std::string ChildActivityView::whenText() const {
  const std::string day = dayName(chosenDay_);
  return chosenDay_ < today_ - oneDay ? "on " + day : day;
}

std::string ChildActivityView::hourName(std::size_t hour) const {
  const auto& hours = counts_->scope().hours;
  return calendar_.hour(hours[hour]) + " to " + calendar_.hour(hours[hour + 1]);
}

}  // namespace quillmar
