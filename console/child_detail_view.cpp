#include "console/child_detail_view.h"

#include <chrono>

#include "client/child_calls.h"
#include "client/network_service.h"
#include "presentation/avatar.h"

namespace quillmar {
namespace {

// The year in the device's calendar.
int yearOf(Date now, const DateStyles& styles) {
  const std::chrono::year_month_day day(std::chrono::floor<std::chrono::days>(now));
  int year = static_cast<int>(day.year()) + 1;
  const auto hasBegun = [&] {
    const auto start = styles.parseLocal(std::to_string(year) + "-01-01T00:00:00");
    return start && *start <= now;
  };
  // A local time differs from UTC by less than a day.
  while (!hasBegun() && year >= static_cast<int>(day.year())) {
    --year;
  }
  return year;
}

// The year comes from the service and may be any number: wraps instead of overflowing.
std::int64_t difference(std::int64_t one, std::int64_t other) {
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(one) - static_cast<std::uint64_t>(other));
}

}  // namespace

ChildDetailView::ChildDetailView(Environment& environment, ChildProfileWithDevices child,
                                 std::function<void()> onUpdate)
    : ScreenModel("ChildDetailView"),
      page_(*this, errorAlert, environment, std::move(child)),
      devicesSection(
          page_, [this] { reloadChild(); }, onUpdate),
      policySection(page_),
      activitySection(page_, devicesSection, policySection),
      showEditName(*this, "showEditName",
                   [this] {
                     return std::make_shared<EditChildNameView>(
                         page_.environment(), page_.child().name,
                         weakly([this](const std::string& newName) { saveChildName(newName); }));
                   }),
      showAllActivity(
          *this, "showAllActivity",
          [this] { return std::make_shared<ChildActivityView>(page_, devicesSection, policySection); }),
      onUpdate_(std::move(onUpdate)),
      passingTime_(environment, weakly([this] { showPassingTime(); })),
      tabReaction_(selectedTab.onChange([this] { showTab(); })) {}

void ChildDetailView::onAppear() {
  reloadChild();
  showTab();
  devicesSection.start();
  passingTime_.start();
}

void ChildDetailView::onDisappear() {
  activitySection.stop();
  devicesSection.stop();
  policySection.stop();
  passingTime_.stop();
}

void ChildDetailView::showTab() {
  if (isOnScreen()) {
    activitySection.start(selectedTab());
  }
}

void ChildDetailView::showPassingTime() {
  devicesSection.updateRows();
  activitySection.updateTimes();
}

void ChildDetailView::reloadChild() {
  page_.service().send(calls::getChild, {page_.child().id},
                       page_.completion<ChildProfileWithDevices>(
                           [this](const ChildProfileWithDevices& answer) { show(answer); }));
}

void ChildDetailView::show(const ChildProfileWithDevices& answer) {
  devicesSection.show(answer.devices);
  policySection.show(answer.policy);
}

void ChildDetailView::saveChildName(const std::string& newName) {
  editedName = newName;
  if (newName.empty()) {
    return;
  }
  UpdateChildRequest changes;
  changes.name = newName;
  page_.service().send(calls::updateChild, {page_.child().id}, changes,
                       page_.completion<ChildProfile>([this](const ChildProfile& /*answer*/) {
                         onUpdate_();
                         dismiss();
                       }));
}

void ChildDetailView::deleteChild() {
  page_.service().send(calls::deleteChild, {page_.child().id}, page_.completion<void>([this] {
    onUpdate_();
    dismiss();
  }));
}

std::string ChildDetailView::computeAvatarLetter() const {
  return quillmar::avatarLetter(page_.child().name);
}

std::string ChildDetailView::computeAvatarColor() const {
  return std::string(rawValue(quillmar::avatarColor(page_.child().name)));
}

std::optional<std::string> ChildDetailView::computeAgeText() {
  const auto birthYear = page_.child().birthYear;
  if (!birthYear) {
    return std::nullopt;
  }
  return std::to_string(difference(yearOf(page_.dispatch().now(), page_.dateStyles()), *birthYear)) +
         " years old";
}

}  // namespace quillmar
