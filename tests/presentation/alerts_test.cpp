#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "presentation/confirmation.h"
#include "presentation/error_alert.h"

namespace quillmar {
namespace {

using testing::ElementsAre;

struct Screen final : ObservableObject {
  Screen() : ObservableObject("Screen") {}

  ErrorAlert errorAlert{*this};
  Confirmation removal{
      *this, {.isShown = "showRemoval", .confirm = "confirmRemoval", .cancel = "cancelRemoval"}, [this] {
        diary.emplace_back(removal.isShown() ? "removed under the question" : "removed");
      }};

  std::vector<std::string> diary;
};

struct Alerts : testing::Test {
  const std::shared_ptr<Screen> screen = std::make_shared<Screen>();
};

TEST_F(Alerts, are_members_of_their_screen) {
  std::vector<std::string_view> names;
  for (const Member* member : screen->members()) {
    names.push_back(member->name());
  }
  EXPECT_THAT(names, ElementsAre("errorMessage", "showError", "errorTitle", "okTitle", "dismissError",
                                 "showRemoval", "confirmRemoval", "cancelRemoval"));
}

TEST_F(Alerts, show_their_message_until_dismissed) {
  EXPECT_FALSE(screen->errorAlert.dismiss()) << "there is nothing to dismiss";
  std::string told;
  const auto listening =
      screen->errorAlert.isShown.onChange([&] { told += screen->errorAlert.message() + "|"; });
  screen->errorAlert.show("The request timed out.");
  EXPECT_TRUE(screen->errorAlert.isShown());
  EXPECT_EQ(told, "The request timed out.|");
  EXPECT_TRUE(screen->errorAlert.dismiss());
  EXPECT_FALSE(screen->errorAlert.isShown());
  EXPECT_EQ(screen->errorAlert.message(), "The request timed out.") << "it is still drawn as it goes";
}

TEST_F(Alerts, ask_before_the_effect_runs) {
  EXPECT_FALSE(screen->removal.confirm()) << "nothing was asked";
  screen->removal.ask();
  EXPECT_TRUE(screen->removal.isShown());
  EXPECT_THAT(screen->diary, ElementsAre());
  EXPECT_TRUE(screen->removal.confirm());
  EXPECT_THAT(screen->diary, ElementsAre("removed"));
  EXPECT_FALSE(screen->removal.confirm()) << "once is enough";
}

TEST_F(Alerts, do_nothing_if_cancelled) {
  EXPECT_FALSE(screen->removal.cancel());
  screen->removal.ask();
  EXPECT_TRUE(screen->removal.cancel());
  EXPECT_FALSE(screen->removal.isShown());
  EXPECT_FALSE(screen->removal.confirm());
  EXPECT_THAT(screen->diary, ElementsAre());
}

}  // namespace
}  // namespace quillmar
