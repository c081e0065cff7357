#include "console/devices_section.h"

#include <chrono>

#include "console/child_dashboard_card.h"
#include "console/keyed_rows.h"
#include "presentation/device_texts.h"

namespace quillmar {
namespace {

constexpr auto statusPeriod = std::chrono::seconds(15);

}  // namespace

DevicesSection::DevicesSection(ChildPage& page, std::function<void()> onLink, std::function<void()> onUnlink)
    : page_(page),
      screen_(page.screen()),
      showLinkDevice(screen_, "showLinkDevice",
                     [&page, onLink = screen_.weakly(std::move(onLink))] {
                       return std::make_shared<LinkDeviceView>(page.environment(), page.child().id, onLink);
                     }),
      onUnlink_(std::move(onUnlink)) {}

void DevicesSection::start() {
  timer_ = page_.dispatch().scheduleRepeating(statusPeriod, [this] { refresh(); });
}

void DevicesSection::refresh() {
  page_.service().getChild(
      page_.child().id,
      hoppingToMain(page_.dispatch(), screen_.weakly([this](const Result<ChildProfileWithDevices>& result) {
        if (result.ok()) {
          show(result.value().devices);
        }
      })));
}

void DevicesSection::show(std::vector<Device> answer) {
  setIfChanged(devices, std::move(answer));
  updateRows();
}

void DevicesSection::updateRows() {
  showInRows(
      deviceRows, devices(), [](const Device& device) { return device.id; },
      [this](const Device& device) {
        return std::make_shared<SwipeableDeviceRow>(
            device, screen_.weakly([this](const Device& chosen) { askToUnlink(chosen); }));
      },
      [this](SwipeableDeviceRow& row, const Device& device) {
        row.show(device, lastSeenText(device, page_.dispatch().now(), page_.dateStyles()));
      });
}

void DevicesSection::askToUnlink(const Device& device) {
  deviceToUnlink = device;
  unlinkConfirmation.ask();
}

void DevicesSection::unlinkSelected() {
  if (!deviceToUnlink()) {
    return;
  }
  const std::string id = deviceToUnlink()->id;
  page_.service().unlinkDevice(page_.child().id, id, page_.completion<void>([this, id] {
    auto remaining = devices();
    std::erase_if(remaining, [&](const Device& device) { return device.id == id; });
    show(std::move(remaining));
    onUnlink_();
  }));
}

std::string DevicesSection::computeOnlineText() const {
  return std::to_string(countOnline(devices())) + "/" + std::to_string(devices().size()) + " online";
}

std::string DevicesSection::computeOnlineDotColor() const {
  return countOnline(devices()) > 0 ? "brandGreen" : "statusOffline";
}

std::string DevicesSection::computeUnlinkText() const {
  const auto& device = deviceToUnlink();
  return "This will remove " + (device ? deviceDisplayName(*device) : "this device") + " from " +
         page_.child().name + "'s profile. The device will still exist and can be linked to another child.";
}

}  // namespace quillmar
