#include <gtest/gtest.h>

#include <QQuickItem>
#include <QQuickWindow>
#include <chrono>
#include <string>
#include <vector>

#include "foundation/json.h"
#include "testing/ui/parent_stage.h"
#include "ui/bridge/shown_text.h"

namespace quillmar::ui {
namespace {

// JSON, as the service sends it.
struct HostileText {
  const char* kind;
  std::string json;
};
void PrintTo(const HostileText& text, std::ostream* out) { *out << text.kind; }

std::vector<HostileText> hostileTexts() {
  return {{"markup", R"(<b>bold</b><img src=x onerror=alert(1)>&amp;<a href=\"https://x.example\">x</a>)"},
          {"direction marks", R"(a\u202Eelpmaxe\u202C.\u2066x\u2069\u200F\u061C.example)"},
          {"letters without a width", R"(a\u200B\u200C\u200D\u2060\uFEFF\u00ADb.example)"},
          {"control characters", R"(one\ntwo\r\nthree\t\u0001\u0007\u001b[31m\u2028four)"},
          {"one long word", std::string(65000, 'w') + ".example"},
          {"many words",
           [] {
             std::string words;
             for (int i = 0; i < 5000; ++i) {
               words += "word ";
             }
             return words;
           }()},
          {"piled up marks", std::string("Z") + [] {
             std::string marks;
             for (int i = 0; i < 500; ++i) {
               marks += R"(\u0335\u0489)";
             }
             return marks;
           }()}};
}

class HostileTextTest : public testing::TestWithParam<HostileText> {
 protected:
  // Every text stays in the window, is plain text, and has no bidi marks.
  static void check(UiStage& stage) {
    int texts = 0;
    forEachShown(*stage.window().contentItem(), [&](const QQuickItem& item) {
      if (!item.inherits("QQuickText")) {
        return;
      }
      const QString text = item.property("text").toString();
      const auto shown = text.left(60).toStdString();
      EXPECT_EQ(item.property("textFormat").toInt(), 0) << shown;
      EXPECT_EQ(text, editedText(text.toStdString())) << shown;
      EXPECT_GE(item.mapToScene({0, 0}).x(), -0.5) << shown;
      EXPECT_LE(item.mapToScene({item.width(), 0}).x(), stage.window().width() + 0.5) << shown;
      EXPECT_LE(item.property("contentWidth").toDouble(), item.width() + 0.5) << shown;
      ++texts;
    });
    EXPECT_GT(texts, 3);
    forEachShown(*stage.window().contentItem(), [&](const QQuickItem& item) {
      if (isButton(item) || item.activeFocusOnTab()) {
        EXPECT_LE(item.width(), stage.window().width()) << accessibleName(item).left(60).toStdString();
      }
    });
  }
  const std::string& text() const { return GetParam().json; }
  // As a person has it on the clipboard.
  std::string parsedText() const {
    return *parseJson("[\"" + text() + "\"]").value().list()->front().string();
  }
};

TEST_P(HostileTextTest, stays_in_the_cards_of_the_dashboard) {
  UiStage stage({.stored = signedInParent()});
  answerFamily(stage, R"({"children":[)" + childJson("c1", text(), deviceJson("d1", text(), "odd", true)) +
                          R"(],"unassigned_devices":[]})");
  dashboard(stage).loadChildren();
  stage.settle();
  ASSERT_EQ(dashboard(stage).cards.size(), 1U);
  check(stage);
  auto* const card = buttonAround(stage.control("Add Device")->parentItem());
  ASSERT_NE(card, nullptr);
  EXPECT_LT(card->height(), 400) << "the card grew with its text";
}

TEST_P(HostileTextTest, stays_in_the_rows_of_a_childs_page) {
  UiStage stage({.stored = signedInParent(), .size = {390, 2600}});
  const std::string mia = childJson(
      "c1", text(), deviceJson("d1", text(), "ios", true),
      R"(,"policy":{"id":"p1","child_id":"c1","family_id":"f","is_blocked":false,"block_mode":"blacklist","blocked_domains":[")" +
          text() + R"("],"allowed_domains":[")" + text() + R"("],"created_at":"c","updated_at":"u"})");
  answerFamily(stage, R"({"children":[)" + mia + R"(],"unassigned_devices":[]})");
  auto& http = stage.application.machine.http;
  http.answerAlways("GET", "/children/c1", 200, mia);
  const auto now = stage.application.machine.dispatch.now();
  http.answerAlways(
      "GET", "/devices/d1/logs", 200,
      R"({"logs":[)" + logJson(1, text(), true, now) + "," + logJson(2, "a" + text(), false, now) + "]}");
  dashboard(stage).loadChildren();
  stage.settle();
  dashboard(stage).cards[0].tap();
  stage.settle();
  stage.advance(std::chrono::seconds(2));
  auto& page = stage.application.screen<ChildDetailView>();
  ASSERT_GE(page.activitySection.recent.rows.size(), 1U);
  for (const auto tab :
       {ChildDetailTab::realTime, ChildDetailTab::sitesBlocked, ChildDetailTab::sitesAllowed}) {
    page.selectedTab = tab;
    stage.settle();
    check(stage);
  }
  page.deleteProfile();
  stage.settle();
  check(stage);
}

TEST_P(HostileTextTest, stays_in_the_rows_of_the_family) {
  UiStage stage({.stored = signedInParent(), .size = {390, 1400}});
  showFamily(stage);
  stage.application.machine.http.answerAlways(
      "GET", "/family", 200,
      R"({"family":{"id":"f","name":")" + text() +
          R"(","primary_parent_id":"p","created_at":"c","updated_at":"u"},"is_primary":true,"members":[{"id":"m2","family_id":"f","parent_id":"q","role":"member","display_name":")" +
          text() +
          R"(","can_manage_devices":true,"can_manage_policies":false,"is_active":true,"created_at":"c","email":")" +
          text() + R"("}],"pending_invitations":[]})");
  dashboard(stage).openFamilyMembers();
  stage.settle();
  auto& family = stage.application.screen<FamilyMembersView>();
  ASSERT_EQ(family.memberRows.size(), 1U);
  check(stage);
  family.memberRows[0].edit();
  stage.settle();
  check(stage);
}

// Pasted into the field by which a person finds a row.
TEST_P(HostileTextTest, stays_in_the_field_that_filters) {
  UiStage stage({.stored = signedInParent(), .size = {390, 1400}});
  showFamily(stage);
  const auto paste = [&](ListFilter& filter) {
    ASSERT_TRUE(filter.open());
    ASSERT_TRUE(filter.text.input(parsedText()));
    stage.settle();
    EXPECT_TRUE(filter.isActive());
    check(stage);
    filter.close();
    stage.settle();
    EXPECT_FALSE(stage.shows("No match"));
  };
  paste(dashboard(stage).filter);
  paste(openActivity(stage).filter);
}

TEST_P(HostileTextTest, stays_in_the_fields_of_a_typed_code) {
  UiStage stage({.stored = signedInParent(), .size = {390, 1400}});
  auto& scanner = openScanner(stage, CameraState::available);
  stage.click("Enter Code");
  EXPECT_TRUE(scanner.findMember("typedCode")->input(parsedText()));
  EXPECT_TRUE(scanner.findMember("deviceName")->input(parsedText()));
  stage.settle();
  check(stage);
  stage.click("Continue");
  EXPECT_TRUE(stage.shows("Code Entered"));
  check(stage);
}

INSTANTIATE_TEST_SUITE_P(Texts, HostileTextTest, testing::ValuesIn(hostileTexts()));

}  // namespace
}  // namespace quillmar::ui
