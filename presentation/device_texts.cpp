#include "presentation/device_texts.h"

#include <algorithm>
#include <array>

#include "foundation/text.h"
#include "presentation/relative_timestamp.h"

namespace quillmar {
namespace {

struct DeviceKind {
  std::string_view type;  // in lower case
  std::string_view label;
  std::string_view icon;
};
constexpr std::array kinds = {
    DeviceKind{"ios", "iPhone", "iphone"},
    DeviceKind{"android", "Android", "candybarphone"},
    DeviceKind{"windows", "Windows", "desktopcomputer"},
    DeviceKind{"mac", "Mac", "laptopcomputer"},
    DeviceKind{"macos", "Mac", "laptopcomputer"},
    DeviceKind{"chromeos", "ChromeOS", "laptopcomputer"},
    DeviceKind{"tablet", "Tablet", "ipad"},
};
constexpr std::string_view anyIcon = "desktopcomputer";

const DeviceKind* kindOf(const Device& device) {
  const auto* const found = std::ranges::find(kinds, lowercased(device.deviceType), &DeviceKind::type);
  return found == kinds.end() ? nullptr : found;
}

}  // namespace

bool effectiveOnline(const Device& device) { return device.isOnline.value_or(device.isActive); }

std::string deviceDisplayName(const Device& device) {
  const bool named = device.friendlyName && !device.friendlyName->empty();
  return named ? *device.friendlyName : device.deviceName;
}

std::string lastSeenText(const Device& device, Date now, const DateStyles& styles) {
  return effectiveOnline(device)
             ? "Online now"
             : "Last seen " + relativeTimestamp(device.lastSeenAt.value_or(device.updatedAt), now, styles);
}

std::string deviceTypeLabel(const Device& device) {
  const auto* kind = kindOf(device);
  return kind ? std::string(kind->label) : capitalized(device.deviceType);
}

std::string_view deviceIconName(const Device& device) {
  const auto* kind = kindOf(device);
  return kind ? kind->icon : anyIcon;
}

}  // namespace quillmar
