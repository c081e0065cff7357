#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "console/add_child_view.h"
#include "console/child_detail_view.h"
#include "console/edit_child_name_view.h"
#include "tests/journeys/people.h"

namespace quillmar {
namespace {

using testing::ElementsAre;

enum class Wire { http1, http2 };

// A parent whose requests reach the service but whose answers are lost: the connection closes after the
// service has handled the call.
class LostAnswers : public testing::TestWithParam<Wire> {
 protected:
  LostAnswers() {
    parent.chooseRole();
    parent.signUp("Ann Fielding", "ann@example.com");
    parent.addChild("Mia");
    parent.press(parent.dashboard().loadChildren);
    service->clearRequests();
  }

  // More losses than any client would retry.
  void loseAnswers() {
    sandbox::Misbehaviour dropping;
    dropping.dropCount = 100;
    dropping.onlyPath = "/children";
    service->misbehave(dropping);
  }
  void behave() { service->misbehave({}); }

  std::vector<std::string> children() {
    behave();
    parent.press(parent.dashboard().loadChildren);
    std::vector<std::string> names;
    for (std::size_t i = 0; i < parent.dashboard().cards.size(); ++i) {
      names.push_back(parent.dashboard().cards[i].name());
    }
    return names;
  }
  ChildDetailView& pageOfMia() {
    parent.press(parent.card().tap);
    return parent.screen<ChildDetailView>();
  }
  std::string pathOfMia() { return "/api/v1/children/" + parent.card().child().id; }

  SharedTime time;
  RealService service{time.clock()};
  Parent parent{GetParam() == Wire::http2 ? service.network() : service.plainNetwork(), time};
};

constexpr const char* lost = "The network connection was lost.";

TEST_P(LostAnswers, one_tap_creates_one_child) {
  parent.press(parent.dashboard().addChild);
  auto& form = *parent.dashboard().showAddChild;
  form.name = std::string("Zoe");
  loseAnswers();
  parent.press(form.createChildProfile);
  EXPECT_TRUE(form.errorAlert.isShown());
  EXPECT_EQ(form.errorAlert.message(), lost);
  EXPECT_EQ(service.count("POST", "/api/v1/children"), 1);
  parent.press(form.errorAlert.dismiss);
  parent.press(form.cancel);
  EXPECT_THAT(children(), ElementsAre("Mia", "Zoe"));
}

TEST_P(LostAnswers, a_name_is_sent_once) {
  auto& page = pageOfMia();
  parent.press(page.editName);
  auto& form = *page.showEditName;
  form.name = std::string("Amelia");
  const std::string path = pathOfMia();
  loseAnswers();
  parent.press(form.save);
  EXPECT_EQ(service.count("PUT", path), 1);
}

TEST_P(LostAnswers, a_deletion_is_sent_once_and_is_not_a_success) {
  auto& page = pageOfMia();
  const std::string path = pathOfMia();
  parent.press(page.deleteProfile);
  loseAnswers();
  parent.press(page.deletionConfirmation.confirm);
  EXPECT_EQ(service.count("DELETE", path), 1);
  EXPECT_EQ(page.errorAlert.message(), lost);
}

TEST_P(LostAnswers, the_children_are_requested_once_more_and_not_again) {
  loseAnswers();
  parent.press(parent.dashboard().loadChildren);
  EXPECT_EQ(service.count("GET", "/api/v1/children"), 2);
  EXPECT_EQ(parent.dashboard().cards.size(), 0U) << "no answer came";
}

INSTANTIATE_TEST_SUITE_P(Wires, LostAnswers, testing::Values(Wire::http1, Wire::http2),
                         [](const auto& test) { return test.param == Wire::http1 ? "http1" : "http2"; });

}  // namespace
}  // namespace quillmar
