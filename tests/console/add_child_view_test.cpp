#include "console/add_child_view.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "console/device_list_view.h"
#include "tests/console/console_test.h"

namespace quillmar {
namespace {

using namespace std::chrono_literals;

struct AddChild : testing::Test {
  AddChild() {
    app.machine.http.answerAlways("GET", "/children", 200, "{}");
    app.machine.http.answerAlways("POST", "/children", 200, jsonOf(makeChild("c1", "Mia")));
    app.settle();
    app.screen<DeviceListView>().addChild();
  }

  AddChildView& screen() { return app.screen<AddChildView>(); }
  bool isUp() { return app.find<AddChildView>() != nullptr; }
  std::size_t creations() { return app.machine.http.count("POST", "/children"); }
  std::string lastBody() { return *app.machine.http.requests("POST", "/children").back().body; }
  void create() {
    screen().createChildProfile();
    app.settle();
  }

  TestApplication app{asSignedInParent()};
};

TEST_F(AddChild, begins_empty_and_sends_nothing) {
  EXPECT_EQ(screen().name(), "");
  EXPECT_EQ(screen().birthYear(), "");
  EXPECT_FALSE(screen().isLoading());
  EXPECT_FALSE(screen().errorAlert.isShown());
  EXPECT_EQ(screen().errorAlert.message(), "");
  app.advance(1min);
  EXPECT_EQ(creations(), 0U);
}

TEST_F(AddChild, create_is_disabled_without_a_name) {
  screen().birthYear = "2015";
  EXPECT_FALSE(screen().createChildProfile.isEnabled());
  EXPECT_FALSE(screen().createChildProfile());
  app.settle();
  EXPECT_EQ(creations(), 0U);
  EXPECT_FALSE(screen().isLoading());
}

TEST_F(AddChild, cancel_dismisses_and_sends_nothing) {
  screen().name = "Mia";
  screen().cancel();
  app.settle();
  EXPECT_FALSE(isUp());
  EXPECT_EQ(creations(), 0U);
}

TEST_F(AddChild, sends_the_name_unchanged_and_no_photo) {
  for (const std::string name : {"  ", " Mia ", "Zoë 👨‍👩‍👧"}) {
    app.machine.http.fail("POST", "/children", TransportError::Kind::timedOut);
    screen().name = name;
    create();
    EXPECT_EQ(lastBody(), R"({"name":")" + name + R"("})");
  }
}

TEST_F(AddChild, a_year_is_sent_only_if_it_is_a_whole_number) {
  struct Row {
    std::string text;
    std::string sent;
  };
  for (const auto& row : std::vector<Row>{{"2015", R"(,"birth_year":2015)"},
                                          {"1850", R"(,"birth_year":1850)"},
                                          {"3000", R"(,"birth_year":3000)"},
                                          {"-5", R"(,"birth_year":-5)"},
                                          {"+7", R"(,"birth_year":7)"},
                                          {"007", R"(,"birth_year":7)"},
                                          {"9223372036854775807", R"(,"birth_year":9223372036854775807)"},
                                          {"9223372036854775808", ""},
                                          {"", ""},
                                          {"abc", ""},
                                          {" 2015", ""},
                                          {"2015 ", ""},
                                          {"20.15", ""},
                                          {"0x7DF", ""},
                                          {"٢٠١٥", ""},
                                          {"+", ""}}) {
    app.machine.http.fail("POST", "/children", TransportError::Kind::timedOut);
    screen().name = "Mia";
    screen().birthYear = row.text;
    create();
    EXPECT_EQ(lastBody(), R"({"name":"Mia")" + row.sent + "}") << row.text;
  }
}

TEST_F(AddChild, an_invalid_year_is_ignored_without_a_message) {
  screen().name = "Mia";
  screen().birthYear = "abc";
  create();
  EXPECT_EQ(creations(), 1U);
  EXPECT_FALSE(isUp());
}

TEST_F(AddChild, is_disabled_while_creating) {
  app.machine.http.hold("POST", "/children");
  screen().name = "Mia";
  EXPECT_EQ(screen().createTitle(), "Create Child Profile");
  create();
  EXPECT_TRUE(screen().isLoading());
  EXPECT_EQ(screen().createTitle(), "Creating...");
  EXPECT_FALSE(screen().createChildProfile());
  app.settle();
  EXPECT_EQ(creations(), 1U);
}

TEST_F(AddChild, a_created_child_is_logged_the_sheet_dismissed_and_the_dashboard_reloaded_once) {
  app.machine.log.clear();
  app.machine.http.forgetRequests();
  screen().name = "typed";
  create();
  EXPECT_THAT(app.machine.log.systemLines(),
              testing::Contains("[AddChildView] Child created successfully: Mia (id: c1)"));
  EXPECT_FALSE(isUp());
  EXPECT_EQ(app.machine.http.calls(), (std::vector<std::string>{"POST /children", "GET /children"}));
}

TEST_F(AddChild, never_runs_on_child_added) {
  int told = 0;
  const auto alone = std::make_shared<AddChildView>(app.environment(), [&] { ++told; });
  alone->name = "Mia";
  alone->createChildProfile();
  app.settle();
  EXPECT_EQ(creations(), 1U);
  EXPECT_EQ(told, 0);
}

TEST_F(AddChild, a_failure_keeps_the_sheet_and_the_input) {
  app.machine.http.answer("POST", "/children", 409, R"({"error":"Too many children"})");
  app.machine.log.clear();
  screen().name = "Mia";
  screen().birthYear = "2015";
  create();
  EXPECT_EQ(screen().errorAlert.message(), "Too many children");
  EXPECT_TRUE(screen().errorAlert.isShown());
  EXPECT_FALSE(screen().isLoading());
  EXPECT_EQ(screen().name(), "Mia");
  EXPECT_EQ(screen().birthYear(), "2015");
  for (const auto& line : app.machine.log.printed()) {
    EXPECT_TRUE(line.starts_with("[NetworkService]")) << line;
  }
  screen().errorAlert.dismiss();
  EXPECT_FALSE(screen().errorAlert.isShown());
  EXPECT_TRUE(screen().createChildProfile.isEnabled());
}

TEST_F(AddChild, an_incomplete_record_is_a_failure) {
  app.machine.http.answer("POST", "/children", 200, R"({"id":"c1"})");
  screen().name = "Mia";
  create();
  EXPECT_EQ(screen().errorAlert.message(), "The data couldn’t be read because it is missing.");
  EXPECT_TRUE(isUp());
}

TEST_F(AddChild, an_answer_after_cancelling_is_dropped) {
  app.machine.http.hold("POST", "/children");
  screen().name = "Mia";
  create();
  app.machine.log.clear();
  screen().cancel();
  app.machine.http.releaseAll();
  app.settle();
  EXPECT_FALSE(isUp());
  EXPECT_THAT(app.machine.log.systemLines(),
              testing::Not(testing::Contains("[AddChildView] Child created successfully: Mia (id: c1)")));
}

TEST_F(AddChild, the_texts_are_exact) {
  EXPECT_EQ(screen().title(), "Add Child");
  EXPECT_EQ(screen().cancelTitle(), "Cancel");
  EXPECT_EQ(screen().section(), "Child Information");
  EXPECT_EQ(screen().nameLabel(), "Name");
  EXPECT_EQ(screen().birthYearLabel(), "Birth Year (optional)");
  EXPECT_EQ(screen().footer(), "You can add a photo and link devices after creating the profile.");
  EXPECT_EQ(screen().errorAlert.title(), "Error");
  EXPECT_EQ(screen().errorAlert.okTitle(), "OK");
}

}  // namespace
}  // namespace quillmar
