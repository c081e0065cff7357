#include <gtest/gtest.h>

#include <QAccessible>
#include <QQuickItem>
#include <QQuickWindow>
#include <string>

#include "testing/ui/parent_stage.h"

// Entering the code of a child's device by hand.
namespace quillmar::ui {
namespace {

struct TypedCode : testing::Test {
  TypedCode() : stage({.stored = signedInParent(), .size = {390, 1200}}) {
    openScanner(stage, CameraState::available);
    http().answerAlways("POST", "/enrollment/complete", 200,
                        R"({"message":"done","device":)" + deviceJson("d9", "Laptop", "linux", false) +
                            R"(,"doh_endpoint":"https://dns.example/d9"})");
  }
  UiStage stage;

  ScriptedHttpSession& http() { return stage.application.machine.http; }
  ScannerView& scanner() { return stage.application.screen<ScannerView>(); }
  std::string sent() {
    const auto requests = http().requests("POST", "/enrollment/complete");
    return requests.empty() ? "nothing" : requests.back().body.value_or("");
  }
};

TEST_F(TypedCode, by_mouse) {
  stage.click("Enter Code");
  ASSERT_EQ(stage.focusedName(), "Enrollment Code");
  EXPECT_FALSE(stage.control("Continue")->isEnabled()) << "there is no code yet";
  stage.type("K7QX2M");
  stage.click("Continue");
  EXPECT_TRUE(stage.shows("Code Entered"));
  EXPECT_EQ(sent(), "nothing");
  stage.click("Complete Enrollment");
  EXPECT_EQ(sent(), R"({"enrollment_code":"K7QX2M","device_name":"","child_id":"c1"})");
  EXPECT_TRUE(stage.shows("Device Enrolled!"));
}

TEST_F(TypedCode, by_keys_alone) {
  stage.tabTo("Enter Code");
  stage.press(Qt::Key_Space);
  ASSERT_EQ(stage.focusedName(), "Enrollment Code");
  stage.press(Qt::Key_Return);
  EXPECT_EQ(scanner().stage(), ScannerStage::typing) << "an empty code is none";
  stage.type(" k7 ");
  stage.press(Qt::Key_Tab);
  ASSERT_EQ(stage.focusedName(), "Device Name (optional)");
  stage.type("Laptop");
  stage.press(Qt::Key_Return);
  ASSERT_TRUE(stage.shows("Code Entered"));
  ASSERT_EQ(stage.focusedName(), "Device Name (optional)");
  stage.press(Qt::Key_Return);
  EXPECT_EQ(sent(), R"({"enrollment_code":" k7 ","device_name":"Laptop","child_id":"c1"})");
}

TEST_F(TypedCode, the_way_back_leads_to_the_camera) {
  stage.click("Enter Code");
  stage.type("K7");
  stage.click("Scan Again");
  EXPECT_EQ(scanner().stage(), ScannerStage::scanning);
  EXPECT_TRUE(stage.application.machine.qrReader.isRunning());
}

TEST_F(TypedCode, a_screen_reader_hears_where_the_code_is_found) {
  stage.click("Enter Code");
  auto* const field = QAccessible::queryAccessibleInterface(stage.focused());
  ASSERT_NE(field, nullptr);
  EXPECT_EQ(field->role(), QAccessible::EditableText);
  EXPECT_EQ(field->text(QAccessible::Description),
            "Type the code that stands under the QR code on the child's device.");
}

}  // namespace
}  // namespace quillmar::ui
