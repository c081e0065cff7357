#include "console/edit_child_name_view.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "testing/test_application.h"

namespace quillmar {
namespace {

struct Presenter final : ObservableObject {
  explicit Presenter(Environment& environment)
      : ObservableObject("Presenter"), sheet(*this, "sheet", [this, &environment] {
          return std::make_shared<EditChildNameView>(environment, "Mia", [this](const std::string& name) {
            wasUpAtSaving.push_back(sheet());
            saved.push_back(name);
          });
        }) {}

  Sheet<EditChildNameView> sheet;
  std::vector<std::string> saved;
  std::vector<bool> wasUpAtSaving;
};

struct EditChildName : testing::Test {
  EditChildName() { presenter.sheet = true; }

  TestApplication app;
  Presenter presenter{app.environment()};
  EditChildNameView& screen() { return *presenter.sheet; }
  using Names = std::vector<std::string>;
};

TEST_F(EditChildName, shows_the_current_name_on_appearing) {
  EditChildNameView unseen(app.environment(), "Mia", [](const std::string&) {});
  EXPECT_EQ(unseen.name(), "");
  EXPECT_EQ(screen().name(), "Mia");
  EXPECT_EQ(screen().currentName(), "Mia");
}

TEST_F(EditChildName, an_emptied_field_cannot_be_saved) {
  screen().name = "";
  EXPECT_FALSE(screen().save.isEnabled());
  EXPECT_FALSE(screen().save());
  EXPECT_TRUE(presenter.sheet());
  EXPECT_TRUE(presenter.saved.empty());
}

TEST_F(EditChildName, cancel_dismisses_without_saving) {
  screen().name = "Other";
  screen().cancel();
  EXPECT_FALSE(presenter.sheet());
  EXPECT_TRUE(presenter.saved.empty());
}

TEST_F(EditChildName, save_passes_on_the_name_before_dismissing) {
  screen().name = "Zoe";
  screen().save();
  EXPECT_EQ(presenter.saved, Names{"Zoe"});
  EXPECT_EQ(presenter.wasUpAtSaving, std::vector{true});
  EXPECT_FALSE(presenter.sheet());
}

TEST_F(EditChildName, an_unchanged_name_and_blanks_are_saved_unchanged) {
  screen().save();
  presenter.sheet = true;
  screen().name = "  ";
  screen().save();
  EXPECT_EQ(presenter.saved, (Names{"Mia", "  "}));
}

TEST_F(EditChildName, sends_nothing_itself) {
  screen().save();
  app.settle();
  EXPECT_TRUE(app.machine.http.requests().empty());
}

TEST_F(EditChildName, the_texts_are_exact) {
  EXPECT_EQ(screen().title(), "Edit Name");
  EXPECT_EQ(screen().cancelTitle(), "Cancel");
  EXPECT_EQ(screen().saveTitle(), "Save");
  EXPECT_EQ(screen().nameSection(), "Child Name");
  EXPECT_EQ(screen().nameLabel(), "Name");
}

}  // namespace
}  // namespace quillmar
