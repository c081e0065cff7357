#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "foundation/observable.h"

namespace quillmar {

// Makes keys unique: the first item keeps its key, later ones get a count appended.
class UniqueKeys {
 public:
  std::string operator()(const std::string& key) {
    std::string unique = key;
    for (int& count = counts_[key]; !used_.insert(unique).second;) {
      unique = key + '\n' + std::to_string(++count + 1);
    }
    return unique;
  }

 private:
  std::unordered_map<std::string, int> counts_;
  std::unordered_set<std::string> used_;
};

// Shows the items in a list, one row each. A row belongs to its item as long as the item's key is in the
// list. The list is announced only if rows were added, removed or moved. `make` creates a row for a new item,
// `update` updates the row of an item.
template <class Row, class Item, class KeyOf, class Make, class Update>
void showInRows(Rows<Row>& rows, const std::vector<Item>& items, KeyOf keyOf, Make make, Update update) {
  const auto shown = rows.nested();
  std::unordered_map<std::string, std::shared_ptr<ObservableObject>> known;
  for (const auto& [key, row] : shown) {
    known.emplace(key, row);
  }
  UniqueKeys uniqueKey;
  std::vector<std::pair<std::string, std::shared_ptr<Row>>> fresh;
  fresh.reserve(items.size());
  bool isSameList = items.size() == shown.size();
  for (const Item& item : items) {
    std::string key = uniqueKey(keyOf(item));
    const auto found = known.find(key);
    auto row = found == known.end() ? make(item) : std::static_pointer_cast<Row>(found->second);
    update(*row, item);
    isSameList = isSameList && shown[fresh.size()].object == row;
    fresh.emplace_back(std::move(key), std::move(row));
  }
  if (!isSameList) {
    rows.assign(std::move(fresh));
  }
}

// Assigns only a different value, so that nothing unchanged is announced.
template <class T>
void setIfChanged(Published<T>& published, T value) {
  if (!(published() == value)) {
    published = std::move(value);
  }
}

}  // namespace quillmar
