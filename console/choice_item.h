#pragma once

#include <string>
#include <vector>

#include "foundation/raw_enum.h"
#include "foundation/record.h"

namespace quillmar {

// One of several options, such as a tab or a chip. Its title is also its value.
struct ChoiceItem {
  std::string title;
  bool isSelected = false;
};

template <>
inline constexpr auto wire<ChoiceItem> = record(required("title", &ChoiceItem::title),
                                                required("isSelected", &ChoiceItem::isSelected));

template <RawEnum E>
std::vector<ChoiceItem> choiceItems(E selected) {
  std::vector<ChoiceItem> items;
  items.reserve(rawNames<E>.size());
  for (const auto& [choice, title] : rawNames<E>) {
    items.push_back({std::string(title), choice == selected});
  }
  return items;
}

}  // namespace quillmar
