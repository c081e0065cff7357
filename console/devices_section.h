#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "console/child_page.h"
#include "console/link_device_view.h"
#include "console/swipeable_device_row.h"
#include "presentation/confirmation.h"

namespace quillmar {

// The child's devices. While started, it fetches them every 15 seconds.
class DevicesSection {
  // First: the members register with it.
  ChildPage& page_;
  ScreenModel& screen_;

 public:
  // `onLink` runs when a device may have been linked, `onUnlink` when one was unlinked.
  DevicesSection(ChildPage& page, std::function<void()> onLink, std::function<void()> onUnlink);

  Published<std::vector<Device>> devices{screen_, "devices"};
  Rows<SwipeableDeviceRow> deviceRows{screen_, "deviceRows"};
  Derived<std::string> onlineText{screen_, "onlineText", [this] { return computeOnlineText(); }};
  Derived<std::string> onlineDotColor{screen_, "onlineDotColor", [this] { return computeOnlineDotColor(); }};

  Sheet<LinkDeviceView> showLinkDevice;
  Confirmation unlinkConfirmation{
      screen_,
      {.isShown = "showUnlinkConfirmation", .confirm = "unlinkSelectedDevice", .cancel = "cancelUnlinking"},
      [this] { unlinkSelected(); }};
  Published<std::optional<Device>> deviceToUnlink{screen_, "deviceToUnlink"};

  Text devicesTitle{screen_, "devicesTitle", "Devices"};
  Text noDevicesText{screen_, "noDevicesText", "No devices linked yet"};
  Text linkDeviceTitle{screen_, "linkDeviceTitle", "Link Device"};
  Text linkDeviceIcon{screen_, "linkDeviceIcon", "plus.circle.fill"};
  Text unlinkAlertTitle{screen_, "unlinkAlertTitle", "Unlink Device?"};
  Derived<std::string> unlinkAlertText{screen_, "unlinkAlertText", [this] { return computeUnlinkText(); }};
  Text unlinkTitle{screen_, "unlinkTitle", "Unlink"};

  Action<> linkDevice{screen_, "linkDevice", [this] { showLinkDevice = true; }};

  void start();
  void stop() { timer_.reset(); }
  bool isRunning() const { return timer_ != nullptr; }

  void show(std::vector<Device> answer);
  // Updates "Last seen" texts.
  void updateRows();

 private:
  void refresh();
  void askToUnlink(const Device& device);
  void unlinkSelected();
  std::string computeOnlineText() const;
  std::string computeOnlineDotColor() const;
  std::string computeUnlinkText() const;

  const std::function<void()> onUnlink_;
  std::unique_ptr<Timer> timer_;
};

}  // namespace quillmar
