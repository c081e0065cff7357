#include "console/child_dashboard_card.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "console/keyed_rows.h"
#include "presentation/avatar.h"
#include "presentation/device_texts.h"
#include "presentation/indicators.h"

namespace quillmar {
namespace {

constexpr std::size_t shownDevices = 3;

DashboardDeviceLine lineOf(const Device& device) {
  const bool isOnline = effectiveOnline(device);
  const auto dotColor = OnlineStatusIndicator{.isOnline = isOnline, .size = 0}.dotColor();
  return {.id = device.id,
          .icon = std::string(deviceIconName(device)),
          .iconColor = isOnline ? "brandBlue" : "statusOffline",
          .name = deviceDisplayName(device),
          .isOnline = isOnline,
          .dotColor = std::string(rawValue(dotColor))};
}

}  // namespace

std::int64_t countOnline(const std::vector<Device>& devices) {
  return std::ranges::count_if(devices, effectiveOnline);
}

ChildDashboardCard::ChildDashboardCard(ChildProfileWithDevices child, CardEntrance entrance, Reaction onTap,
                                       Reaction onAddDevice)
    : ObservableObject("ChildDashboardCard"),
      child(*this, "child", std::move(child)),
      entrance_(entrance),
      onTap_(std::move(onTap)),
      onAddDevice_(std::move(onAddDevice)) {}

void ChildDashboardCard::update(const ChildProfileWithDevices& newChild, std::int64_t newPosition) {
  setIfChanged(child, newChild);
  setIfChanged(position, newPosition);
}

std::string ChildDashboardCard::computeAvatarLetter() const { return quillmar::avatarLetter(child().name); }

std::string ChildDashboardCard::computeAvatarColor() const {
  return std::string(rawValue(quillmar::avatarColor(child().name)));
}

std::vector<DashboardDeviceLine> ChildDashboardCard::computeDeviceLines() const {
  const auto& devices = child().devices;
  std::vector<DashboardDeviceLine> lines;
  for (std::size_t i = 0; i < std::min(devices.size(), shownDevices); ++i) {
    lines.push_back(lineOf(devices[i]));
  }
  return lines;
}

std::string ChildDashboardCard::computeMoreText() const {
  const std::size_t count = child().devices.size();
  return count > shownDevices ? "+ " + std::to_string(count - shownDevices) + " more" : std::string();
}

}  // namespace quillmar
