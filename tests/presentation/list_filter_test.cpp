#include "presentation/list_filter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quillmar {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class NamedRow final : public ObservableObject {
 public:
  explicit NamedRow(std::string name) : ObservableObject("NamedRow"), name(*this, "name", std::move(name)) {}

  Published<std::string> name;
  Published<int> visits{*this, "visits", 0};
};

// Counts how often a front end reads its name.
class CountedRow final : public ObservableObject {
 public:
  CountedRow() : ObservableObject("CountedRow") {}

  mutable int readings = 0;
  Derived<std::string> name{*this, "name", [this] {
                              ++readings;
                              return std::string("anna");
                            }};
};

class ListScreen final : public ObservableObject {
 public:
  ListScreen() : ObservableObject("ListScreen") {}

  Rows<NamedRow> children{*this, "children"};
  Rows<NamedRow> devices{*this, "devices"};
  ListFilter filter{*this};
  FilteredRows shownChildren{
      *this, {.rows = "shownChildren", .noMatch = "noChildMatch", .searched = "name"}, children, filter};
  FilteredRows shownDevices{
      *this, {.rows = "shownDevices", .noMatch = "noDeviceMatch", .searched = "name"}, devices, filter};
};

using Named = std::pair<std::string, std::shared_ptr<NamedRow>>;

// The names are the keys.
std::vector<Named> makeRows(const std::vector<std::string>& names) {
  std::vector<Named> rows;
  for (const auto& name : names) {
    rows.emplace_back(name, std::make_shared<NamedRow>(name));
  }
  return rows;
}

std::vector<std::string> namesIn(const Member& list) {
  std::vector<std::string> names;
  for (const auto& row : list.nested()) {
    names.push_back(*row.object->findMember("name")->value().string());
  }
  return names;
}

class ListFilterTest : public testing::Test {
 protected:
  void type(const std::string& text) { screen.findMember("filterText")->input(text); }
  bool isOffered(std::string_view action) const { return screen.findMember(action)->isEnabled(); }
  bool perform(std::string_view action) { return screen.findMember(action)->perform({}); }
  // How often the shown children are announced from now on.
  void watch() {
    watching =
        screen.observe([this](const Member& member) { news += &member == &screen.shownChildren ? 1 : 0; });
  }

  ListScreen screen;
  int news = 0;
  Subscription watching;
};

TEST_F(ListFilterTest, shows_all_rows_at_first) {
  screen.children.assign(makeRows({"Anna", "Zoë"}));
  EXPECT_THAT(namesIn(screen.shownChildren), ElementsAre("Anna", "Zoë"));
  EXPECT_EQ(screen.shownChildren.noMatch(), std::nullopt);
  EXPECT_FALSE(screen.filter.isOpen());
}

TEST_F(ListFilterTest, shows_the_rows_with_the_part_in_their_order) {
  screen.children.assign(makeRows({"Zoë", "Anna", "Hán", "Bob"}));
  type("AN");
  EXPECT_THAT(namesIn(screen.shownChildren), ElementsAre("Anna", "Hán"));
  type("ann");
  EXPECT_THAT(namesIn(screen.shownChildren), ElementsAre("Anna"));
  type("n");
  EXPECT_THAT(namesIn(screen.shownChildren), ElementsAre("Anna", "Hán"));
  type("");
  EXPECT_THAT(namesIn(screen.shownChildren), ElementsAre("Zoë", "Anna", "Hán", "Bob"));
}

TEST_F(ListFilterTest, filters_every_list_of_its_screen) {
  screen.children.assign(makeRows({"Anna", "Bob"}));
  screen.devices.assign(makeRows({"Bob's phone", "Anna's laptop"}));
  type("bob");
  EXPECT_THAT(namesIn(screen.shownChildren), ElementsAre("Bob"));
  EXPECT_THAT(namesIn(screen.shownDevices), ElementsAre("Bob's phone"));
}

TEST_F(ListFilterTest, leaves_the_list_itself_alone) {
  screen.children.assign(makeRows({"Anna", "Bob"}));
  type("bob");
  EXPECT_THAT(namesIn(screen.children), ElementsAre("Anna", "Bob"));
}

TEST_F(ListFilterTest, says_that_nothing_matches) {
  screen.children.assign(makeRows({"Anna"}));
  type("x");
  EXPECT_THAT(namesIn(screen.shownChildren), IsEmpty());
  EXPECT_EQ(screen.shownChildren.noMatch(), "No match");
  type("a");
  EXPECT_EQ(screen.shownChildren.noMatch(), std::nullopt);
}

TEST_F(ListFilterTest, does_not_say_it_of_an_empty_list) {
  screen.children.assign(makeRows({"Anna"}));
  type("x");
  EXPECT_EQ(screen.shownDevices.noMatch(), std::nullopt);
}

TEST_F(ListFilterTest, reads_a_space_at_the_end_as_the_start_of_the_next_word) {
  screen.children.assign(makeRows({"Anna", "Anna Bell", "Annabel"}));
  type("anna ");
  EXPECT_THAT(namesIn(screen.shownChildren), ElementsAre("Anna", "Anna Bell", "Annabel"));
  type("anna b");
  EXPECT_THAT(namesIn(screen.shownChildren), ElementsAre("Anna Bell"));
  type("  ");
  EXPECT_FALSE(screen.filter.isActive());
}

TEST_F(ListFilterTest, announces_nothing_if_the_part_stays_the_same) {
  screen.children.assign(makeRows({"Anna", "Bob"}));
  type("an");
  watch();
  type("AN ");
  type("Án");
  EXPECT_EQ(news, 0);
}

TEST_F(ListFilterTest, follows_rows_that_come_and_go) {
  type("an");
  auto rows = makeRows({"Anna", "Bob"});
  screen.children.assign(rows);
  EXPECT_THAT(namesIn(screen.shownChildren), ElementsAre("Anna"));
  rows.insert(rows.begin(), {"Hán", std::make_shared<NamedRow>("Hán")});
  screen.children.assign(rows);
  EXPECT_THAT(namesIn(screen.shownChildren), ElementsAre("Hán", "Anna"));
  screen.children.assign({});
  EXPECT_THAT(namesIn(screen.shownChildren), IsEmpty());
  EXPECT_EQ(screen.shownChildren.noMatch(), std::nullopt);
}

TEST_F(ListFilterTest, follows_a_row_that_is_renamed) {
  screen.children.assign(makeRows({"Anna", "Bob"}));
  type("an");
  watch();
  screen.children[1].name = "Andy";
  EXPECT_THAT(namesIn(screen.shownChildren), ElementsAre("Anna", "Andy"));
  EXPECT_EQ(news, 1);
  screen.children[0].name = "Zoë";
  EXPECT_THAT(namesIn(screen.shownChildren), ElementsAre("Andy"));
  EXPECT_EQ(news, 2);
}

TEST_F(ListFilterTest, announces_nothing_of_a_row_that_stays) {
  screen.children.assign(makeRows({"Anna", "Bob"}));
  type("an");
  watch();
  screen.children[0].visits = 2;
  screen.children[0].name = "Hanna";
  screen.children[1].name = "Rob";
  EXPECT_EQ(news, 0);
}

TEST_F(ListFilterTest, holds_no_row_that_is_gone) {
  auto rows = makeRows({"Anna"});
  const std::weak_ptr<NamedRow> row = rows[0].second;
  screen.children.assign(std::move(rows));
  type("an");
  screen.children.assign({});
  EXPECT_TRUE(row.expired());
}

TEST_F(ListFilterTest, tells_the_changes_of_the_filter_from_those_of_the_list) {
  const auto atFirst = screen.shownChildren.revision();
  screen.children.assign(makeRows({"Anna", "Bob"}));
  EXPECT_EQ(screen.shownChildren.revision(), atFirst);
  type("an");
  const auto typed = screen.shownChildren.revision();
  EXPECT_NE(typed, atFirst);
  screen.children.assign(makeRows({"Hán"}));
  EXPECT_EQ(screen.shownChildren.revision(), typed);
  type("");
  EXPECT_NE(screen.shownChildren.revision(), typed);
}

TEST_F(ListFilterTest, is_offered_for_a_choice_of_rows) {
  EXPECT_FALSE(isOffered("openFilter"));
  screen.children.assign(makeRows({"Anna"}));
  EXPECT_FALSE(isOffered("openFilter"));
  screen.devices.assign(makeRows({"Anna's laptop"}));
  EXPECT_TRUE(isOffered("openFilter"));
}

TEST_F(ListFilterTest, puts_the_cursor_into_its_field_each_time) {
  screen.children.assign(makeRows({"Anna", "Bob"}));
  ASSERT_TRUE(perform("openFilter"));
  EXPECT_TRUE(screen.filter.isOpen());
  EXPECT_EQ(screen.filter.asks(), 1);
  ASSERT_TRUE(perform("openFilter"));
  EXPECT_EQ(screen.filter.asks(), 2);
}

TEST_F(ListFilterTest, stays_open_while_the_list_empties) {
  screen.children.assign(makeRows({"Anna", "Bob"}));
  perform("openFilter");
  screen.children.assign({});
  EXPECT_TRUE(screen.filter.isOpen());
  EXPECT_TRUE(isOffered("openFilter"));
}

TEST_F(ListFilterTest, shows_all_rows_once_it_is_closed) {
  screen.children.assign(makeRows({"Anna", "Bob"}));
  EXPECT_FALSE(perform("closeFilter"));
  perform("openFilter");
  type("an");
  ASSERT_TRUE(perform("closeFilter"));
  EXPECT_EQ(screen.filter.text(), "");
  EXPECT_FALSE(screen.filter.isOpen());
  EXPECT_THAT(namesIn(screen.shownChildren), ElementsAre("Anna", "Bob"));
}

TEST_F(ListFilterTest, shows_no_row_without_a_name_for_a_part) {
  class NamelessScreen final : public ObservableObject {
   public:
    NamelessScreen() : ObservableObject("NamelessScreen") {}
    Rows<NamedRow> rows{*this, "rows"};
    ListFilter filter{*this};
    FilteredRows shown{*this, {.rows = "shown", .noMatch = "noMatch", .searched = "nickname"}, rows, filter};
  };
  NamelessScreen nameless;
  nameless.rows.assign(makeRows({"Anna"}));
  nameless.filter.text = "a";
  EXPECT_THAT(namesIn(nameless.shown), IsEmpty());
}

// It makes rows only for the names that its filter wants.
class LongScreen final : public ObservableObject {
 public:
  LongScreen() : ObservableObject("LongScreen") {}

  Rows<NamedRow> rows{*this, "rows"};
  ListFilter filter{*this};
  SelectedRows shown{*this, "shown", rows, filter};
};

TEST(SelectedRows, are_all_rows_of_the_list) {
  LongScreen screen;
  screen.rows.assign(makeRows({"Anna", "Bob"}));
  screen.filter.text = "x";
  EXPECT_THAT(namesIn(screen.shown), ElementsAre("Anna", "Bob"));
}

TEST(SelectedRows, follow_the_list_and_announce_it) {
  LongScreen screen;
  int news = 0;
  const auto watching =
      screen.observe([&](const Member& member) { news += &member == &screen.shown ? 1 : 0; });
  const auto before = screen.shown.revision();
  screen.rows.assign(makeRows({"Anna"}));
  EXPECT_EQ(news, 1);
  EXPECT_EQ(screen.shown.revision(), before);
  screen.shown.select();
  EXPECT_EQ(news, 2);
  EXPECT_NE(screen.shown.revision(), before);
}

TEST(SelectedRows, offer_the_filter_for_what_there_is_to_choose_from) {
  LongScreen screen;
  screen.rows.assign(makeRows({"Anna", "Bob"}));
  EXPECT_FALSE(screen.filter.open.isEnabled());
  screen.shown.setListSize(2000);
  EXPECT_TRUE(screen.filter.open.isEnabled());
}

TEST(ListFilter, tells_of_another_part_and_not_of_another_spelling) {
  LongScreen screen;
  int changes = 0;
  const auto watching = screen.filter.onChange([&] { ++changes; });
  screen.filter.text = "an";
  screen.filter.text = "AN ";
  EXPECT_EQ(changes, 1);
  screen.filter.text = "";
  EXPECT_EQ(changes, 2);
}

TEST(FilteredRows, read_a_name_once_and_not_at_each_keystroke) {
  class CountingScreen final : public ObservableObject {
   public:
    CountingScreen() : ObservableObject("CountingScreen") {}
    Rows<CountedRow> rows{*this, "rows"};
    ListFilter filter{*this};
    FilteredRows shown{*this, {.rows = "shown", .noMatch = "noMatch", .searched = "name"}, rows, filter};
  };
  CountingScreen counting;
  const auto row = std::make_shared<CountedRow>();
  counting.rows.assign({{"anna", row}});
  EXPECT_EQ(row->readings, 0);
  for (const char* const typed : {"a", "an", "ann", "anna", "ann"}) {
    counting.filter.text = typed;
    EXPECT_EQ(row->readings, 1);
  }
}

}  // namespace
}  // namespace quillmar
