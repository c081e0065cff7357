#include "ui/bridge/keyed_list_model.h"

#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QPersistentModelIndex>
#include <QSignalSpy>
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
  // Checks that every signal tells the truth.
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

TEST_F(KeyedListModelTest, held_it_gives_newcomers_the_places_of_those_that_went_and_then_the_end) {
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

TEST_F(KeyedListModelTest, held_it_shows_what_is_new_in_a_row_and_lets_it_go_with_that) {
  model.assign({{"a", 1}, {"b", 2}});
  model.setHeld(true);
  model.assign({{"b", 3}, {"a", 4}});
  EXPECT_EQ(shown(), (QStringList{"4", "3"}));
  model.setHeld(false);
  EXPECT_EQ(shown(), (QStringList{"3", "4"}));
}

TEST_F(KeyedListModelTest, held_it_tells_rows_of_one_key_apart) {
  model.assign(rows({"a", "a", "b"}));
  model.setHeld(true);
  model.assign(rows({"b", "a", "a", "a"}));
  EXPECT_EQ(shown(), (QStringList{"a", "a", "b", "a"}));
  model.setHeld(false);
  EXPECT_EQ(shown(), (QStringList{"b", "a", "a", "a"}));
}

TEST_F(KeyedListModelTest, tells_of_an_assignment_when_all_of_it_is_done) {
  QStringList seen;
  QObject::connect(&model, &KeyedListModel::assigned, [&] { seen = shown(); });
  model.assign(rows({"a", "b", "c"}));
  EXPECT_EQ(seen, (QStringList{"a", "b", "c"}));
  model.assign(rows({"c", "x"}));
  EXPECT_EQ(seen, (QStringList{"c", "x"}));
}

TEST_F(KeyedListModelTest, a_row_that_stays_is_moved_and_not_made_anew) {
  model.assign(rows({"a", "b", "c"}));
  const QPersistentModelIndex c(model.index(2));
  QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
  QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
  model.assign(rows({"c", "a", "b"}));
  EXPECT_EQ(c.row(), 0);
  EXPECT_EQ(inserted.count(), 0);
  EXPECT_EQ(removed.count(), 0);
}

TEST_F(KeyedListModelTest, an_equal_list_says_nothing) {
  model.assign(rows({"a", "b"}));
  QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
  QSignalSpy counted(&model, &KeyedListModel::countChanged);
  model.assign(rows({"a", "b"}));
  EXPECT_EQ(changed.count(), 0);
  EXPECT_EQ(counted.count(), 0);
}

TEST_F(KeyedListModelTest, rows_of_one_key_all_stand) {
  model.assign(rows({"a", "a", "b", "a"}));
  EXPECT_EQ(shown(), (QStringList{"a", "a", "b", "a"}));
  model.assign(rows({"b", "a"}));
  EXPECT_EQ(shown(), (QStringList{"b", "a"}));
}

TEST_F(KeyedListModelTest, there_is_nothing_outside_the_list) {
  model.assign(rows({"a"}));
  EXPECT_FALSE(model.at(-1).isValid());
  EXPECT_FALSE(model.at(1).isValid());
}

}  // namespace
}  // namespace quillmar::ui
