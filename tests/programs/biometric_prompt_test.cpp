#include "ui/biometric_prompt.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>
#include <algorithm>
#include <string>
#include <vector>

#include "testing/test_application.h"
#include "ui/adapters/desktop_settings.h"
#include "ui/adapters/qt_window_style.h"
#include "ui/window.h"

namespace quillmar::ui {
namespace {

const QString reason = QStringLiteral("Log in to Quillmar");

QQuickItem* search(QQuickItem& item, const QString& text) {
  if (!item.isVisible() || item.opacity() == 0) {
    return nullptr;
  }
  for (auto* const child : item.childItems()) {
    if (auto* const found = search(*child, text)) {
      return found;
    }
  }
  return item.property("text").toString() == text ? &item : nullptr;
}

bool isMade(const QQuickItem& item) {
  const auto children = item.childItems();
  return QByteArray(item.metaObject()->className()).startsWith("BiometricPrompt_") ||
         std::any_of(children.begin(), children.end(),
                     [](const QQuickItem* child) { return isMade(*child); });
}

// A parent's window with a fingerprint reader.
struct BiometricPromptTest : testing::Test {
  BiometricPromptTest() {
    window.show();
    window.quickWindow().requestActivate();
  }

  QQuickItem* find(const QString& text) { return search(*window.quickWindow().contentItem(), text); }
  bool comesUp(const QString& text) {
    return QTest::qWaitFor([&] { return find(text) != nullptr; });
  }
  bool goes(const QString& text) {
    return QTest::qWaitFor([&] { return find(text) == nullptr; });
  }
  void show() {
    prompt.setReason(reason.toStdString());
    ASSERT_TRUE(comesUp(reason));
  }
  void click(const QString& text) {
    // Layouts are final only after a frame is rendered.
    window.quickWindow().grabWindow();
    const auto* const item = find(text);
    ASSERT_TRUE(item) << text.toStdString();
    QTest::mouseClick(&window.quickWindow(), Qt::LeftButton, Qt::NoModifier,
                      item->mapToScene(item->boundingRect().center()).toPoint());
  }

  std::vector<std::string> answers;
  BiometricPrompt prompt{{.cancel = [this] { answers.emplace_back("cancel"); },
                          .enterPassword = [this] { answers.emplace_back("password"); }}};
  TestApplication application;
  DesktopSettings desktop;
  QtWindowStyle style{desktop};
  Window window{application.app().contentView(),
                application.machine.qrEncoder,
                style,
                {.stateFile = {}, .biometricPrompt = &prompt}};
};

TEST_F(BiometricPromptTest, nothing_is_created_before_the_reader_waits) {
  EXPECT_FALSE(prompt.shown());
  EXPECT_EQ(find("Enter Password"), nullptr);
  EXPECT_FALSE(isMade(*window.quickWindow().contentItem()));
  show();
  EXPECT_TRUE(isMade(*window.quickWindow().contentItem()));
}

TEST_F(BiometricPromptTest, the_reason_and_both_answers_are_shown_until_the_reader_stops) {
  show();
  EXPECT_TRUE(find("Cancel"));
  EXPECT_TRUE(find("Enter Password"));
  prompt.setReason(std::nullopt);
  EXPECT_TRUE(goes(reason));
  EXPECT_TRUE(answers.empty());
}

TEST_F(BiometricPromptTest, each_button_sends_its_answer_and_the_reader_hides_the_prompt) {
  show();
  click("Enter Password");
  EXPECT_EQ(answers, std::vector<std::string>{"password"});
  EXPECT_TRUE(prompt.shown());
  click("Cancel");
  EXPECT_EQ(answers, (std::vector<std::string>{"password", "cancel"}));
}

TEST_F(BiometricPromptTest, escape_cancels_and_return_chooses_the_password) {
  show();
  QTest::keyClick(&window.quickWindow(), Qt::Key_Escape);
  QTest::keyClick(&window.quickWindow(), Qt::Key_Return);
  EXPECT_EQ(answers, (std::vector<std::string>{"cancel", "password"}));
}

TEST_F(BiometricPromptTest, is_shown_again_for_the_next_check) {
  show();
  prompt.setReason(std::nullopt);
  ASSERT_TRUE(goes(reason));
  prompt.setReason("Something else");
  EXPECT_TRUE(comesUp("Something else"));
}

TEST(BiometricPrompt, keeps_its_texts_while_it_fades_out) {
  BiometricPrompt prompt({.cancel = [] {}, .enterPassword = [] {}});
  prompt.setReason(reason.toStdString());
  prompt.setReason(std::nullopt);
  EXPECT_FALSE(prompt.shown());
  EXPECT_EQ(prompt.reason(), reason);
}

}  // namespace
}  // namespace quillmar::ui
