#pragma once

#include <functional>
#include <string>

#include "client/records/device.h"
#include "foundation/observable.h"

namespace quillmar {

// A device of a child. Dragged to the left it opens and shows a button that unlinks it; unlike a site's row
// it does not act by the drag alone. Distances are in points.
class SwipeableDeviceRow final : public ObservableObject {
 public:
  static constexpr double threshold = -80;
  using Reaction = std::function<void(const Device&)>;

  SwipeableDeviceRow(Device device, Reaction onUnlink);

  Published<Device> device;
  Published<std::string> lastSeenText{*this, "lastSeenText"};
  Published<double> offset{*this, "offset", 0.0};
  // The row stands open.
  Published<bool> isSwiped{*this, "isSwiped", false};

  Derived<double> swipeThreshold{*this, "swipeThreshold", [] { return threshold; }};
  Derived<double> minimumDistance{*this, "minimumDistance", [] { return 10.0; }};
  Derived<double> buttonWidth{*this, "buttonWidth", [] { return 70.0; }};

  Derived<std::string> deviceIconName;
  Text iconColor{*this, "iconColor", "brandBlue"};
  Derived<std::string> deviceDisplayName;
  Derived<bool> isOnline;
  Derived<std::string> dotColor;
  Text unlinkTitle{*this, "unlinkTitle", "Unlink"};
  Text unlinkIcon{*this, "unlinkIcon", "link"};

  Action<double, double> dragChanged{*this, "dragChanged", [this](double dx, double /*dy*/) { drag(dx); }};
  Action<double, double> dragEnded{*this, "dragEnded", [this](double dx, double /*dy*/) { endDrag(dx); }};
  // Closes an open row.
  Action<> tap{*this, "tap", [this] { close(); }, [this] { return isSwiped(); }};
  // Asks for the unlinking; whoever is asked confirms it.
  Action<> unlink{*this, "unlink", [this] { closeAndUnlink(); }};

  void show(const Device& newDevice, const std::string& newLastSeenText);

 private:
  void drag(double dx);
  void endDrag(double dx);
  void open();
  void close();
  void closeAndUnlink();

  const Reaction onUnlink_;
};

}  // namespace quillmar
