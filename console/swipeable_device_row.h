#pragma once

#include <functional>
#include <string>

#include "client/records/device.h"
#include "console/opening_row.h"

namespace quillmar {

// A device of a child; swiped open, the row shows an unlink button.
class SwipeableDeviceRow final : public OpeningRow {
 public:
  using Reaction = std::function<void(const Device&)>;

  SwipeableDeviceRow(Device device, Reaction onUnlink);

  Published<Device> device;
  Published<std::string> lastSeenText{*this, "lastSeenText"};

  Derived<std::string> deviceIconName;
  Text iconColor{*this, "iconColor", "brandBlue"};
  Derived<std::string> deviceDisplayName;
  Derived<bool> isOnline;
  Derived<std::string> dotColor;
  Text unlinkTitle{*this, "unlinkTitle", "Unlink"};
  Text unlinkIcon{*this, "unlinkIcon", "link"};

  // Closes an open row.
  Action<> tap{*this, "tap", [this] { close(); }, [this] { return isSwiped(); }};
  // Requests the unlinking; the section asks for confirmation.
  Action<> unlink{*this, "unlink", [this] { closeAndUnlink(); }};

  void show(const Device& newDevice, const std::string& newLastSeenText);

 private:
  void closeAndUnlink();

  const Reaction onUnlink_;
};

}  // namespace quillmar
