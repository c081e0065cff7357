#include "family/home_network_view.h"

#include <chrono>

#include "client/home_network_calls.h"
#include "client/network_service.h"
#include "foundation/text.h"
#include "platform/hop.h"

namespace quillmar {
namespace {

constexpr auto bannerTime = std::chrono::seconds(3);

}  // namespace

HomeNetworkView::HomeNetworkView(Environment& environment)
    : ScreenModel("HomeNetworkView"),
      environment_(environment),
      dispatch_(environment.platform().dispatch),
      dateStyles_(environment.dateStyles()) {}

void HomeNetworkView::onAppear() { load(); }

HomeNetworkContent HomeNetworkView::computeContent() const {
  if (isLoading()) {
    return HomeNetworkContent::loading;
  }
  return homeNetwork() ? HomeNetworkContent::status : HomeNetworkContent::setUp;
}

std::vector<HomeNetworkStep> HomeNetworkView::setUpSteps() {
  return {{1, "Set up Home Network filtering while at home"},
          {2, "Configure your consoles to use Quillmar DNS"},
          {3, "All devices on your home network share one policy"},
          {4, "If your IP changes, tap 'Update IP' while at home"}};
}

std::string HomeNetworkView::computeStatusText() const {
  return ipMatches() ? "Your consoles and smart TVs are being filtered."
                     : "Your current IP doesn't match your home network. If you're at home and your IP "
                       "changed, tap 'Update IP' below.";
}

std::vector<HomeNetworkRow> HomeNetworkView::computeAddressRows() const {
  if (!homeNetwork()) {
    return {};
  }
  return {{.label = "Registered IP:", .value = homeNetwork()->publicIP.value_or("")},
          {.label = "Current IP:", .value = currentIP(), .color = matchColor()},
          {.label = "Last updated:", .value = lastUpdated()}};
}

std::string HomeNetworkView::lastUpdated() const {
  const std::string& text = homeNetwork()->updatedAt;
  const auto date = parseTimestamp(text);
  return date ? dateStyles_.mediumDateShortTime(*date) : text;
}

std::vector<HomeNetworkRow> HomeNetworkView::computePolicyRows() const {
  if (!policy()) {
    return {};
  }
  std::vector<HomeNetworkRow> rows{
      {.label = "Mode:", .value = capitalized(policy()->blockMode)},
      {.label = "Internet blocked:", .value = policy()->isBlocked ? "Yes" : "No"}};
  if (const auto count = policy()->blockedDomains.size(); count > 0) {
    rows.push_back({.label = "Blocked domains:", .value = std::to_string(count)});
  }
  return rows;
}

std::string HomeNetworkView::computeCreateQuestion() const {
  return "Are you currently connected to your home Wi-Fi?"
         "\n\n"
         "Tap 'I'm at Home' to register your current IP address (" +
         currentIP() + ") for filtering game consoles and smart TVs.";
}

std::string HomeNetworkView::computeUpdateQuestion() const {
  return "Are you currently connected to your home Wi-Fi?"
         "\n\n"
         "Only tap 'Update IP' if you are at home. This will register your current IP address (" +
         currentIP() + ") for console filtering.";
}

template <class T, class Success>
auto HomeNetworkView::completion(Published<bool>& isBusy, Success success) {
  return hoppingToMain(dispatch_, weakly([this, &isBusy, success](const Result<T>& result) {
                         isBusy = false;
                         if (result.ok()) {
                           success(result.value());
                         } else {
                           errorAlert.show(result.error());
                         }
                       }));
}

void HomeNetworkView::load() {
  isLoading = true;
  environment_.networkService()->send(
      calls::getHomeNetwork,
      completion<HomeNetworkResponse>(isLoading, [this](const HomeNetworkResponse& answer) {
        homeNetwork = answer.homeNetwork;
        policy = answer.policy;
        currentIP = answer.currentIP;
        ipMatches = answer.ipMatches;
      }));
}

void HomeNetworkView::create() {
  isLoading = true;
  environment_.networkService()->send(
      calls::createHomeNetwork, {.name = std::nullopt, .confirm = true},
      completion<CreateHomeNetworkResponse>(isLoading, [this](const CreateHomeNetworkResponse& answer) {
        homeNetwork = answer.homeNetwork;
        policy = answer.policy;
        ipMatches = true;
        showBanner("Home Network created successfully!");
      }));
}

void HomeNetworkView::update() {
  isUpdatingIP = true;
  environment_.networkService()->send(calls::updateHomeNetworkIP, {.confirm = true},
                                      completion<UpdateHomeNetworkIPResponse>(
                                          isUpdatingIP, [this](const UpdateHomeNetworkIPResponse& answer) {
                                            load();
                                            // Holds until the load's answer replaces it.
                                            ipMatches = true;
                                            showBanner("IP updated to " + answer.publicIP);
                                          }));
}

// The timer of an earlier banner is not cancelled, so it may hide this one early.
void HomeNetworkView::showBanner(const std::string& text) {
  successMessage = text;
  showSuccessMessage = true;
  dispatch_.main().asyncAfter(bannerTime, weakly([this] { showSuccessMessage = false; }));
}

}  // namespace quillmar
