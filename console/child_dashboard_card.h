#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "client/records/child.h"
#include "foundation/observable.h"
#include "foundation/raw_enum.h"

namespace quillmar {

// A card's entry animation: it slides in from below, a little after the card above it, or it has none.
enum class CardEntrance { staged, inPlace };

template <>
inline constexpr std::array rawNames<CardEntrance> =
    rawCases<CardEntrance>({{CardEntrance::staged, "staged"}, {CardEntrance::inPlace, "inPlace"}});

// A device on a card: icon, name and status dot. Colours are names of semantic colours.
struct DashboardDeviceLine {
  std::string id;
  std::string icon;
  std::string iconColor;
  std::string name;
  bool isOnline = false;
  std::string dotColor;
};

template <>
inline constexpr auto wire<DashboardDeviceLine> =
    record(required("id", &DashboardDeviceLine::id), required("icon", &DashboardDeviceLine::icon),
           required("iconColor", &DashboardDeviceLine::iconColor),
           required("name", &DashboardDeviceLine::name), required("isOnline", &DashboardDeviceLine::isOnline),
           required("dotColor", &DashboardDeviceLine::dotColor));

std::int64_t countOnline(const std::vector<Device>& devices);

// A child on the dashboard: its name, the number of devices online, and the first few devices. A refresh
// announces only what it changes.
class ChildDashboardCard final : public ObservableObject {
 public:
  using Reaction = std::function<void(const ChildProfileWithDevices&)>;

  ChildDashboardCard(ChildProfileWithDevices child, CardEntrance entrance, Reaction onTap,
                     Reaction onAddDevice);

  Published<ChildProfileWithDevices> child;
  // Index in the list; affects only the entry animation.
  Published<std::int64_t> position{*this, "position", 0};
  // In seconds.
  Derived<double> appearanceDelay{*this, "appearanceDelay",
                                  [this] { return static_cast<double>(position()) * 0.1; }};
  // Played once, since a card exists as long as its child is in the list.
  Derived<CardEntrance> entrance{*this, "entrance", [this] { return entrance_; }};

  Derived<std::string> avatarLetter{*this, "avatarLetter", [this] { return computeAvatarLetter(); }};
  Derived<std::string> avatarColor{*this, "avatarColor", [this] { return computeAvatarColor(); }};
  Derived<std::string> name{*this, "name", [this] { return child().name; }};
  Text chevronIcon{*this, "chevronIcon", "chevron.right"};
  Text deviceCountIcon{*this, "deviceCountIcon", "iphone"};
  Derived<std::string> deviceCount{*this, "deviceCount",
                                   [this] { return std::to_string(child().devices.size()); }};
  Derived<std::string> onlineText{
      *this, "onlineText", [this] { return std::to_string(countOnline(child().devices)) + " online"; }};
  // The whole card in one sentence, for screen readers.
  Derived<std::string> spokenName{*this, "spokenName", [this] {
                                    const bool isOne = child().devices.size() == 1;
                                    return name() + ", " + deviceCount() +
                                           (isOne ? " device, " : " devices, ") + onlineText();
                                  }};
  Derived<std::string> onlineDotColor{
      *this, "onlineDotColor",
      [this] { return std::string(countOnline(child().devices) > 0 ? "brandGreen" : "statusOffline"); }};
  Derived<std::vector<DashboardDeviceLine>> deviceLines{*this, "deviceLines",
                                                        [this] { return computeDeviceLines(); }};
  // "+ 2 more"; empty if all devices are shown.
  Derived<std::string> moreText{*this, "moreText", [this] { return computeMoreText(); }};
  Text addDeviceTitle{*this, "addDeviceTitle", "Add Device"};
  Text addDeviceIcon{*this, "addDeviceIcon", "plus.circle.fill"};

  Action<> tap{*this, "tap", [this] { onTap_(child()); }};
  Action<> addDevice{*this, "addDevice", [this] { onAddDevice_(child()); }};

  void update(const ChildProfileWithDevices& newChild, std::int64_t newPosition);

 private:
  std::string computeAvatarLetter() const;
  std::string computeAvatarColor() const;
  std::vector<DashboardDeviceLine> computeDeviceLines() const;
  std::string computeMoreText() const;

  const CardEntrance entrance_;
  const Reaction onTap_;
  const Reaction onAddDevice_;
};

}  // namespace quillmar
