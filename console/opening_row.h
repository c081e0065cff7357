#pragma once

#include <string_view>

#include "foundation/observable.h"

namespace quillmar {

// A row that opens when dragged to the left and then shows a button. The drag alone triggers nothing.
// Distances are in points.
class OpeningRow : public ObservableObject {
 public:
  static constexpr double threshold = -80;

  Published<double> offset{*this, "offset", 0.0};
  // The row is open.
  Published<bool> isSwiped{*this, "isSwiped", false};

  Derived<double> swipeThreshold{*this, "swipeThreshold", [] { return threshold; }};
  Derived<double> minimumDistance{*this, "minimumDistance", [] { return 10.0; }};
  Derived<double> buttonWidth{*this, "buttonWidth", [] { return 70.0; }};

  Action<double, double> dragChanged{*this, "dragChanged", [this](double dx, double /*dy*/) { drag(dx); }};
  Action<double, double> dragEnded{*this, "dragEnded", [this](double dx, double /*dy*/) { endDrag(dx); }};

 protected:
  using ObservableObject::ObservableObject;
  void close();

 private:
  void drag(double dx);
  void endDrag(double dx);
};

}  // namespace quillmar
