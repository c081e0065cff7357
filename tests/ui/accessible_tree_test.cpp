#include <gtest/gtest.h>

#include <QAccessible>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSet>
#include <algorithm>
#include <functional>
#include <string>

#include "identity/login_view.h"
#include "tests/ui/support/scene_walk.h"

// The window's accessibility tree, walked from the root as a screen reader does.
namespace quillmar::ui {
namespace {

using Visit = std::function<void(QAccessibleInterface&)>;

void walk(QAccessibleInterface& node, const Visit& visit) {
  if (node.state().invisible) {
    return;
  }
  visit(node);
  for (int i = 0; i < node.childCount(); ++i) {
    if (auto* const child = node.child(i)) {
      walk(*child, visit);
    }
  }
}

void walkWindow(const UiStage& stage, const Visit& visit) {
  auto* const window = QAccessible::queryAccessibleInterface(&stage.window());
  ASSERT_NE(window, nullptr);
  walk(*window, visit);
}

QSet<QString> heardNames(const UiStage& stage) {
  QSet<QString> names;
  walkWindow(stage, [&](QAccessibleInterface& node) { names.insert(node.text(QAccessible::Name)); });
  return names;
}

bool saysWhatItIs(QAccessible::Role role) {
  static const QSet<QAccessible::Role> roles{
      QAccessible::Dialog,     QAccessible::PopupMenu,    QAccessible::MenuItem,    QAccessible::Button,
      QAccessible::ButtonMenu, QAccessible::ListItem,     QAccessible::RadioButton, QAccessible::CheckBox,
      QAccessible::PageTab,    QAccessible::EditableText, QAccessible::Window,      QAccessible::Graphic};
  return roles.contains(role);
}

class AccessibleTree : public testing::TestWithParam<Shot> {
 protected:
  void SetUp() override { QAccessible::setActive(true); }
  void TearDown() override { QAccessible::setActive(false); }
};

TEST_P(AccessibleTree, names_what_is_topmost_and_nothing_under_it) {
  UiStage stage({.stored = GetParam().stored});
  play(stage, GetParam());
  const QQuickItem& front = frontOf(stage);
  int heard = 0;
  walkWindow(stage, [&](QAccessibleInterface& node) {
    const auto name = node.text(QAccessible::Name);
    EXPECT_TRUE(!saysWhatItIs(node.role()) || !name.isEmpty()) << "a nameless " << node.role();
    if (const auto* const item = qobject_cast<QQuickItem*>(node.object())) {
      EXPECT_TRUE(item == &front || front.isAncestorOf(item))
          << name.toStdString() << " is under what is in front";
      ++heard;
    }
  });
  EXPECT_GT(heard, 0);
}

TEST_P(AccessibleTree, exposes_no_hidden_password) {
  UiStage stage({.stored = GetParam().stored});
  play(stage, GetParam());
  QSet<QString> secrets;
  forEachShown(*stage.window().contentItem(), [&](const QQuickItem& item) {
    const bool isHidden = item.inherits("QQuickTextInput") && item.property("echoMode").toInt() != 0;
    if (const QString text = item.property("text").toString(); isHidden && !text.isEmpty()) {
      secrets.insert(text);
    }
  });
  walkWindow(stage, [&](QAccessibleInterface& node) {
    QStringList told;
    for (const auto kind :
         {QAccessible::Name, QAccessible::Description, QAccessible::Value, QAccessible::Help}) {
      told.append(node.text(kind));
    }
    if (auto* const letters = node.textInterface()) {
      told.append(letters->text(0, letters->characterCount()));
    }
    for (const auto& secret : secrets) {
      EXPECT_FALSE(told.join(u' ').contains(secret)) << node.text(QAccessible::Name).toStdString();
    }
  });
}

INSTANTIATE_TEST_SUITE_P(Scenes, AccessibleTree, testing::ValuesIn(scenes()), [](const auto& scene) {
  std::string name = scene.param.name;
  std::ranges::replace(name, '-', '_');
  return name;
});

const Shot& sceneCalled(const std::string& name) {
  static const auto all = scenes();
  return *std::ranges::find(all, name, &Shot::name);
}

TEST(AccessibleWindow, reads_bullets_until_a_password_is_shown) {
  UiStage stage({.stored = sceneCalled("login").stored});
  stage.application.screen<LoginView>().password = std::string("hunter2");
  stage.settle();
  auto* const box = QAccessible::queryAccessibleInterface(stage.control("Password"));
  ASSERT_NE(box, nullptr);
  EXPECT_TRUE(box->state().passwordEdit);
  EXPECT_EQ(box->text(QAccessible::Value), QString(7, QChar(0x2022)));
  EXPECT_EQ(box->textInterface()->text(0, 7), QString(7, QChar(0x2022)));
  EXPECT_EQ(box->textInterface()->characterCount(), 7);
  stage.focusOn("Show password");
  stage.press(Qt::Key_Return);
  EXPECT_FALSE(box->state().passwordEdit);
  EXPECT_EQ(box->textInterface()->text(0, 7), "hunter2");
}

TEST(AccessibleWindow, reads_a_child_its_devices_and_their_online_state) {
  const Shot& shot = sceneCalled("dashboard");
  UiStage stage({.stored = shot.stored});
  play(stage, shot);
  const auto heard = heardNames(stage);
  for (const char* const name :
       {"Mia, 5 devices, 2 online", "Mia's phone, Online", "Tablet, Offline", "Menu"}) {
    EXPECT_TRUE(heard.contains(name)) << name;
  }
}

TEST(AccessibleWindow, reads_the_title_of_a_sheet) {
  for (const auto& [scene, title] :
       {std::pair("add-child", "Add Child"), std::pair("parent-settings", "Settings")}) {
    const Shot& shot = sceneCalled(scene);
    UiStage stage({.stored = shot.stored});
    play(stage, shot);
    QStringList dialogs;
    walkWindow(stage, [&](QAccessibleInterface& node) {
      if (node.role() == QAccessible::Dialog) {
        dialogs.append(node.text(QAccessible::Name));
      }
    });
    EXPECT_EQ(dialogs, QStringList{title});
  }
}

}  // namespace
}  // namespace quillmar::ui
