#include "foundation/observable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace quillmar {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Line final : ObservableObject {
  explicit Line(std::string text) : ObservableObject("Line"), text(*this, "text", std::move(text)) {}
  Published<std::string> text;
};

struct Form : ObservableObject {
  Form() : ObservableObject("Form") {}

  Published<int> count{*this, "count", 1};
  Input<std::string> name{*this, "name"};
  Derived<bool> isValid{*this, "isValid", [this] { return !name().empty(); }};
  Text title{*this, "title", "The Form"};
  Action<> send{*this, "send", [this] { count = count() + 1; }, [this] { return isValid(); }};
  Action<std::string, int> rename{*this, "rename", [this](const std::string& to, int by) {
                                    name = to;
                                    count = count() + by;
                                  }};
  Part<Line> line{*this, "line"};
  Rows<Line> lines{*this, "lines"};
};

struct OtherForm final : ObservableObject {
  explicit OtherForm(Form& form) : ObservableObject("OtherForm") { follow(form); }
};

class ObservableTest : public testing::Test {
 protected:
  Subscription hear() {
    return form->observe([this](const Member& member) { heard.emplace_back(member.name()); });
  }

  std::shared_ptr<Form> form = std::make_shared<Form>();
  std::vector<std::string> heard;
};

using AnObject = ObservableTest;
using APublishedValue = ObservableTest;
using AnInput = ObservableTest;
using ADerivedValue = ObservableTest;
using AText = ObservableTest;
using AnAction = ObservableTest;
using APart = ObservableTest;
using SomeRows = ObservableTest;
using AWeakClosure = ObservableTest;

TEST_F(AnObject, enumerates_its_members_in_the_order_of_declaration) {
  std::vector<std::string_view> names;
  for (const auto* member : form->members()) {
    names.push_back(member->name());
  }
  EXPECT_THAT(names, ElementsAre("count", "name", "isValid", "title", "send", "rename", "line", "lines"));
  EXPECT_EQ(form->typeName(), "Form");
}

TEST_F(AnObject, finds_a_member_by_its_exact_name) {
  EXPECT_EQ(form->findMember("name"), &form->name);
  EXPECT_EQ(form->findMember("Name"), nullptr);
  EXPECT_EQ(form->findMember(""), nullptr);
}

TEST_F(AnObject, knows_the_kind_of_each_member) {
  using Kind = Member::Kind;
  std::vector<Kind> kinds;
  for (const auto* member : form->members()) {
    kinds.push_back(member->kind());
  }
  EXPECT_THAT(kinds, ElementsAre(Kind::state, Kind::state, Kind::derived, Kind::text, Kind::action,
                                 Kind::action, Kind::part, Kind::rows));
}

TEST_F(AnObject, passes_on_the_changes_of_one_that_it_follows) {
  OtherForm other(*form);
  std::vector<std::string> passedOn;
  const auto subscription =
      other.observe([&](const Member& member) { passedOn.emplace_back(member.name()); });
  form->count = 2;
  EXPECT_THAT(passedOn, ElementsAre("count"));
}

TEST_F(AnObject, that_followed_another_may_go_first) {
  { const OtherForm other(*form); }
  const auto subscription = hear();
  form->count = 2;
  EXPECT_THAT(heard, ElementsAre("count"));
}

TEST_F(APublishedValue, starts_with_its_initial_value) {
  EXPECT_EQ(form->count(), 1);
  EXPECT_EQ(form->count.value(), Value(1));
  EXPECT_EQ(form->name(), "");
}

TEST_F(APublishedValue, announces_every_assignment) {
  const auto subscription = hear();
  form->count = 2;
  form->count = 2;
  EXPECT_EQ(form->count(), 2);
  EXPECT_THAT(heard, ElementsAre("count", "count"));
}

TEST_F(APublishedValue, has_its_new_value_when_it_is_announced) {
  int seen = 0;
  const auto subscription = form->observe([&](const Member&) { seen = form->count(); });
  form->count = 5;
  EXPECT_EQ(seen, 5);
}

TEST_F(APublishedValue, tells_of_a_change_only_when_there_was_one) {
  int changes = 0;
  const auto subscription = form->count.onChange([&] { ++changes; });
  form->count = 1;
  EXPECT_EQ(changes, 0);
  form->count = 2;
  EXPECT_EQ(changes, 1);
}

TEST_F(APublishedValue, tells_of_a_change_after_it_was_announced) {
  std::vector<std::string> order;
  const auto change = form->count.onChange([&] { order.emplace_back("changed"); });
  const auto announcement = form->observe([&](const Member&) { order.emplace_back("announced"); });
  form->count = 2;
  EXPECT_THAT(order, ElementsAre("announced", "changed"));
}

TEST_F(APublishedValue, may_be_assigned_again_by_who_hears_of_it) {
  const auto subscription = form->count.onChange([&] {
    if (form->count() < 5) {
      form->count = form->count() + 1;
    }
  });
  form->count = 2;
  EXPECT_EQ(form->count(), 5);
}

TEST_F(APublishedValue, may_be_let_go_by_who_hears_of_it) {
  auto& count = form->count;
  const auto subscription = form->observe([&](const Member&) { form.reset(); });
  count = 2;
  EXPECT_EQ(form, nullptr);
}

TEST_F(APublishedValue, is_out_of_a_persons_reach) {
  EXPECT_FALSE(form->count.isInput());
  EXPECT_FALSE(form->count.input(5));
  EXPECT_EQ(form->count(), 1);
}

TEST_F(AnInput, takes_a_value_of_its_type) {
  const auto subscription = hear();
  EXPECT_TRUE(form->name.isInput());
  EXPECT_TRUE(form->name.input("Ann"));
  EXPECT_EQ(form->name(), "Ann");
  EXPECT_THAT(heard, ElementsAre("name"));
}

TEST_F(AnInput, refuses_a_value_of_another_type) {
  const auto subscription = hear();
  EXPECT_FALSE(form->name.input(5));
  EXPECT_FALSE(form->name.input(Value()));
  EXPECT_EQ(form->name(), "");
  EXPECT_THAT(heard, IsEmpty());
}

TEST_F(AnInput, says_nothing_of_a_value_that_it_has_already) {
  form->name = "Ann";
  const auto subscription = hear();
  EXPECT_TRUE(form->name.input("Ann"));
  EXPECT_THAT(heard, IsEmpty());
}

TEST_F(ADerivedValue, follows_from_others_at_every_look) {
  EXPECT_FALSE(form->isValid());
  EXPECT_EQ(form->isValid.value(), Value(false));
  form->name = "Ann";
  EXPECT_TRUE(form->isValid());
  EXPECT_EQ(form->isValid.value(), Value(true));
  EXPECT_FALSE(form->isValid.input(true));
}

TEST_F(AText, is_a_fixed_sentence) {
  EXPECT_EQ(form->title(), "The Form");
  EXPECT_EQ(form->title.value(), Value("The Form"));
  EXPECT_FALSE(form->title.input("Other"));
}

TEST_F(AnAction, does_nothing_while_it_is_out_of_use) {
  EXPECT_FALSE(form->send.isEnabled());
  EXPECT_FALSE(form->send());
  EXPECT_FALSE(form->send.perform({}));
  EXPECT_EQ(form->count(), 1);
}

TEST_F(AnAction, has_its_effect_while_it_is_in_use) {
  form->name = "Ann";
  EXPECT_TRUE(form->send.isEnabled());
  EXPECT_TRUE(form->send());
  EXPECT_TRUE(form->send.perform({}));
  EXPECT_EQ(form->count(), 3);
}

TEST_F(AnAction, takes_arguments_of_its_own_types) {
  EXPECT_TRUE(form->rename("Ann", 2));
  EXPECT_TRUE(form->rename.perform({"Bob", 3}));
  EXPECT_EQ(form->name(), "Bob");
  EXPECT_EQ(form->count(), 6);
}

TEST_F(AnAction, refuses_arguments_that_do_not_fit) {
  EXPECT_FALSE(form->rename.perform({}));
  EXPECT_FALSE(form->rename.perform({"Bob"}));
  EXPECT_FALSE(form->rename.perform({"Bob", 3, 4}));
  EXPECT_FALSE(form->rename.perform({3, "Bob"}));
  EXPECT_FALSE(form->rename.perform({"Bob", Value()}));
  EXPECT_EQ(form->name(), "");
}

TEST_F(AnAction, may_let_its_own_object_go) {
  std::vector<std::string> order;
  struct Closing final : ObservableObject {
    explicit Closing(std::function<void()> onClose, std::vector<std::string>& order)
        : ObservableObject("Closing"), onClose(std::move(onClose)), order(order) {}
    ~Closing() override { order.emplace_back("gone"); }
    std::function<void()> onClose;
    std::vector<std::string>& order;
    Action<> close{*this, "close", [this] {
                     onClose();
                     order.emplace_back("done");
                   }};
  };
  std::shared_ptr<Closing> object;
  object = std::make_shared<Closing>([&] { object.reset(); }, order);
  object->close();
  EXPECT_THAT(order, ElementsAre("done", "gone"));
}

TEST_F(APart, is_there_or_not) {
  EXPECT_FALSE(form->line);
  EXPECT_THAT(form->line.nested(), IsEmpty());
  const auto subscription = hear();
  form->line.put(std::make_shared<Line>("one"));
  EXPECT_TRUE(form->line);
  EXPECT_EQ(form->line->text(), "one");
  ASSERT_EQ(form->line.nested().size(), 1U);
  EXPECT_EQ(form->line.nested()[0].key, "Line");
  EXPECT_EQ(form->line.nested()[0].object.get(), form->line.get());
  form->line.put(nullptr);
  EXPECT_FALSE(form->line);
  EXPECT_THAT(heard, ElementsAre("line", "line"));
}

TEST_F(APart, keeps_the_former_object_until_the_change_is_known) {
  form->line.put(std::make_shared<Line>("one"));
  const std::weak_ptr<ObservableObject> former = form->line.nested()[0].object;
  bool alive = false;
  const auto subscription = form->observe([&](const Member&) { alive = !former.expired(); });
  form->line.put(std::make_shared<Line>("two"));
  EXPECT_TRUE(alive);
  EXPECT_TRUE(former.expired());
}

TEST_F(SomeRows, keep_their_order_and_are_found_by_key) {
  const auto subscription = hear();
  const auto one = std::make_shared<Line>("one");
  const auto two = std::make_shared<Line>("two");
  form->lines.assign({{"2", two}, {"1", one}});
  ASSERT_EQ(form->lines.size(), 2U);
  EXPECT_EQ(&form->lines[0], two.get());
  EXPECT_EQ(form->lines.find("1"), one.get());
  EXPECT_EQ(form->lines.share("1"), one);
  EXPECT_EQ(form->lines.find("3"), nullptr);
  EXPECT_EQ(form->lines.share("3"), nullptr);
  const auto nested = form->lines.nested();
  ASSERT_EQ(nested.size(), 2U);
  EXPECT_EQ(nested[1].key, "1");
  EXPECT_EQ(nested[1].object, one);
  EXPECT_THAT(heard, ElementsAre("lines"));
}

TEST_F(SomeRows, keep_the_former_rows_until_the_change_is_known) {
  form->lines.assign({{"1", std::make_shared<Line>("one")}});
  const std::weak_ptr<Line> former = form->lines.share("1");
  bool alive = false;
  const auto subscription = form->observe([&](const Member&) { alive = !former.expired(); });
  form->lines.assign({});
  EXPECT_TRUE(alive);
  EXPECT_TRUE(former.expired());
}

TEST_F(AWeakClosure, runs_with_its_arguments_while_its_object_is_there) {
  auto closure = form->weakly([this](int by) { form->count = form->count() + by; });
  closure(4);
  EXPECT_EQ(form->count(), 5);
}

TEST_F(AWeakClosure, does_nothing_once_its_object_has_gone) {
  int runs = 0;
  auto closure = form->weakly([&] { ++runs; });
  const auto guard = form->lifeGuard();
  EXPECT_TRUE(guard.alive());
  form.reset();
  EXPECT_FALSE(guard.alive());
  closure();
  EXPECT_EQ(runs, 0);
}

TEST_F(AWeakClosure, keeps_its_object_until_it_is_done) {
  std::vector<bool> alive;
  const std::weak_ptr<Form> weak = form;
  auto closure = form->weakly([&] {
    form.reset();
    alive.push_back(!weak.expired());
  });
  closure();
  alive.push_back(!weak.expired());
  EXPECT_THAT(alive, ElementsAre(true, false));
}

TEST_F(AWeakClosure, works_for_an_object_that_nobody_shares) {
  int runs = 0;
  std::function<void()> closure;
  {
    const Form local;
    closure = local.weakly([&] { ++runs; });
    closure();
  }
  closure();
  EXPECT_EQ(runs, 1);
}

TEST(ALifeGuard, of_nothing_is_not_alive) { EXPECT_FALSE(LifeGuard().alive()); }

}  // namespace
}  // namespace quillmar
