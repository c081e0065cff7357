#include "ui/bridge/keyed_list_model.h"

#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QPersistentModelIndex>
#include <QSignalSpy>
#include <array>
#include <vector>

namespace quillmar::ui {
namespace {

std::vector<KeyedListModel::Row> rows(const QStringList& keys) {
  std::vector<KeyedListModel::Row> made;
  for (const auto& key : keys) {
    made.push_back({key, key});
  }
  return made;
}

class KeyedListModelTest : public testing::Test {
 protected:
  QStringList shown() const {
    QStringList values;
    for (int i = 0; i < model.count(); ++i) {
      values.append(model.at(i).toString());
    }
    return values;
  }

  KeyedListModel model;
  // Checks that every signal matches the rows.
  QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::Warning};
};

TEST_F(KeyedListModelTest, reaches_any_order_from_any_other) {
  const std::vector<QStringList> orders{{"a", "b", "c", "d"},
                                        {"d", "c", "b", "a"},
                                        {"b", "x", "d"},
                                        {},
                                        {"y", "b", "a"},
                                        {"a", "b", "y", "z"},
                                        {"z"}};
  for (const auto& from : orders) {
    for (const auto& to : orders) {
      model.assign(rows(from));
      model.assign(rows(to));
      EXPECT_EQ(shown(), to);
    }
  }
}

TEST_F(KeyedListModelTest, while_held_new_rows_take_the_places_of_removed_ones_and_then_the_end) {
  struct Case {
    QStringList before, after, held;
  };
  for (const auto& [before, after, held] :
       {Case{{"a", "b", "c"}, {"x", "a", "b", "c"}, {"a", "b", "c", "x"}},
        Case{{"a", "b", "c"}, {"c", "b", "a"}, {"a", "b", "c"}},
        Case{{"a", "b", "c"}, {"x", "c", "a"}, {"a", "x", "c"}},
        Case{{"a", "b", "c"}, {"x", "y", "z", "b"}, {"x", "b", "y", "z"}},
        Case{{"a", "b", "c"}, {"c"}, {"c"}}, Case{{"a", "b"}, {}, {}}, Case{{}, {"b", "a"}, {"b", "a"}}}) {
    model.assign(rows(before));
    model.setHeld(true);
    model.assign(rows(after));
    EXPECT_EQ(shown(), held);
    model.setHeld(false);
    EXPECT_EQ(shown(), after) << "let go";
  }
}

TEST_F(KeyedListModelTest, while_held_a_row_is_updated_and_keeps_its_data_when_released) {
  model.assign({{"a", 1}, {"b", 2}});
  model.setHeld(true);
  model.assign({{"b", 3}, {"a", 4}});
  EXPECT_EQ(shown(), (QStringList{"4", "3"}));
  model.setHeld(false);
  EXPECT_EQ(shown(), (QStringList{"3", "4"}));
}

TEST_F(KeyedListModelTest, while_held_rows_with_the_same_key_are_distinct) {
  model.assign(rows({"a", "a", "b"}));
  model.setHeld(true);
  model.assign(rows({"b", "a", "a", "a"}));
  EXPECT_EQ(shown(), (QStringList{"a", "a", "b", "a"}));
  model.setHeld(false);
  EXPECT_EQ(shown(), (QStringList{"b", "a", "a", "a"}));
}

TEST_F(KeyedListModelTest, announces_an_assignment_after_its_last_change) {
  QStringList seen;
  QObject::connect(&model, &KeyedListModel::assigned, [&] { seen = shown(); });
  model.assign(rows({"a", "b", "c"}));
  EXPECT_EQ(seen, (QStringList{"a", "b", "c"}));
  model.assign(rows({"c", "x"}));
  EXPECT_EQ(seen, (QStringList{"c", "x"}));
}

TEST_F(KeyedListModelTest, a_row_that_stays_is_moved_instead_of_recreated) {
  model.assign(rows({"a", "b", "c"}));
  const QPersistentModelIndex c(model.index(2));
  QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
  QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
  model.assign(rows({"c", "a", "b"}));
  EXPECT_EQ(c.row(), 0);
  EXPECT_EQ(inserted.count(), 0);
  EXPECT_EQ(removed.count(), 0);
}

TEST_F(KeyedListModelTest, a_row_whose_key_changes_stays_the_same_row) {
  std::array<int, 3> objects{};
  const auto object = [&](std::size_t i) { return QVariant::fromValue<void*>(&objects[i]); };
  model.assign({{"a", object(0)}, {"b", object(1)}, {"c", object(2)}});
  const QPersistentModelIndex b(model.index(1));
  QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
  QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
  model.assign({{"x", object(2)}, {"a", object(0)}, {"y", object(1)}});
  EXPECT_EQ(model.at(0), object(2));
  EXPECT_EQ(model.at(2), object(1));
  EXPECT_EQ(b.row(), 2);
  EXPECT_EQ(inserted.count() + removed.count(), 0);
}

TEST_F(KeyedListModelTest, an_equal_list_emits_no_change) {
  model.assign(rows({"a", "b"}));
  QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
  QSignalSpy counted(&model, &KeyedListModel::countChanged);
  model.assign(rows({"a", "b"}));
  EXPECT_EQ(changed.count(), 0);
  EXPECT_EQ(counted.count(), 0);
}

TEST_F(KeyedListModelTest, rows_with_the_same_key_are_all_kept) {
  model.assign(rows({"a", "a", "b", "a"}));
  EXPECT_EQ(shown(), (QStringList{"a", "a", "b", "a"}));
  model.assign(rows({"b", "a"}));
  EXPECT_EQ(shown(), (QStringList{"b", "a"}));
}

TEST_F(KeyedListModelTest, an_index_outside_the_list_yields_nothing) {
  model.assign(rows({"a"}));
  EXPECT_FALSE(model.at(-1).isValid());
  EXPECT_FALSE(model.at(1).isValid());
}

TEST_F(KeyedListModelTest, rows_side_by_side_go_and_come_in_one_step) {
  model.assign(rows({"a", "b", "c", "d", "e", "f"}));
  const QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
  const QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
  model.assign(rows({"c"}));
  EXPECT_EQ(removed.count(), 2);
  model.assign(rows({"a", "b", "c", "d", "e", "f"}));
  EXPECT_EQ(inserted.count(), 2);
  EXPECT_EQ(shown(), (QStringList{"a", "b", "c", "d", "e", "f"}));
}

TEST_F(KeyedListModelTest, another_selection_has_its_own_order_even_while_held) {
  model.assign(rows({"b"}));
  model.setHeld(true);
  model.assign(rows({"a", "b", "c"}), KeyedListModel::Change::selection);
  EXPECT_EQ(shown(), (QStringList{"a", "b", "c"}));
  model.assign(rows({"x", "a", "b", "c"}));
  EXPECT_EQ(shown(), (QStringList{"a", "b", "c", "x"}));
}

TEST_F(KeyedListModelTest, tells_while_the_rows_of_another_selection_come) {
  QList<bool> told;
  QObject::connect(&model, &QAbstractItemModel::rowsInserted, [&] { told.append(model.isSelecting()); });
  QObject::connect(&model, &KeyedListModel::assigned, [&] { told.append(model.isSelecting()); });
  model.assign(rows({"a"}));
  model.assign(rows({"a", "b"}), KeyedListModel::Change::selection);
  EXPECT_EQ(told, (QList<bool>{false, false, true, true}));
  EXPECT_FALSE(model.isSelecting());
}

TEST_F(KeyedListModelTest, a_rows_data_are_created_when_a_view_asks_for_them) {
  int made = 0;
  model.setMaking([&made](const QVariant& data) {
    ++made;
    return QVariant(data.toString() + "!");
  });
  model.assign(rows({"a", "b"}));
  model.assign(rows({"b", "a"}));
  EXPECT_EQ(made, 0);
  EXPECT_EQ(shown(), (QStringList{"b!", "a!"}));
  EXPECT_EQ(made, 2);
}

}  // namespace
}  // namespace quillmar::ui
