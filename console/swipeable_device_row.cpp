#include "console/swipeable_device_row.h"

#include <utility>

#include "console/keyed_rows.h"
#include "presentation/device_texts.h"
#include "presentation/indicators.h"

namespace quillmar {

SwipeableDeviceRow::SwipeableDeviceRow(Device device, Reaction onUnlink)
    : OpeningRow("SwipeableDeviceRow"),
      device(*this, "device", std::move(device)),
      deviceIconName(*this, "deviceIconName",
                     [this] { return std::string(quillmar::deviceIconName(this->device())); }),
      deviceDisplayName(*this, "deviceDisplayName",
                        [this] { return quillmar::deviceDisplayName(this->device()); }),
      isOnline(*this, "isOnline", [this] { return effectiveOnline(this->device()); }),
      dotColor(*this, "dotColor",
               [this] {
                 const OnlineStatusIndicator dot{.isOnline = effectiveOnline(this->device()), .size = 0};
                 return std::string(rawValue(dot.dotColor()));
               }),
      onUnlink_(std::move(onUnlink)) {}

void SwipeableDeviceRow::show(const Device& newDevice, const std::string& newLastSeenText) {
  setIfChanged(device, newDevice);
  setIfChanged(lastSeenText, newLastSeenText);
}

void SwipeableDeviceRow::closeAndUnlink() {
  close();
  onUnlink_(device());
}

}  // namespace quillmar
