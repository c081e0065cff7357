#include <gtest/gtest.h>

#include <QQuickItem>
#include <QQuickWindow>
#include <string>

#include "console/link_device_view.h"
#include "testing/ui/parent_stage.h"

namespace quillmar::ui {
namespace {

using Pointer = UiStage::Pointer;

struct LinkSheet : testing::Test {
  UiStage stage{{.stored = signedInParent()}};

  LinkSheet() {
    openChild(stage).devicesSection.linkDevice();
    stage.settle();
    http().forgetRequests();
    http().answerAlways("POST", "/children/c1/devices", 200, "{}");
    http().answerAlways("DELETE", "/devices/d7", 200, "{}");
  }
  ScriptedHttpSession& http() { return stage.application.machine.http; }
  LinkDeviceView& sheet() { return stage.application.screen<LinkDeviceView>(); }
  bool isUp() { return stage.application.find<LinkDeviceView>() != nullptr; }
  std::vector<std::string> changes() { return http().changes(); }
  QQuickItem& row(const QString& name) { return stage.requiredControl(name); }
};

class LinkSheetGesture : public LinkSheet, public testing::WithParamInterface<Pointer> {
 protected:
  void drag(int way) { stage.drag(GetParam(), middleOf(row("Old phone")), {way, 0}); }
};

TEST_P(LinkSheetGesture, a_swipe_offers_to_delete_and_asks_first) {
  drag(-81);
  ASSERT_TRUE(stage.shows("Delete"));
  EXPECT_FALSE(stage.shows("Delete Device?"));
  EXPECT_EQ(changes(), std::vector<std::string>());
  stage.drag(GetParam(), middleOf(*stage.find("Delete")), {0, 0});
  EXPECT_TRUE(stage.shows("Delete Device?"));
  EXPECT_EQ(sheet().deviceToDelete()->id, "d7");
  EXPECT_EQ(sheet().deviceRows[0].offset(), 0) << "the row stayed open";
  EXPECT_EQ(changes(), std::vector<std::string>());
}

TEST_P(LinkSheetGesture, a_swipe_that_is_too_short_or_the_wrong_way_does_nothing) {
  for (const int way : {-80, 120}) {
    drag(way);
    EXPECT_FALSE(stage.shows("Delete"));
  }
  EXPECT_EQ(changes(), std::vector<std::string>());
  EXPECT_TRUE(isUp()) << "a drag is no tap";
}

TEST_P(LinkSheetGesture, a_tap_closes_an_open_row_and_links_a_closed_one) {
  drag(-120);
  stage.drag(GetParam(), middleOf(row("Old phone")), {0, 0});
  EXPECT_FALSE(stage.shows("Delete"));
  EXPECT_EQ(changes(), std::vector<std::string>());
  stage.drag(GetParam(), middleOf(row("Old phone")), {0, 0});
  EXPECT_EQ(changes().size(), 1U);
  EXPECT_FALSE(isUp());
}

INSTANTIATE_TEST_SUITE_P(Pointers, LinkSheetGesture, testing::Values(Pointer::mouse, Pointer::finger));

TEST_F(LinkSheet, a_row_is_a_button_for_the_keyboard) {
  stage.tabTo("Old phone");
  stage.press(Qt::Key_Delete);
  ASSERT_TRUE(stage.shows("Delete Device?"));
  stage.press(Qt::Key_Escape);
  EXPECT_EQ(stage.focusedName(), "Old phone");
  EXPECT_EQ(changes(), std::vector<std::string>());
  stage.press(Qt::Key_Return);
  EXPECT_EQ(changes().size(), 1U);
  EXPECT_FALSE(isUp());
}

TEST_F(LinkSheet, the_space_bar_chooses_a_row) {
  stage.tabTo("Living room TV");
  stage.press(Qt::Key_Space);
  EXPECT_FALSE(isUp());
}

TEST_F(LinkSheet, the_action_of_a_swipe_is_also_a_button_and_a_menu_item) {
  stage.clickAt(middleOf(*stage.control("Delete Old phone")));
  ASSERT_TRUE(stage.shows("Delete Device?"));
  stage.click("Cancel");
  stage.tabTo("Old phone");
  stage.press(Qt::Key_Menu);
  ASSERT_TRUE(stage.shows("Delete"));
  stage.press(Qt::Key_Down);
  stage.press(Qt::Key_Return);
  EXPECT_TRUE(stage.shows("Delete Device?"));
}

TEST_F(LinkSheet, the_list_keeps_the_focus_when_a_device_is_deleted) {
  stage.tabTo("Old phone");
  stage.press(Qt::Key_Delete);
  stage.click("Delete");
  EXPECT_EQ(changes(), std::vector<std::string>{"DELETE /devices/d7"});
  ASSERT_FALSE(stage.control("Old phone"));
  EXPECT_EQ(stage.focusedName(), "Living room TV");
}

// A name and a type that are each as long as the row.
TEST(LinkSheetTexts, both_the_name_and_the_type_keep_their_room) {
  for (const int letters : {60, 65000}) {
    UiStage stage({.stored = signedInParent()});
    showFamily(stage);
    const std::string name = "Name" + std::string(static_cast<std::size_t>(letters), 'w');
    const std::string type = "type" + std::string(static_cast<std::size_t>(letters), 'm');
    stage.application.machine.http.answerAlways(
        "GET", "/children", 200,
        R"({"children":[],"unassigned_devices":[)" + deviceJson("d7", name, type, true) + "]}");
    dashboard(stage).cards[0].tap();
    stage.settle();
    stage.application.screen<ChildDetailView>().devicesSection.linkDevice();
    stage.settle();
    ASSERT_EQ(stage.application.screen<LinkDeviceView>().deviceRows.size(), 1U);
    int found = 0;
    forEachShown(*stage.window().contentItem(), [&](const QQuickItem& item) {
      const QString text = item.property("text").toString();
      if (item.inherits("QQuickText") && (text.startsWith("Namew") || text.startsWith("Typem"))) {
        EXPECT_GT(item.width(), 150) << text.left(10).toStdString();
        EXPECT_LT(item.height(), 60) << text.left(10).toStdString();
        EXPECT_LT(item.mapToScene({item.width(), 0}).x(), 340) << "it runs over the button";
        ++found;
      }
    });
    EXPECT_EQ(found, 2);
  }
}

}  // namespace
}  // namespace quillmar::ui
