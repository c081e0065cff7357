#include "presentation/screen_model.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace quillmar {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

using Diary = std::vector<std::string>;

// A screen that records its callbacks.
class Page : public ScreenModel {
 public:
  Page(Diary& diary, std::string name) : ScreenModel("Page"), diary_(diary), name_(std::move(name)) {
    note("made");
  }
  ~Page() override { note("gone"); }
  Page(const Page&) = delete;
  Page& operator=(const Page&) = delete;

  void note(const std::string& what) { diary_.push_back(name_ + " " + what); }
  Diary& diary() const { return diary_; }

 protected:
  void onAppear() override { note("appears"); }
  void onDisappear() override { note("disappears"); }

 private:
  Diary& diary_;
  std::string name_;
};

class Inner final : public Page {
 public:
  explicit Inner(Diary& diary) : Page(diary, "inner") {}

  Input<bool> isDone{*this, "isDone"};
  Action<> close{*this, "close", [this] {
                   dismiss();
                   note("still here");
                 }};
};

struct Row final : ObservableObject {
  explicit Row(Diary& diary) : ObservableObject("Row"), diary_(diary) {}

  Diary& diary_;
  Sheet<Inner> showDetail{*this, "showDetail", [this] { return std::make_shared<Inner>(diary_); }};
};

class Outer final : public Page {
 public:
  explicit Outer(Diary& diary) : Page(diary, "outer") {}

  Sheet<Inner> showInner{*this, "showInner", [this] { return std::make_shared<Inner>(diary()); },
                         [this] { note("is back"); }};
  Presented<Inner> content{*this, "content", [this] { return std::make_shared<Inner>(diary()); }};
  Rows<Row> rows{*this, "rows"};
};

class Root final : public ObservableObject {
 public:
  explicit Root(Diary& diary) : ObservableObject("Root"), diary_(diary) {}

  Diary& diary_;
  Sheet<Outer> showOuter{*this, "showOuter", [this] { return std::make_shared<Outer>(diary_); },
                         [this] { diary_.push_back("root is back"); }};
};

// A screen with room for pages, and a sheet that is none.
class Desk final : public Page {
 public:
  explicit Desk(Diary& diary) : Page(diary, "desk") {}

  std::shared_ptr<ScreenModel> make(const char* name) { return std::make_shared<Page>(diary(), name); }

  quillmar::Page<ScreenModel> first{*this, "first", [this] { return make("first"); },
                                    [this] { note("sees the first go"); }};
  quillmar::Page<ScreenModel> second{*this, "second", [this] { return make("second"); },
                                     [this] { note("sees the second go"); }};
  quillmar::Page<ScreenModel> missing{*this, "missing", [] { return nullptr; }};
  Sheet<ScreenModel> sheet{*this, "sheet", [this] { return make("sheet"); }};
};

class ScreenModelTest : public testing::Test {
 protected:
  // Returns and clears the recorded entries.
  Diary news() { return std::exchange(diary, {}); }

  Diary diary;
  std::shared_ptr<Outer> outer = std::make_shared<Outer>(diary);
  std::shared_ptr<Desk> desk = std::make_shared<Desk>(diary);
  void SetUp() override { diary.clear(); }
};

using AScreen = ScreenModelTest;
using ASheet = ScreenModelTest;
using APage = ScreenModelTest;
using APresentedScreen = ScreenModelTest;

TEST_F(AScreen, is_not_on_screen_before_it_appears) { EXPECT_FALSE(outer->isOnScreen()); }

TEST_F(AScreen, appears_once_even_if_told_twice) {
  outer->appear();
  outer->appear();
  EXPECT_TRUE(outer->isOnScreen());
  EXPECT_THAT(news(), ElementsAre("outer appears"));
}

TEST_F(AScreen, disappears_once_even_if_told_twice) {
  outer->appear();
  outer->disappear();
  outer->disappear();
  EXPECT_FALSE(outer->isOnScreen());
  EXPECT_THAT(news(), ElementsAre("outer appears", "outer disappears"));
}

TEST_F(AScreen, does_not_disappear_if_it_never_appeared) {
  outer->disappear();
  EXPECT_THAT(news(), IsEmpty());
}

TEST_F(AScreen, appears_again_after_it_disappeared) {
  outer->appear();
  outer->disappear();
  outer->appear();
  EXPECT_THAT(news(), ElementsAre("outer appears", "outer disappears", "outer appears"));
}

TEST_F(AScreen, stays_if_it_dismisses_itself_without_a_presenter) {
  outer->appear();
  outer->dismiss();
  EXPECT_TRUE(outer->isOnScreen());
}

TEST_F(ASheet, does_not_exist_before_its_flag_is_set) {
  EXPECT_FALSE(outer->showInner());
  EXPECT_EQ(outer->showInner.get(), nullptr);
  EXPECT_THAT(outer->showInner.nested(), IsEmpty());
  EXPECT_EQ(outer->showInner.value(), Value(false));
  EXPECT_THAT(news(), IsEmpty());
}

TEST_F(ASheet, is_made_and_appears_when_its_flag_turns_true) {
  outer->showInner = true;
  EXPECT_TRUE(outer->showInner());
  EXPECT_EQ(outer->showInner.value(), Value(true));
  EXPECT_TRUE(outer->showInner->isOnScreen());
  EXPECT_THAT(news(), ElementsAre("inner made", "inner appears"));
}

TEST_F(ASheet, is_a_nested_object_while_presented) {
  outer->showInner = true;
  const auto nested = outer->showInner.nested();
  ASSERT_THAT(nested, SizeIs(1));
  EXPECT_EQ(nested[0].object.get(), outer->showInner.get());
  EXPECT_EQ(nested[0].key, "Page");
}

TEST_F(ASheet, disappears_and_is_released_before_on_dismiss_runs) {
  outer->showInner = true;
  news();
  outer->showInner = false;
  EXPECT_FALSE(outer->showInner());
  EXPECT_THAT(news(), ElementsAre("inner disappears", "inner gone", "outer is back"));
}

TEST_F(ASheet, leaves_the_screen_beneath_on_screen) {
  outer->appear();
  outer->showInner = true;
  EXPECT_TRUE(outer->isOnScreen());
  outer->showInner = false;
  EXPECT_THAT(news(), testing::Not(testing::Contains("outer disappears")));
  EXPECT_TRUE(outer->isOnScreen());
}

TEST_F(ASheet, that_is_presented_only_announces_when_set_to_true_again) {
  outer->showInner = true;
  const auto* before = outer->showInner.get();
  news();
  int announced = 0;
  const auto subscription = outer->observe([&](const Member&) { ++announced; });
  outer->showInner = true;
  EXPECT_EQ(outer->showInner.get(), before);
  EXPECT_EQ(announced, 1);
  EXPECT_THAT(news(), IsEmpty());
}

TEST_F(ASheet, that_is_not_presented_only_announces_when_set_to_false_again) {
  int announced = 0;
  const auto subscription = outer->observe([&](const Member&) { ++announced; });
  outer->showInner = false;
  EXPECT_EQ(announced, 1);
  EXPECT_THAT(news(), IsEmpty());
}

TEST_F(ASheet, without_a_model_is_not_presented_and_on_dismiss_does_not_run) {
  struct Empty final : ObservableObject {
    Empty() : ObservableObject("Empty") {}
    int dismissals = 0;
    Sheet<Inner> sheet{*this, "sheet", [] { return nullptr; }, [this] { ++dismissals; }};
  };
  Empty owner;
  int announced = 0;
  const auto subscription = owner.observe([&](const Member&) { ++announced; });
  owner.sheet = true;
  EXPECT_FALSE(owner.sheet());
  EXPECT_THAT(owner.sheet.nested(), IsEmpty());
  EXPECT_EQ(announced, 1) << "a front end that asked for it must show again that it is down";
  EXPECT_EQ(owner.dismissals, 0);
}

TEST_F(ASheet, announces_each_change_once_and_in_its_new_state) {
  std::vector<bool> seen;
  const auto subscription = outer->observe([&](const Member& member) {
    EXPECT_EQ(member.name(), "showInner");
    EXPECT_EQ(member.nested().size(), outer->showInner() ? 1U : 0U);
    seen.push_back(outer->showInner());
  });
  outer->showInner = true;
  outer->showInner = false;
  EXPECT_THAT(seen, ElementsAre(true, false));
}

TEST_F(ASheet, is_announced_before_it_appears) {
  const auto subscription = outer->observe([&](const Member&) { outer->note("announces"); });
  outer->showInner = true;
  EXPECT_THAT(news(), ElementsAre("inner made", "outer announces", "inner appears"));
}

TEST_F(ASheet, that_a_listener_dismisses_at_once_never_appears) {
  const auto subscription = outer->observe([&](const Member&) {
    if (outer->showInner()) {
      outer->showInner = false;
    }
  });
  outer->showInner = true;
  EXPECT_THAT(news(), ElementsAre("inner made", "outer is back", "inner gone"));
}

TEST_F(ASheet, can_be_set_by_a_person) {
  EXPECT_EQ(outer->showInner.kind(), Member::Kind::sheet);
  EXPECT_TRUE(outer->showInner.isInput());
  EXPECT_TRUE(outer->showInner.input(true));
  EXPECT_TRUE(outer->showInner());
  EXPECT_TRUE(outer->showInner.input(false));
  EXPECT_FALSE(outer->showInner());
}

TEST_F(ASheet, rejects_an_input_that_is_not_a_bool) {
  EXPECT_FALSE(outer->showInner.input("true"));
  EXPECT_FALSE(outer->showInner.input(1));
  EXPECT_FALSE(outer->showInner.input(Value()));
  EXPECT_FALSE(outer->showInner());
}

TEST_F(ASheet, does_not_announce_an_input_without_a_change) {
  int announced = 0;
  const auto subscription = outer->observe([&](const Member&) { ++announced; });
  EXPECT_TRUE(outer->showInner.input(false));
  EXPECT_EQ(announced, 0);
}

TEST_F(ASheet, is_dismissed_when_its_screen_dismisses_itself) {
  outer->showInner = true;
  news();
  outer->showInner->dismiss();
  EXPECT_FALSE(outer->showInner());
  EXPECT_THAT(news(), ElementsAre("inner disappears", "inner gone", "outer is back"));
}

TEST_F(ASheet, lives_until_the_action_that_dismissed_it_returns) {
  outer->showInner = true;
  news();
  EXPECT_TRUE(outer->showInner->close());
  EXPECT_THAT(news(), ElementsAre("inner disappears", "outer is back", "inner still here", "inner gone"));
}

TEST_F(ASheet, lives_until_the_input_that_dismissed_it_returns) {
  outer->showInner = true;
  auto& inner = *outer->showInner;
  const auto reaction = inner.isDone.onChange([&inner] {
    inner.dismiss();
    inner.note("still here");
  });
  news();
  EXPECT_TRUE(inner.isDone.input(true));
  EXPECT_THAT(news(), ElementsAre("inner disappears", "outer is back", "inner still here", "inner gone"));
}

TEST_F(ASheet, lives_until_the_late_answer_that_dismissed_it_returns) {
  outer->showInner = true;
  auto& inner = *outer->showInner;
  auto answer = inner.weakly([&inner] {
    inner.dismiss();
    inner.note("still here");
  });
  news();
  answer();
  EXPECT_THAT(news(), ElementsAre("inner disappears", "outer is back", "inner still here", "inner gone"));
  answer();
  EXPECT_THAT(news(), IsEmpty());
}

TEST_F(ASheet, that_dismisses_itself_twice_is_dismissed_once) {
  outer->showInner = true;
  const std::shared_ptr<ObservableObject> kept = outer->showInner.nested()[0].object;
  auto& inner = *outer->showInner;
  inner.dismiss();
  inner.dismiss();
  EXPECT_THAT(news(), ElementsAre("inner made", "inner appears", "inner disappears", "outer is back"));
}

TEST_F(ASheet, dismissed_earlier_does_not_dismiss_its_successor) {
  outer->showInner = true;
  const auto kept = outer->showInner.nested()[0].object;
  auto& former = *outer->showInner;
  outer->showInner = false;
  outer->showInner = true;
  former.dismiss();
  EXPECT_TRUE(outer->showInner());
}

TEST_F(ASheet, is_a_new_one_each_time) {
  outer->showInner = true;
  const auto kept = outer->showInner.nested()[0].object;
  outer->showInner = false;
  outer->showInner = true;
  EXPECT_NE(outer->showInner.get(), kept.get());
}

TEST_F(ASheet, can_be_dismissed_after_its_presenter_is_destroyed) {
  outer->showInner = true;
  const auto kept = std::static_pointer_cast<Inner>(outer->showInner.nested()[0].object);
  outer.reset();
  news();
  kept->dismiss();
  EXPECT_THAT(news(), IsEmpty());
}

TEST_F(ASheet, dismisses_the_sheets_over_it_innermost_first) {
  Root root(diary);
  root.showOuter = true;
  root.showOuter->showInner = true;
  news();
  root.showOuter = false;
  EXPECT_THAT(news(), ElementsAre("inner disappears", "inner gone", "outer disappears", "outer gone",
                                  "root is back"));
}

TEST_F(ASheet, dismisses_the_sheets_of_its_rows) {
  Root root(diary);
  root.showOuter = true;
  auto row = std::make_shared<Row>(diary);
  root.showOuter->rows.assign({{"1", row}});
  row->showDetail = true;
  news();
  root.showOuter = false;
  EXPECT_FALSE(row->showDetail());
  EXPECT_THAT(news(), ElementsAre("inner disappears", "inner gone", "outer disappears", "outer gone",
                                  "root is back"));
}

TEST_F(ASheet, can_be_presented_again_in_on_dismiss) {
  Sheet<Inner>* sheet = nullptr;
  int dismissals = 0;
  Outer presenter(diary);
  Sheet<Inner> again(
      presenter, "again", [this] { return std::make_shared<Inner>(diary); },
      [&] {
        if (++dismissals == 1) {
          *sheet = true;
        }
      });
  sheet = &again;
  again = true;
  again = false;
  EXPECT_TRUE(again());
  EXPECT_EQ(dismissals, 1);
}

TEST_F(APage, beside_its_owner_dismisses_the_page_that_stands_there) {
  desk->setPagesBeside(true);
  desk->first = true;
  news();
  desk->second = true;
  EXPECT_THAT(news(), ElementsAre("second made", "first disappears", "first gone", "desk sees the first go",
                                  "second appears"));
  EXPECT_FALSE(desk->first());
}

TEST_F(APage, that_a_person_opens_takes_the_place_too) {
  desk->setPagesBeside(true);
  desk->first = true;
  desk->second.input(true);
  EXPECT_FALSE(desk->first());
  EXPECT_TRUE(desk->second());
}

TEST_F(APage, that_covers_its_owner_leaves_others_alone) {
  desk->first = true;
  desk->second = true;
  EXPECT_TRUE(desk->first());
  EXPECT_TRUE(desk->second());
}

TEST_F(APage, without_a_model_takes_no_place) {
  desk->setPagesBeside(true);
  desk->first = true;
  desk->missing = true;
  EXPECT_TRUE(desk->first());
}

TEST_F(APage, and_a_sheet_leave_each_other_alone) {
  desk->setPagesBeside(true);
  desk->first = true;
  desk->sheet = true;
  EXPECT_TRUE(desk->first());
  desk->second = true;
  EXPECT_TRUE(desk->sheet());
}

TEST_F(APresentedScreen, is_controlled_only_by_its_owner) {
  EXPECT_FALSE(outer->content.isInput());
  EXPECT_FALSE(outer->content.input(true));
  EXPECT_TRUE(outer->content.value().isNil());
  EXPECT_FALSE(outer->content);
  outer->content.present(true);
  EXPECT_TRUE(outer->content);
  EXPECT_THAT(outer->content.nested(), SizeIs(1));
  EXPECT_THAT(news(), ElementsAre("inner made", "inner appears"));
  outer->content.present(false);
  EXPECT_THAT(news(), ElementsAre("inner disappears", "inner gone"));
}

TEST_F(APresentedScreen, stays_the_same_when_it_is_presented_again) {
  outer->content.present(true);
  const auto* before = outer->content.get();
  outer->content.present(true);
  EXPECT_EQ(outer->content.get(), before);
}

TEST_F(APresentedScreen, may_dismiss_itself) {
  outer->content.present(true);
  outer->content->close();
  EXPECT_FALSE(outer->content);
}

}  // namespace
}  // namespace quillmar
