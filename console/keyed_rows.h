#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "foundation/observable.h"

namespace quillmar {

// Tells items of the same key apart: the first has the key itself, the others have it with their count.
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

// Makes a list show these items, one a row. A row stays its item's for as long as the item's key is in the
// list, and the list is announced only where rows came, went or moved. `make` makes the row of an item that
// had none, `update` brings an item's row up to date.
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

// Assigns what differs only, so that nobody hears of what has not changed.
template <class T>
void setIfChanged(Published<T>& published, T value) {
  if (!(published() == value)) {
    published = std::move(value);
  }
}

}  // namespace quillmar
