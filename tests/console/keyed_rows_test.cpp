#include "console/keyed_rows.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <vector>

namespace quillmar {
namespace {

using Names = std::vector<std::string>;

struct Item {
  std::string key;
  std::string text;
};

struct ItemRow final : ObservableObject {
  ItemRow() : ObservableObject("ItemRow") {}
  Published<std::string> text{*this, "text"};
};

struct ItemList final : ObservableObject {
  ItemList() : ObservableObject("ItemList") {}
  Rows<ItemRow> rows{*this, "rows"};
};

struct KeyedRows : testing::Test {
  void show(const std::vector<Item>& items) {
    showInRows(
        list.rows, items, [](const Item& item) { return item.key; },
        [this](const Item& /*item*/) {
          ++made;
          return std::make_shared<ItemRow>();
        },
        [](ItemRow& row, const Item& item) { setIfChanged(row.text, item.text); });
  }
  Names texts() {
    Names all;
    for (std::size_t i = 0; i < list.rows.size(); ++i) {
      all.push_back(list.rows[i].text());
    }
    return all;
  }
  std::size_t differentKeys() {
    std::set<std::string> keys;
    for (const auto& [key, row] : list.rows.nested()) {
      keys.insert(key);
    }
    return keys.size();
  }

  ItemList list;
  int made = 0;
  int announced = 0;
  const Subscription listening = list.observe([this](const Member& /*any*/) { ++announced; });
};

TEST_F(KeyedRows, an_empty_list_that_stays_empty_is_not_announced) {
  show({});
  EXPECT_EQ(announced, 0);
}

TEST_F(KeyedRows, an_unchanged_list_is_not_announced_and_creates_no_row) {
  show({{"a", "1"}, {"b", "2"}});
  show({{"a", "1"}, {"b", "2"}});
  EXPECT_EQ(announced, 1);
  EXPECT_EQ(made, 2);
}

TEST_F(KeyedRows, a_changed_item_updates_its_row_but_not_the_list) {
  show({{"a", "1"}, {"b", "2"}});
  const auto* const row = &list.rows[1];
  show({{"a", "1"}, {"b", "3"}});
  EXPECT_EQ(texts(), (Names{"1", "3"}));
  EXPECT_EQ(&list.rows[1], row);
  EXPECT_EQ(announced, 1);
}

TEST_F(KeyedRows, an_item_keeps_its_row_when_it_moves) {
  show({{"a", "1"}, {"b", "2"}});
  const auto* const row = &list.rows[1];
  show({{"b", "2"}, {"c", "3"}, {"a", "1"}});
  EXPECT_EQ(texts(), (Names{"2", "3", "1"}));
  EXPECT_EQ(&list.rows[0], row);
  EXPECT_EQ(made, 3);
  EXPECT_EQ(announced, 2);
}

TEST_F(KeyedRows, a_removed_item_returns_as_a_new_row) {
  show({{"a", "1"}});
  show({});
  EXPECT_EQ(list.rows.size(), 0U);
  show({{"a", "1"}});
  EXPECT_EQ(made, 2);
  EXPECT_EQ(announced, 3);
}

TEST_F(KeyedRows, items_with_the_same_key_have_rows_and_keys_of_their_own) {
  show({{"a", "1"}, {"a", "2"}, {"a\n2", "3"}, {"a", "4"}});
  EXPECT_EQ(texts(), (Names{"1", "2", "3", "4"}));
  EXPECT_EQ(differentKeys(), 4U);
  show({{"a", "1"}, {"a", "2"}, {"a\n2", "3"}, {"a", "4"}});
  EXPECT_EQ(made, 4);
  EXPECT_EQ(announced, 1);
}

}  // namespace
}  // namespace quillmar
