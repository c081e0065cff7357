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

// How a card comes into view: from below and a little after the one above it, or where it stands.
enum class CardEntrance { staged, inPlace };

template <>
inline constexpr std::array rawNames<CardEntrance> =
    rawCases<CardEntrance>({{CardEntrance::staged, "staged"}, {CardEntrance::inPlace, "inPlace"}});

// A device on a card: its picture, its name and its dot. Colours are semantic ones by name.
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

// A child on the dashboard: who, how many of the devices are online, and the first few of them. Announces a
// refresh only where it brings something else.
class ChildDashboardCard final : public ObservableObject {
 public:
  using Reaction = std::function<void(const ChildProfileWithDevices&)>;

  ChildDashboardCard(ChildProfileWithDevices child, CardEntrance entrance, Reaction onTap,
                     Reaction onAddDevice);

  Published<ChildProfileWithDevices> child;
  // Place in the list, from 0; only its entry follows from it.
  Published<std::int64_t> position{*this, "position", 0};
  // In seconds.
  Derived<double> appearanceDelay{*this, "appearanceDelay",
                                  [this] { return static_cast<double>(position()) * 0.1; }};
  // Played once, for a card lasts as long as its child is in the list.
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
  // All of it in one breath, for who hears the card.
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
  // "+ 2 more"; empty where all devices are shown.
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
