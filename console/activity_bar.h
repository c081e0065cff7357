#pragma once

#include <functional>
#include <string>
#include <utility>

#include "foundation/observable.h"

namespace quillmar {

// A bar of a chart, which is also a button. Its parts are shares of the chart's height or length.
class ActivityBar final : public ObservableObject {
 public:
  explicit ActivityBar(std::function<void()> onChoose)
      : ObservableObject("ActivityBar"), onChoose_(std::move(onChoose)) {}

  // Drawn under the bar; empty if there is no room.
  Published<std::string> label{*this, "label"};
  Published<std::string> name{*this, "name"};
  Published<std::string> number{*this, "number"};
  Published<double> allowed{*this, "allowed", 0.0};
  Published<double> blocked{*this, "blocked", 0.0};
  Published<bool> isSelected{*this, "isSelected", false};

  Action<> choose{*this, "choose", [this] { onChoose_(); }};

 private:
  const std::function<void()> onChoose_;
};

}  // namespace quillmar
