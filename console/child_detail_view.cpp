#include "console/child_detail_view.h"

#include <chrono>

#include "console/child_dashboard_card.h"
#include "console/keyed_rows.h"
#include "presentation/avatar.h"
#include "presentation/device_texts.h"

namespace quillmar {
namespace {

constexpr auto deviceStatusPeriod = std::chrono::seconds(15);

// The calendar year on the device.
int yearOf(Date now, const DateStyles& styles) {
  const std::chrono::year_month_day day(std::chrono::floor<std::chrono::days>(now));
  int year = static_cast<int>(day.year()) + 1;
  const auto hasBegun = [&] {
    const auto start = styles.parseLocal(std::to_string(year) + "-01-01T00:00:00");
    return start && *start <= now;
  };
  // Clocks differ from the universal one by less than a day.
  while (!hasBegun() && year >= static_cast<int>(day.year())) {
    --year;
  }
  return year;
}

// A year from outside may be any number.
std::int64_t difference(std::int64_t one, std::int64_t other) {
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(one) - static_cast<std::uint64_t>(other));
}

}  // namespace

ChildDetailView::ChildDetailView(Environment& environment, ChildProfileWithDevices child,
                                 std::function<void()> onUpdate)
    : ScreenModel("ChildDetailView"),
      showLinkDevice(*this, "showLinkDevice",
                     [this] {
                       return std::make_shared<LinkDeviceView>(environment_, child_.id,
                                                               weakly([this] { reloadChild(); }));
                     }),
      showEditName(*this, "showEditName",
                   [this] {
                     return std::make_shared<EditChildNameView>(
                         environment_, child_.name,
                         weakly([this](const std::string& newName) { saveChildName(newName); }));
                   }),
      environment_(environment),
      dispatch_(environment.platform().dispatch),
      child_(std::move(child)),
      onUpdate_(std::move(onUpdate)),
      passingTime_(environment, weakly([this] { showPassingTime(); })) {
  const auto whileOnScreen = [this](void (ChildDetailView::*reaction)()) {
    return [this, reaction] {
      if (isOnScreen()) {
        (this->*reaction)();
      }
    };
  };
  reactions_.push_back(isBlocked.onChange([this] { updatePolicy(); }));
  reactions_.push_back(allowedDomains.onChange([this] { rememberAllowed(); }));
  reactions_.push_back(blockedDomains.onChange([this] { showBlockedRows(); }));
  reactions_.push_back(selectedTab.onChange(whileOnScreen(&ChildDetailView::startActivityUpdates)));
  reactions_.push_back(blockedTimeFilter.onChange(whileOnScreen(&ChildDetailView::restartBlockedLogs)));
  reactions_.push_back(allowedTimeFilter.onChange(whileOnScreen(&ChildDetailView::restartAllowedLogs)));
}

void ChildDetailView::onAppear() {
  loadChildData();
  passingTime_.start();
}

void ChildDetailView::onDisappear() {
  stopAllTimers();
  passingTime_.stop();
}

void ChildDetailView::loadChildData() {
  reloadChild();
  startActivityUpdates();
  startDeviceStatusTimer();
}

void ChildDetailView::reloadChild() {
  service().getChild(child_.id, completion<ChildProfileWithDevices>(
                                    [this](const ChildProfileWithDevices& answer) { show(answer); }));
}

void ChildDetailView::show(const ChildProfileWithDevices& answer) {
  setDevices(answer.devices);
  if (!answer.policy) {
    return;
  }
  policy = answer.policy;
  blockMode = answer.policy->blockMode;
  blockedDomains = answer.policy->blockedDomains;
  allowedDomains = answer.policy->allowedDomains;
  // The last, since its change is answered by a call that reads the others.
  isBlocked = answer.policy->isBlocked;
}

void ChildDetailView::setDevices(std::vector<Device> answer) {
  setIfChanged(devices, std::move(answer));
  showDeviceRows();
}

void ChildDetailView::startDeviceStatusTimer() {
  deviceStatusTimer_ = dispatch_.scheduleRepeating(deviceStatusPeriod, [this] { refreshDeviceStatus(); });
}

void ChildDetailView::refreshDeviceStatus() {
  service().getChild(child_.id,
                     hoppingToMain(dispatch_, weakly([this](const Result<ChildProfileWithDevices>& result) {
                                     if (result.ok()) {
                                       setDevices(result.value().devices);
                                     }
                                   })));
}

void ChildDetailView::showDeviceRows() {
  showInRows(
      deviceRows, devices(), [](const Device& device) { return device.id; },
      [this](const Device& device) {
        return std::make_shared<SwipeableDeviceRow>(
            device, weakly([this](const Device& chosen) { askToUnlink(chosen); }));
      },
      [this](SwipeableDeviceRow& row, const Device& device) {
        row.show(device, lastSeenText(device, dispatch_.now(), dateStyles()));
      });
}

void ChildDetailView::saveChildName(const std::string& newName) {
  editedName = newName;
  if (newName.empty()) {
    return;
  }
  UpdateChildRequest changes;
  changes.name = newName;
  service().updateChild(child_.id, changes, completion<ChildProfile>([this](const ChildProfile& /*answer*/) {
                          onUpdate_();
                          dismiss();
                        }));
}

void ChildDetailView::askToUnlink(const Device& device) {
  deviceToUnlink = device;
  showUnlinkConfirmation = true;
}

void ChildDetailView::unlinkSelected() {
  showUnlinkConfirmation = false;
  if (!deviceToUnlink()) {
    return;
  }
  const std::string id = deviceToUnlink()->id;
  service().unlinkDevice(child_.id, id, completion<void>([this, id] {
                           auto remaining = devices();
                           std::erase_if(remaining, [&](const Device& device) { return device.id == id; });
                           setDevices(std::move(remaining));
                           onUpdate_();
                         }));
}

void ChildDetailView::deleteChild() {
  showDeleteConfirmation = false;
  service().deleteChild(child_.id, completion<void>([this] {
                          onUpdate_();
                          dismiss();
                        }));
}

void ChildDetailView::showFailure(const Error& error) { errorAlert.show(error); }

const DateStyles& ChildDetailView::dateStyles() {
  if (!dateStyles_) {
    dateStyles_ = environment_.dateStyles();
  }
  return *dateStyles_;
}

std::string ChildDetailView::computeAvatarLetter() const { return quillmar::avatarLetter(child_.name); }

std::string ChildDetailView::computeAvatarColor() const {
  return std::string(rawValue(quillmar::avatarColor(child_.name)));
}

std::optional<std::string> ChildDetailView::computeAgeText() {
  if (!child_.birthYear) {
    return std::nullopt;
  }
  return std::to_string(difference(yearOf(dispatch_.now(), dateStyles()), *child_.birthYear)) + " years old";
}

std::string ChildDetailView::computeOnlineText() const {
  return std::to_string(countOnline(devices())) + "/" + std::to_string(devices().size()) + " online";
}

std::string ChildDetailView::computeOnlineDotColor() const {
  return countOnline(devices()) > 0 ? "brandGreen" : "statusOffline";
}

std::string ChildDetailView::computeUnlinkText() const {
  const auto& device = deviceToUnlink();
  return "This will remove " + (device ? deviceDisplayName(*device) : "this device") + " from " +
         child_.name + "'s profile. The device will still exist and can be linked to another child.";
}

}  // namespace quillmar
