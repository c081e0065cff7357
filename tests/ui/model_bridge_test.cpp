#include "ui/bridge/model_bridge.h"

#include <gtest/gtest.h>

#include <QSignalSpy>
#include <memory>
#include <string>
#include <vector>

#include "presentation/key_commands.h"
#include "presentation/list_filter.h"
#include "presentation/screen_model.h"
#include "tests/ui/support/bridged_model.h"

namespace quillmar::ui {
namespace {

class Child final : public ScreenModel {
 public:
  Child() : ScreenModel("Child") {}
  Published<std::string> name{*this, "name", "first"};
  Action<> leave{*this, "leave", [this] { dismiss(); }};
};

class Model final : public ScreenModel {
 public:
  Model() : ScreenModel("Model") {}

  Input<std::string> email{*this, "email"};
  Input<bool> remember{*this, "remember", false};
  Input<double> share{*this, "share", 0};
  Published<int> count{*this, "count", 0};
  Published<std::optional<std::string>> note{*this, "note"};
  Published<std::vector<Entry>> entries{*this, "entries"};
  Derived<bool> isValid{*this, "isValid", [this] {
                          ++evaluations;
                          return !email().empty();
                        }};
  Text title{*this, "title", "Sign In"};
  Action<> signIn{*this, "signIn", [this] { count = count() + 1; }, [this] { return isValid(); }};
  Action<std::string, std::int64_t> add{*this, "add", [this](const std::string& id, std::int64_t number) {
                                          entries = {{id, static_cast<int>(number)}};
                                        }};
  Action<> reload{*this, "reload", [this] { count = count() + 1; }, [this] { return !email().empty(); }};
  Action<std::int64_t> choose{*this, "choose",
                              [this](std::int64_t place) { count = static_cast<int>(place); }};
  Part<Child> part{*this, "part"};
  Rows<Child> rows{*this, "rows"};
  Sheet<Child> showChild{*this, "showChild", [] { return std::make_shared<Child>(); }};
  Presented<Child> inPlace{*this, "inPlace", [] { return std::make_shared<Child>(); }};
  ListFilter filter{*this};
  FilteredRows found{*this, {.rows = "found", .noMatch = "noMatch", .searched = "name"}, rows, filter};
  KeyCommands keys{*this, {{Command::refresh, reload}, {Command::choose, choose}}};

  int evaluations = 0;
};

// Presents two pages and a sheet.
class Desk final : public ScreenModel {
 public:
  Desk() : ScreenModel("Desk") {}

  Page<Child> first{*this, "first", [] { return std::make_shared<Child>(); }};
  Page<Child> second{*this, "second", [] { return std::make_shared<Child>(); }};
  Sheet<Child> over{*this, "over", [] { return std::make_shared<Child>(); }};
};

using ModelBridgeTest = BridgedModel<Model>;
using DeskBridge = BridgedModel<Desk>;

TEST_F(ModelBridgeTest, shows_what_the_model_holds) {
  EXPECT_EQ(shown("typeName"), "Model");
  EXPECT_EQ(shown("title"), "Sign In");
  EXPECT_EQ(shown("email"), "");
  EXPECT_EQ(shown("count"), 0);
  EXPECT_EQ(shown("isValid"), false);
  EXPECT_TRUE(shown("note").isNull());
}

TEST_F(ModelBridgeTest, follows_a_change_in_the_next_turn) {
  model->count = 7;
  EXPECT_EQ(shown("count"), 0);
  turn();
  EXPECT_EQ(shown("count"), 7);
}

TEST_F(ModelBridgeTest, reads_what_changed_in_one_turn_once) {
  const int before = model->evaluations;
  for (int i = 0; i < 100; ++i) {
    model->count = i;
  }
  turn();
  // Once for the value, and once for the action that depends on it.
  EXPECT_EQ(model->evaluations, before + 2);
}

TEST_F(ModelBridgeTest, an_equal_value_emits_nothing) {
  model->count = 3;
  turn();
  const QMetaObject& meta = *bridge.metaObject();
  const auto property = meta.property(meta.indexOfProperty("count"));
  int changes = 0;
  QSignalSpy spy(&bridge, property.notifySignal());
  model->count = 3;
  turn();
  changes = static_cast<int>(spy.count());
  model->count = 4;
  turn();
  EXPECT_EQ(changes, 0);
  EXPECT_EQ(spy.count(), 1);
}

TEST_F(ModelBridgeTest, an_optional_value_appears_and_disappears) {
  model->note = "hello";
  turn();
  EXPECT_EQ(shown("note"), "hello");
  model->note = std::nullopt;
  turn();
  EXPECT_TRUE(shown("note").isNull());
}

TEST_F(ModelBridgeTest, input_reaches_the_model_at_once) {
  assign("remember", true);
  EXPECT_TRUE(model->remember());
  assign("share", 0.5);
  EXPECT_EQ(model->share(), 0.5);
}

TEST_F(ModelBridgeTest, input_of_another_type_is_ignored) {
  assign("email", 12);
  EXPECT_EQ(model->email(), "");
  EXPECT_EQ(shown("email"), "");
}

TEST_F(ModelBridgeTest, only_inputs_can_be_set) {
  assign("count", 12);
  assign("title", "Other");
  turn();
  EXPECT_EQ(model->count(), 0);
  EXPECT_EQ(shown("count"), 0);
  EXPECT_EQ(shown("title"), "Sign In");
}

TEST_F(ModelBridgeTest, an_action_tells_whether_it_is_enabled_and_does_nothing_if_not) {
  QSignalSpy changes(action("signIn"), &ActionBridge::enabledChanged);
  EXPECT_FALSE(action("signIn")->enabled());
  EXPECT_FALSE(action("signIn")->trigger());
  EXPECT_EQ(model->count(), 0);
  assign("email", "ann@example.com");
  turn();
  EXPECT_TRUE(action("signIn")->enabled());
  EXPECT_EQ(changes.count(), 1);
  EXPECT_TRUE(action("signIn")->trigger());
  EXPECT_EQ(model->count(), 1);
}

TEST_F(ModelBridgeTest, an_action_takes_its_arguments_and_refuses_others) {
  EXPECT_FALSE(action("add")->trigger("a"));
  EXPECT_FALSE(action("add")->trigger(1, "a"));
  EXPECT_TRUE(action("add")->trigger("a", 2.0));
  EXPECT_EQ(model->entries(), (std::vector<Entry>{{"a", 2}}));
}

TEST_F(ModelBridgeTest, a_list_is_one_model_whose_rows_are_kept_by_their_id) {
  KeyedListModel* const entries = list("entries");
  model->entries = {{"a", 1}, {"b", 2}};
  turn();
  ASSERT_EQ(list("entries"), entries);
  QSignalSpy inserted(entries, &QAbstractItemModel::rowsInserted);
  QSignalSpy changed(entries, &QAbstractItemModel::dataChanged);
  model->entries = {{"a", 1}, {"b", 3}};
  turn();
  EXPECT_EQ(inserted.count(), 0);
  ASSERT_EQ(changed.count(), 1);
  EXPECT_EQ(changed.front().front().toModelIndex().row(), 1);
  EXPECT_EQ(entries->at(1).toMap().value("count"), 3);
}

TEST_F(ModelBridgeTest, a_part_is_a_bridge_or_null) {
  EXPECT_EQ(nested("part"), nullptr);
  model->part.put(std::make_shared<Child>());
  turn();
  ModelBridge* const part = nested("part");
  ASSERT_NE(part, nullptr);
  EXPECT_EQ(part->value("name"), "first");
  model->part.put(nullptr);
  turn();
  EXPECT_EQ(nested("part"), nullptr);
}

TEST_F(ModelBridgeTest, rows_are_an_empty_list_at_first_and_their_keys_may_be_anything) {
  ASSERT_NE(list("rows"), nullptr);
  EXPECT_EQ(list("rows")->count(), 0);
  model->rows.assign({{"Child", std::make_shared<Child>()}});
  turn();
  ASSERT_NE(list("rows"), nullptr);
  EXPECT_EQ(list("rows")->count(), 1);
}

TEST_F(ModelBridgeTest, rows_keep_their_bridge_while_their_object_exists) {
  const auto a = std::make_shared<Child>();
  const auto b = std::make_shared<Child>();
  model->rows.assign({{"a", a}, {"b", b}});
  turn();
  const auto* const bridgeOfB = asBridge(list("rows")->at(1));
  model->rows.assign({{"b", b}});
  turn();
  ASSERT_EQ(list("rows")->count(), 1);
  EXPECT_EQ(asBridge(list("rows")->at(0)), bridgeOfB);
  model->rows.assign({});
  turn();
  EXPECT_EQ(list("rows")->count(), 0);
}

TEST_F(ModelBridgeTest, the_sheet_is_what_is_presented_over_the_screen_but_not_what_replaces_it) {
  model->inPlace.present(true);
  turn();
  EXPECT_NE(nested("inPlace"), nullptr);
  EXPECT_EQ(nested("sheet"), nullptr);
  model->showChild = true;
  turn();
  EXPECT_NE(nested("sheet"), nullptr);
  EXPECT_EQ(nested("sheet"), nested("showChild"));
  bridge.dismissSheet();
  EXPECT_FALSE(model->showChild());
  turn();
  EXPECT_EQ(nested("sheet"), nullptr);
  EXPECT_NE(nested("inPlace"), nullptr);
}

TEST_F(ModelBridgeTest, a_screen_that_presents_no_pages_has_no_page) {
  EXPECT_FALSE(bridge.contains("page"));
  bridge.dismissPage();
  bridge.setPagesBeside(true);
}

TEST_F(DeskBridge, a_page_is_no_sheet) {
  EXPECT_TRUE(bridge.contains("page"));
  EXPECT_EQ(nested("page"), nullptr);
  model->second = true;
  turn();
  EXPECT_NE(nested("page"), nullptr);
  EXPECT_EQ(nested("page"), nested("second"));
  EXPECT_EQ(nested("sheet"), nullptr);
  model->over = true;
  turn();
  EXPECT_EQ(nested("sheet"), nested("over"));
  EXPECT_EQ(nested("page"), nested("second"));

  bridge.dismissPage();
  EXPECT_FALSE(model->second());
  EXPECT_TRUE(model->over());
  bridge.dismissSheet();
  turn();
  EXPECT_FALSE(model->over());
  EXPECT_EQ(nested("page"), nullptr);
}

TEST_F(DeskBridge, tells_the_model_where_its_pages_are_drawn) {
  EXPECT_FALSE(model->arePagesBeside());
  bridge.setPagesBeside(true);
  EXPECT_TRUE(model->arePagesBeside());
  model->first = true;
  turn();
  const auto* const first = nested("page");
  model->second = true;
  turn();
  EXPECT_NE(nested("page"), first);
  EXPECT_EQ(nested("page"), nested("second"));
  bridge.setPagesBeside(false);
  EXPECT_FALSE(model->arePagesBeside());
}

TEST_F(ModelBridgeTest, a_sheet_cannot_be_overwritten_from_outside) {
  model->showChild = true;
  turn();
  assign("showChild", 3);
  turn();
  EXPECT_TRUE(model->showChild());
  EXPECT_NE(nested("showChild"), nullptr);
}

TEST_F(ModelBridgeTest, a_dismissed_model_is_released_at_once_and_its_bridge_keeps_the_last_values) {
  model->showChild = true;
  turn();
  const std::weak_ptr<ObservableObject> child = nested("sheet")->model();
  const QPointer<ModelBridge> sheet = nested("sheet");
  auto* const leave = sheet->value("leave").value<ActionBridge*>();
  EXPECT_TRUE(leave->trigger());
  turn();
  EXPECT_TRUE(child.expired());
  ASSERT_FALSE(sheet.isNull());
  EXPECT_EQ(sheet->value("name"), "first");
  EXPECT_FALSE(leave->trigger());
  sheet->setProperty("name", "other");
  EXPECT_EQ(sheet->value("name"), "first");
}

TEST_F(ModelBridgeTest, presenting_again_creates_a_new_bridge) {
  model->showChild = true;
  turn();
  const auto* const first = nested("sheet");
  model->showChild = false;
  turn();
  model->showChild = true;
  turn();
  EXPECT_NE(nested("sheet"), first);
}

TEST_F(ModelBridgeTest, a_row_has_no_bridge_before_a_view_asks_for_it) {
  const auto bridges = [this] { return bridge.findChildren<ModelBridge*>().size(); };
  model->rows.assign({{"a", std::make_shared<Child>()}, {"b", std::make_shared<Child>()}});
  turn();
  EXPECT_EQ(bridges(), 0);
  ASSERT_NE(asBridge(list("rows")->at(1)), nullptr);
  EXPECT_EQ(bridges(), 1);
  EXPECT_EQ(asBridge(list("rows")->at(1))->value("name"), "first");
  EXPECT_EQ(bridges(), 1);
}

TEST_F(ModelBridgeTest, the_rows_that_a_filter_shows_are_in_their_order_even_while_held) {
  const auto named = [](const char* name) {
    const auto child = std::make_shared<Child>();
    child->name = name;
    return std::pair(std::string(name), child);
  };
  model->rows.assign({named("anna"), named("bob"), named("hanna")});
  turn();
  list("found")->setHeld(true);
  assign("filterText", "bob");
  turn();
  EXPECT_EQ(list("found")->count(), 1);
  assign("filterText", "");
  turn();
  ASSERT_EQ(list("found")->count(), 3);
  EXPECT_EQ(asBridge(list("found")->at(0))->value("name"), "anna");
}

TEST_F(ModelBridgeTest, a_key_performs_its_action_while_that_is_enabled) {
  EXPECT_EQ(action("reload")->key(), "F5");
  EXPECT_EQ(action("signIn")->key(), "");
  EXPECT_EQ(action("add")->key(), "");
  EXPECT_FALSE(bridge.pressKey(Qt::Key_F5, Qt::NoModifier)) << "there is no email yet";
  model->email = "a@b.example";
  EXPECT_TRUE(bridge.pressKey(Qt::Key_F5, Qt::NoModifier));
  EXPECT_EQ(model->count(), 1);
  EXPECT_TRUE(bridge.pressKey(Qt::Key_R, Qt::ControlModifier));
  EXPECT_EQ(model->count(), 2);
  EXPECT_TRUE(bridge.pressKey(Qt::Key_7, Qt::ControlModifier | Qt::KeypadModifier));
  EXPECT_EQ(model->count(), 6);
  EXPECT_FALSE(bridge.pressKey(Qt::Key_R, Qt::NoModifier));
  EXPECT_FALSE(bridge.pressKey(Qt::Key_Control, Qt::ControlModifier));
  EXPECT_FALSE(bridge.pressKey(Qt::Key_Escape, Qt::NoModifier));
}

}  // namespace
}  // namespace quillmar::ui
