#include "family/home_network_view.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "testing/test_application.h"

namespace quillmar {
namespace {

using namespace std::chrono_literals;
using Names = std::vector<std::string>;
using Kind = TransportError::Kind;

const std::string path = "/home-network";
const std::string updatePath = "/home-network/update-ip";

std::string network(const std::string& updatedAt, const std::string& publicIP = R"("203.0.113.9")") {
  return R"({"id":"h1","parent_id":"p1","name":"Our Home","public_ip":)" + publicIP +
         R"(,"is_active":true,"created_at":"x","updated_at":")" + updatedAt + R"("})";
}

std::string policy(const std::string& blockMode, bool isBlocked, const std::string& blockedDomains) {
  return R"({"id":"q1","home_network_id":"h1","parent_id":"p1","is_blocked":)" +
         std::string(isBlocked ? "true" : "false") + R"(,"block_mode":")" + blockMode +
         R"(","blocked_domains":)" + blockedDomains +
         R"(,"allowed_domains":[],"created_at":"x","updated_at":"y"})";
}

std::string answer(const std::string& network, const std::string& policy, bool ipMatches = true,
                   const std::string& currentIP = "203.0.113.9") {
  return R"({"home_network":)" + network + R"(,"policy":)" + policy + R"(,"current_ip":")" + currentIP +
         R"(","ip_matches":)" + (ipMatches ? "true" : "false") + "}";
}

const std::string ours = network("2016-10-08T14:04:00.123Z");
const std::string blacklist = policy("blacklist", false, R"(["a.example","b.example"])");
const std::string none = R"({"current_ip":"198.51.100.7","ip_matches":false})";
const std::string createdNetwork =
    R"({"message":"ok","home_network":)" + ours + R"(,"policy":)" + blacklist + "}";
const std::string updated =
    R"({"message":"ok","public_ip":"198.51.100.7","updated_at":"2016-10-08T22:31:00Z"})";

struct HomeNetworkScreen : testing::Test {
  HomeNetworkScreen() { app.machine.settings.set(settings::authToken, std::string("t1")); }

  void show(const std::string& body) {
    app.machine.http.answerAlways("GET", path, 200, body);
    screen->disappear();
    screen->appear();
    app.settle();
    app.machine.http.forgetRequests();
  }
  void expectAlert(const std::string& message) {
    EXPECT_TRUE(screen->errorAlert.isShown());
    EXPECT_EQ(screen->errorAlert.message(), message);
    EXPECT_TRUE(screen->errorAlert.dismiss());
    EXPECT_FALSE(screen->errorAlert.isShown());
  }
  std::string lastUpdated() const {
    std::string text = screen->addressRows()[2].value;
    // Some locales put a narrow no-break space before PM.
    if (const auto narrow = text.find("\u202F"); narrow != std::string::npos) {
      text.replace(narrow, std::string("\u202F").size(), " ");
    }
    return text;
  }

  TestApplication app{asParent()};
  std::shared_ptr<HomeNetworkView> screen = std::make_shared<HomeNetworkView>(app.environment());
};

TEST_F(HomeNetworkScreen, begins_as_loading_and_fetches_on_appearing) {
  EXPECT_EQ(screen->content(), HomeNetworkContent::loading);
  EXPECT_EQ(screen->homeNetwork(), std::nullopt);
  EXPECT_EQ(screen->policy(), std::nullopt);
  EXPECT_EQ(screen->currentIP(), "");
  EXPECT_FALSE(screen->ipMatches());
  EXPECT_FALSE(screen->isUpdatingIP());
  EXPECT_FALSE(screen->errorAlert.isShown());
  EXPECT_FALSE(screen->updateConfirmation.isShown());
  EXPECT_FALSE(screen->creationConfirmation.isShown());
  EXPECT_FALSE(screen->showSuccessMessage());
  EXPECT_EQ(screen->successMessage(), "");
  EXPECT_FALSE(screen->setUp());
  EXPECT_FALSE(screen->updateIP());
  EXPECT_FALSE(screen->creationConfirmation.confirm());
  EXPECT_FALSE(screen->updateConfirmation.confirm());
  app.settle();
  EXPECT_TRUE(app.machine.http.requests().empty());
  screen->appear();
  app.settle();
  EXPECT_EQ(app.machine.http.calls(), Names{"GET /home-network"});
}

TEST_F(HomeNetworkScreen, without_a_network_it_offers_to_set_one_up) {
  show(none);
  EXPECT_EQ(screen->content(), HomeNetworkContent::setUp);
  EXPECT_EQ(screen->detectedIP(), "198.51.100.7");
  EXPECT_EQ(screen->steps(),
            (std::vector<HomeNetworkStep>{{1, "Set up Home Network filtering while at home"},
                                          {2, "Configure your consoles to use Quillmar DNS"},
                                          {3, "All devices on your home network share one policy"},
                                          {4, "If your IP changes, tap 'Update IP' while at home"}}));
  EXPECT_TRUE(screen->setUp.isEnabled());
  EXPECT_FALSE(screen->updateIP());
  EXPECT_TRUE(screen->addressRows().empty());
  EXPECT_TRUE(screen->policyRows().empty());
}

TEST_F(HomeNetworkScreen, an_unknown_address_does_not_prevent_the_set_up) {
  show(R"({"current_ip":"","ip_matches":false})");
  EXPECT_EQ(screen->detectedIP(), "Detecting...");
  EXPECT_TRUE(screen->setUp());
  EXPECT_EQ(screen->createQuestion(),
            "Are you currently connected to your home Wi-Fi?\n\nTap 'I'm at Home' to register your current "
            "IP address () for filtering game consoles and smart TVs.");
  EXPECT_TRUE(screen->creationConfirmation.confirm.isEnabled());
}

TEST_F(HomeNetworkScreen, a_failed_load_shows_an_alert_over_the_set_up_page) {
  app.machine.http.fail("GET", path, Kind::timedOut);
  screen->appear();
  app.settle();
  EXPECT_EQ(screen->content(), HomeNetworkContent::setUp);
  EXPECT_EQ(screen->detectedIP(), "Detecting...");
  expectAlert("The request timed out.");
}

TEST_F(HomeNetworkScreen, a_failed_later_load_keeps_the_content) {
  show(answer(ours, blacklist));
  screen->disappear();
  app.machine.http.answer("GET", path, 403);
  screen->appear();
  app.settle();
  EXPECT_EQ(screen->content(), HomeNetworkContent::status);
  EXPECT_TRUE(screen->ipMatches());
  EXPECT_TRUE(screen->showsPolicy());
  expectAlert("Access denied");
}

TEST_F(HomeNetworkScreen, every_kind_of_failure_shows_the_alert) {
  for (const std::string& body : {std::string("<html>"), std::string(), std::string("[]"),
                                  answer(R"({"id":5})", "null"), answer("null", R"("policy")")}) {
    app.machine.http.answer("GET", path, 200, body);
    screen->disappear();
    screen->appear();
    app.settle();
    EXPECT_EQ(screen->content(), HomeNetworkContent::setUp) << body;
    expectAlert("The data couldn’t be read because it isn’t in the correct format.");
  }
}

TEST_F(HomeNetworkScreen, only_the_service_says_whether_the_addresses_match) {
  show(answer(ours, blacklist, true, "198.51.100.7"));
  EXPECT_EQ(screen->networkName(), "Our Home");
  EXPECT_EQ(screen->statusTitle(), "Connected");
  EXPECT_EQ(screen->statusIcon(), "checkmark.circle.fill");
  EXPECT_EQ(screen->statusColor(), "brandGreen");
  EXPECT_EQ(screen->statusText(), "Your consoles and smart TVs are being filtered.");
  show(answer(ours, blacklist, false, "203.0.113.9"));
  EXPECT_EQ(screen->statusTitle(), "IP Mismatch");
  EXPECT_EQ(screen->statusIcon(), "exclamationmark.triangle.fill");
  EXPECT_EQ(screen->statusColor(), "brandOrange");
  EXPECT_EQ(screen->statusText(),
            "Your current IP doesn't match your home network. If you're at home and your IP changed, tap "
            "'Update IP' below.");
}

TEST_F(HomeNetworkScreen, the_addresses_are_not_parsed) {
  show(answer(network("x", "null"), "null", true, "<b>not an address</b>"));
  EXPECT_EQ(screen->addressRows(),
            (std::vector<HomeNetworkRow>{{"Registered IP:", "", "secondaryText"},
                                         {"Current IP:", "<b>not an address</b>", "brandGreen"},
                                         {"Last updated:", "x", "secondaryText"}}));
  show(answer(ours, "null", false, ""));
  EXPECT_EQ(screen->addressRows()[0].value, "203.0.113.9");
  EXPECT_EQ(screen->addressRows()[1], (HomeNetworkRow{"Current IP:", "", "brandOrange"}));
}

TEST_F(HomeNetworkScreen, the_last_update_is_shown_in_the_devices_locale) {
  show(answer(ours, "null"));
  EXPECT_EQ(lastUpdated(), "Oct 8, 2016 at 2:04 PM");
  show(answer(network("2016-10-08T14:04:59Z"), "null"));
  EXPECT_EQ(lastUpdated(), "Oct 8, 2016 at 2:04 PM");
  for (const std::string raw :
       {"", "yesterday", "2016-10-08", "2016-10-08T14:04:00", "2016-02-30T14:04:00Z"}) {
    show(answer(network(raw), "null"));
    EXPECT_EQ(lastUpdated(), raw);
  }
}

TEST_F(HomeNetworkScreen, the_policy_is_shown_if_there_is_one) {
  show(answer(ours, blacklist));
  EXPECT_TRUE(screen->showsPolicy());
  EXPECT_EQ(screen->policyRows(), (std::vector<HomeNetworkRow>{{"Mode:", "Blacklist", "secondaryText"},
                                                               {"Internet blocked:", "No", "secondaryText"},
                                                               {"Blocked domains:", "2", "secondaryText"}}));
  show(answer(ours, policy("ALLOW-LIST only", true, "[]")));
  EXPECT_EQ(screen->policyRows(),
            (std::vector<HomeNetworkRow>{{"Mode:", "Allow-List Only", "secondaryText"},
                                         {"Internet blocked:", "Yes", "secondaryText"}}));
  show(answer(ours, "null"));
  EXPECT_FALSE(screen->showsPolicy());
  EXPECT_TRUE(screen->policyRows().empty());
  EXPECT_EQ(screen->content(), HomeNetworkContent::status) << "the rest stays";
}

TEST_F(HomeNetworkScreen, setting_up_asks_first_and_not_now_sends_nothing) {
  show(none);
  screen->setUp();
  EXPECT_TRUE(screen->creationConfirmation.isShown());
  EXPECT_EQ(screen->createQuestion(),
            "Are you currently connected to your home Wi-Fi?\n\nTap 'I'm at Home' to register your current "
            "IP address (198.51.100.7) for filtering game consoles and smart TVs.");
  EXPECT_TRUE(screen->creationConfirmation.cancel());
  EXPECT_FALSE(screen->creationConfirmation.isShown());
  app.settle();
  EXPECT_TRUE(app.machine.http.requests().empty());
}

TEST_F(HomeNetworkScreen, a_new_network_is_shown_at_once_as_matching) {
  show(none);
  app.machine.http.answer("POST", path, 200, createdNetwork);
  screen->setUp();
  EXPECT_TRUE(screen->creationConfirmation.confirm());
  EXPECT_FALSE(screen->creationConfirmation.isShown());
  EXPECT_EQ(screen->content(), HomeNetworkContent::loading);
  EXPECT_FALSE(screen->creationConfirmation.confirm());
  app.settle();
  EXPECT_EQ(app.machine.http.calls(), Names{"POST /home-network"}) << "and nothing is loaded";
  EXPECT_EQ(*app.machine.http.requests().front().body, R"({"confirm":true})");
  EXPECT_EQ(screen->content(), HomeNetworkContent::status);
  EXPECT_TRUE(screen->ipMatches());
  EXPECT_TRUE(screen->showsPolicy());
  EXPECT_EQ(screen->currentIP(), "198.51.100.7");
  EXPECT_TRUE(screen->showSuccessMessage());
  EXPECT_EQ(screen->successMessage(), "Home Network created successfully!");
}

TEST_F(HomeNetworkScreen, a_refused_set_up_shows_an_alert_over_the_same_page) {
  show(none);
  app.machine.http.answer("POST", path, 409, R"({"error":"There is one already"})");
  screen->setUp();
  screen->creationConfirmation.confirm();
  app.settle();
  EXPECT_EQ(screen->content(), HomeNetworkContent::setUp);
  EXPECT_FALSE(screen->ipMatches());
  EXPECT_FALSE(screen->showSuccessMessage());
  expectAlert("There is one already");
}

TEST_F(HomeNetworkScreen, an_update_asks_first_and_cancel_sends_nothing) {
  show(answer(ours, blacklist, false, "198.51.100.7"));
  EXPECT_EQ(screen->updateTitle(), "Update Home Network IP");
  screen->updateIP();
  EXPECT_TRUE(screen->updateConfirmation.isShown());
  EXPECT_EQ(screen->updateQuestion(),
            "Are you currently connected to your home Wi-Fi?\n\nOnly tap 'Update IP' if you are at home. "
            "This will register your current IP address (198.51.100.7) for console filtering.");
  EXPECT_TRUE(screen->updateConfirmation.cancel());
  EXPECT_FALSE(screen->updateConfirmation.isShown());
  app.settle();
  EXPECT_TRUE(app.machine.http.requests().empty());
}

TEST_F(HomeNetworkScreen, an_update_runs_once_and_the_following_load_decides) {
  show(answer(ours, blacklist, false, "198.51.100.7"));
  app.machine.http.hold();
  screen->updateIP();
  EXPECT_TRUE(screen->updateConfirmation.confirm());
  EXPECT_FALSE(screen->updateConfirmation.isShown());
  EXPECT_TRUE(screen->isUpdatingIP());
  EXPECT_EQ(screen->updateTitle(), "Updating...");
  EXPECT_EQ(screen->content(), HomeNetworkContent::status);
  EXPECT_FALSE(screen->updateIP());
  EXPECT_FALSE(screen->updateConfirmation.confirm());
  app.settle();
  EXPECT_EQ(*app.machine.http.requests().front().body, R"({"confirm":true})");
  app.machine.http.complete(0, httpAnswer(200, updated));
  app.settle();
  EXPECT_FALSE(screen->isUpdatingIP());
  EXPECT_EQ(screen->content(), HomeNetworkContent::loading);
  EXPECT_TRUE(screen->ipMatches()) << "until the load has its answer";
  EXPECT_TRUE(screen->showSuccessMessage());
  EXPECT_EQ(screen->successMessage(), "IP updated to 198.51.100.7");
  EXPECT_EQ(app.machine.http.calls(), (Names{"POST " + updatePath, "GET " + path}));
  app.machine.http.complete(0, httpAnswer(200, answer(ours, blacklist, false, "198.51.100.7")));
  app.settle();
  EXPECT_EQ(screen->content(), HomeNetworkContent::status);
  EXPECT_FALSE(screen->ipMatches());
}

TEST_F(HomeNetworkScreen, a_refused_update_shows_an_alert_and_changes_nothing) {
  show(answer(ours, blacklist, false, "198.51.100.7"));
  app.machine.http.fail("POST", updatePath, Kind::networkConnectionLost);
  screen->updateIP();
  screen->updateConfirmation.confirm();
  app.settle();
  EXPECT_FALSE(screen->isUpdatingIP());
  EXPECT_FALSE(screen->ipMatches());
  EXPECT_EQ(screen->addressRows()[0].value, "203.0.113.9");
  EXPECT_FALSE(screen->showSuccessMessage());
  expectAlert("The network connection was lost.");
  EXPECT_EQ(app.machine.http.count("GET", path), 0U);
  EXPECT_TRUE(screen->updateIP.isEnabled());
}

TEST_F(HomeNetworkScreen, a_banner_stays_three_seconds_and_its_timer_may_end_the_next) {
  show(none);
  app.machine.http.answer("POST", path, 200, createdNetwork);
  app.machine.http.answer("POST", updatePath, 200, updated);
  screen->setUp();
  screen->creationConfirmation.confirm();
  app.settle();
  app.advance(2s);
  screen->updateIP();
  screen->updateConfirmation.confirm();
  app.settle();
  EXPECT_EQ(screen->successMessage(), "IP updated to 198.51.100.7");
  app.advance(999ms);
  EXPECT_TRUE(screen->showSuccessMessage());
  app.advance(1ms);
  EXPECT_FALSE(screen->showSuccessMessage());
  app.advance(1h);
  EXPECT_FALSE(screen->showSuccessMessage());
}

TEST_F(HomeNetworkScreen, it_does_not_poll) {
  show(answer(ours, blacklist));
  app.advance(24h);
  EXPECT_TRUE(app.machine.http.requests().empty());
}

TEST_F(HomeNetworkScreen, the_instructions_are_a_separate_page) {
  show(none);
  EXPECT_FALSE(screen->viewInstructions());
  show(answer(ours, blacklist));
  EXPECT_TRUE(screen->viewInstructions());
  ASSERT_TRUE(screen->showInstructions());
  EXPECT_EQ(
      screen->showInstructions->text(),
      "Add a console using the 'Add Device' button on the Devices screen to see DNS setup instructions.");
  EXPECT_TRUE(screen->showInstructions->done());
  EXPECT_FALSE(screen->showInstructions());
  EXPECT_TRUE(app.machine.http.requests().empty());
}

TEST_F(HomeNetworkScreen, answers_for_a_destroyed_screen_are_dropped) {
  show(answer(ours, blacklist));
  app.machine.http.hold();
  screen->updateIP();
  screen->updateConfirmation.confirm();
  app.settle();
  screen.reset();
  app.machine.http.complete(0, httpAnswer(200, updated));
  app.advance(1min);
  EXPECT_EQ(app.machine.http.count("GET", path), 0U);
}

TEST_F(HomeNetworkScreen, done_dismisses_the_screen) {
  bool dismissed = false;
  screen->setDismissHandler([&] { dismissed = true; });
  EXPECT_TRUE(screen->done());
  EXPECT_TRUE(dismissed);
}

TEST_F(HomeNetworkScreen, the_texts_are_exact) {
  EXPECT_EQ(screen->title(), "Home Network");
  EXPECT_EQ(screen->doneTitle(), "Done");
  EXPECT_EQ(screen->loadingText(), "Loading...");
  EXPECT_EQ(screen->heading(), "Home Network Filtering");
  EXPECT_EQ(screen->explanation(),
            "Filter all game consoles and smart TVs on your home network with a single policy.");
  EXPECT_EQ(screen->detectedIPTitle(), "Your Current IP");
  EXPECT_EQ(screen->stepsTitle(), "How It Works");
  EXPECT_EQ(screen->setUpTitle(), "Set Up Home Network");
  EXPECT_EQ(screen->addressSection(), "IP Address");
  EXPECT_EQ(screen->updateHint(), "Only tap this button while connected to your home Wi-Fi");
  EXPECT_EQ(screen->policyTitle(), "Filtering Policy");
  EXPECT_EQ(screen->policyText(),
            "To manage blocked domains, go to an individual device and the policy will apply to all home "
            "network devices.");
  EXPECT_EQ(screen->consoleTitle(), "Console DNS Setup");
  EXPECT_EQ(screen->consoleText(),
            "Configure your game consoles and smart TVs to use the Quillmar DNS server. They will "
            "automatically be filtered using your Home Network policy.");
  EXPECT_EQ(screen->instructionsTitle(), "View Setup Instructions");
  EXPECT_EQ(screen->createQuestionTitle(), "Set Up Home Network");
  EXPECT_EQ(screen->confirmCreateTitle(), "I'm at Home - Set Up");
  EXPECT_EQ(screen->cancelCreateTitle(), "Not Now");
  EXPECT_EQ(screen->updateQuestionTitle(), "Update Home Network IP");
  EXPECT_EQ(screen->confirmUpdateTitle(), "Update IP");
  EXPECT_EQ(screen->cancelUpdateTitle(), "Cancel");
}

}  // namespace
}  // namespace quillmar
