#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "family/home_network_view.h"
#include "tests/journeys/people.h"

namespace quillmar {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using Names = std::vector<std::string>;

const std::string homeAddress = "203.0.113.24";
const std::string newAddress = "198.51.100.7";

// A parent at home, whose public address changes.
struct HomeNetworkJourney : testing::Test {
  HomeNetworkJourney() {
    parent.chooseRole();
    parent.signUp("Ann Fielding", "ann@example.com");
  }

  // Opens the page, which loads.
  HomeNetworkView& open() {
    if (const auto shown = parent.find<HomeNetworkView>()) {
      parent.press(shown->done);
    }
    parent.press(parent.dashboard().openHomeNetwork);
    return parent.screen<HomeNetworkView>();
  }
  HomeNetworkView& setUp() {
    auto& page = open();
    parent.press(page.setUp);
    parent.press(page.creationConfirmation.confirm);
    return page;
  }
  void moveTo(const std::string& address) {
    sandbox::Misbehaviour elsewhere;
    elsewhere.publicAddress = address;
    service->misbehave(elsewhere);
  }
  static Names values(HomeNetworkView& page) {
    Names values;
    for (const auto& row : page.addressRows()) {
      values.push_back(row.value);
    }
    return values;
  }

  SharedTime time;
  RealService service{time.clock()};
  Parent parent{service, time};
};

TEST_F(HomeNetworkJourney, a_home_network_is_set_up_after_confirmation) {
  auto& page = open();
  EXPECT_EQ(page.content(), HomeNetworkContent::setUp);
  EXPECT_EQ(page.detectedIP(), homeAddress);
  parent.press(page.setUp);
  EXPECT_THAT(page.createQuestion(), HasSubstr('(' + homeAddress + ')'));
  parent.press(page.creationConfirmation.cancel);
  EXPECT_EQ(service.count("POST", "/api/v1/home-network"), 0);

  parent.press(page.setUp);
  parent.press(page.creationConfirmation.confirm);
  EXPECT_EQ(page.content(), HomeNetworkContent::status) << page.errorAlert.message();
  EXPECT_EQ(page.statusTitle(), "Connected");
  EXPECT_EQ(page.networkName(), "Home Network");
  EXPECT_THAT(values(page), ElementsAre(homeAddress, homeAddress, StartsWith("Oct 8, 2016 at 10:31")));
  EXPECT_TRUE(page.showsPolicy());
  EXPECT_TRUE(page.showSuccessMessage());
  EXPECT_EQ(page.successMessage(), "Home Network created successfully!");
  time.advance(3s);
  EXPECT_FALSE(page.showSuccessMessage());

  EXPECT_EQ(open().content(), HomeNetworkContent::status) << "the service has kept it";
}

TEST_F(HomeNetworkJourney, a_changed_address_is_shown_and_registered_after_confirmation) {
  setUp();
  time.advance(1h);
  moveTo(newAddress);
  auto& page = open();
  EXPECT_EQ(page.statusTitle(), "IP Mismatch");
  EXPECT_THAT(values(page), ElementsAre(homeAddress, newAddress, StartsWith("Oct 8, 2016 at 10:31")));

  parent.press(page.updateIP);
  EXPECT_THAT(page.updateQuestion(), HasSubstr('(' + newAddress + ')'));
  parent.press(page.updateConfirmation.cancel);
  EXPECT_EQ(service.count("POST", "/api/v1/home-network/update-ip"), 0);
  EXPECT_EQ(page.statusTitle(), "IP Mismatch");

  parent.press(page.updateIP);
  EXPECT_TRUE(page.updateConfirmation.confirm());
  EXPECT_EQ(page.updateTitle(), "Updating...");
  EXPECT_FALSE(page.updateIP.isEnabled());
  parent.settle();
  EXPECT_EQ(page.statusTitle(), "Connected");
  EXPECT_EQ(page.successMessage(), "IP updated to " + newAddress);
  EXPECT_THAT(values(page), ElementsAre(newAddress, newAddress, StartsWith("Oct 8, 2016 at 11:31")));
}

TEST_F(HomeNetworkJourney, a_second_set_up_from_an_outdated_page_shows_the_error) {
  auto& page = open();
  Parent other(service, time);
  other.chooseRole();
  auto& login = other.screen<LoginView>();
  login.email = std::string("ann@example.com");
  login.password = std::string(Parent::password);
  other.press(login.signIn);
  other.press(other.dashboard().openHomeNetwork);
  auto& first = other.screen<HomeNetworkView>();
  other.press(first.setUp);
  other.press(first.creationConfirmation.confirm);
  EXPECT_EQ(first.content(), HomeNetworkContent::status);

  parent.press(page.setUp);
  parent.press(page.creationConfirmation.confirm);
  EXPECT_TRUE(page.errorAlert.isShown());
  EXPECT_EQ(page.errorAlert.message(), "Your home network is set up already. Update its address instead.");
  EXPECT_EQ(page.content(), HomeNetworkContent::setUp);
  EXPECT_EQ(open().content(), HomeNetworkContent::status);
}

}  // namespace
}  // namespace quillmar
