#pragma once

// What every TunnelService promises:
//   INSTANTIATE_TEST_SUITE_P(NetworkManager, TunnelServiceContract,
//       testing::Values(factory<TunnelServiceHarness, NetworkManagerHarness>("NetworkManager")));

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/tunnel.h"
#include "tests/contracts/factory.h"

namespace quillmar {

// A service without configurations, on a machine that grants permission and can bring up a tunnel. Main
// thread only.
class TunnelServiceHarness : public Harness {
 public:
  virtual TunnelService& service() = 0;
  // Always names the same installed tunnel program.
  virtual TunnelProtocol protocol(const std::string& endpoint) = 0;
  virtual bool isMainThread() = 0;
  // Runs a task on the main thread, from any thread.
  virtual void onMain(std::function<void()> task) = 0;
  // Runs the main queue until `done` returns true after one of its tasks. False after a timeout.
  virtual bool runUntil(const std::function<bool()>& done) = 0;

  // Holds back all answers about permission until `answerPermission`, which also decides later requests.
  virtual void holdPermission() = 0;
  virtual void answerPermission(bool granted) = 0;
  // Waits for a request for permission. False after a timeout.
  virtual bool waitUntilAsked() = 0;
  // Since `holdPermission`.
  virtual std::size_t timesAsked() = 0;
};

// Configures the tunnel as the application does.
inline void enable(TunnelConfiguration& configuration, TunnelProtocol protocol) {
  configuration.protocolConfiguration = std::move(protocol);
  configuration.localizedDescription = "Protection";
  configuration.isEnabled = true;
  configuration.onDemandRules = {{InterfaceType::any}};
  configuration.isOnDemandEnabled = true;
}

class TunnelServiceContract : public testing::TestWithParam<Factory<TunnelServiceHarness>> {
 protected:
  // The result of a save; nullopt while it is pending.
  using Outcome = std::optional<std::optional<Error>>;

  TunnelService& service() { return harness_->service(); }

  // Waits on the main thread for a completion and returns what it reported.
  template <class Report>
  Report await(const std::function<void(std::function<void(Report)>)>& begin) {
    std::optional<Report> outcome;
    bool inCall = true;
    begin([&](Report result) {
      EXPECT_FALSE(inCall && harness_->isMainThread());
      harness_->onMain(
          [&outcome, result = std::move(result)]() mutable { outcome.emplace(std::move(result)); });
    });
    inCall = false;
    EXPECT_TRUE(harness_->runUntil([&] { return outcome.has_value(); }));
    return std::move(*outcome);
  }

  std::shared_ptr<TunnelConfiguration> make(const std::string& endpoint = "https://dns.example/q") {
    auto configuration = service().makeConfiguration();
    enable(*configuration, harness_->protocol(endpoint));
    return configuration;
  }
  std::optional<Error> save(TunnelConfiguration& configuration) {
    return await<std::optional<Error>>([&](auto completion) { configuration.save(std::move(completion)); });
  }
  // Begins a save; the result is set on completion.
  std::shared_ptr<Outcome> beginSave(TunnelConfiguration& configuration) {
    const auto outcome = std::make_shared<Outcome>();
    configuration.save([this, outcome](const std::optional<Error>& error) {
      harness_->onMain([outcome, error] { outcome->emplace(error); });
    });
    return outcome;
  }
  std::optional<Error> load(TunnelConfiguration& configuration) {
    return await<std::optional<Error>>([&](auto completion) { configuration.load(std::move(completion)); });
  }
  TunnelService::Configurations loadAll() {
    auto result = await<Result<TunnelService::Configurations>>(
        [&](auto completion) { service().loadAll(std::move(completion)); });
    EXPECT_TRUE(result.ok());
    return result.ok() ? std::move(result).value() : TunnelService::Configurations();
  }
  TunnelServiceHarness& harness() { return *harness_; }
  bool runUntil(const std::function<bool()>& done) { return harness_->runUntil(done); }
  bool isMainThread() { return harness_->isMainThread(); }
  TunnelProtocol protocol(const std::string& endpoint) { return harness_->protocol(endpoint); }

 private:
  std::unique_ptr<TunnelServiceHarness> harness_ = GetParam()();
};

TEST_P(TunnelServiceContract, at_first_there_are_no_configurations) { EXPECT_TRUE(loadAll().empty()); }

TEST_P(TunnelServiceContract, a_configuration_that_was_not_saved_is_unknown_to_the_system) {
  const auto made = make();
  EXPECT_EQ(made->connection().status(), TunnelStatus::invalid);
  EXPECT_TRUE(loadAll().empty());
}

TEST_P(TunnelServiceContract, a_saved_configuration_is_listed_with_all_its_properties) {
  const auto made = make();
  EXPECT_EQ(save(*made), std::nullopt);
  EXPECT_EQ(made->connection().status(), TunnelStatus::disconnected);
  const auto list = loadAll();
  ASSERT_EQ(list.size(), 1U);
  EXPECT_EQ(list[0]->protocolConfiguration, made->protocolConfiguration);
  EXPECT_EQ(list[0]->localizedDescription, "Protection");
  EXPECT_TRUE(list[0]->isEnabled);
  EXPECT_EQ(list[0]->onDemandRules, made->onDemandRules);
  EXPECT_TRUE(list[0]->isOnDemandEnabled);
  EXPECT_EQ(list[0]->connection().status(), TunnelStatus::disconnected);
}

TEST_P(TunnelServiceContract, saving_again_changes_the_configuration_and_adds_none) {
  save(*make("https://dns.example/old"));
  const auto found = loadAll();
  ASSERT_EQ(found.size(), 1U);
  found[0]->protocolConfiguration = protocol("https://dns.example/new");
  EXPECT_EQ(save(*found[0]), std::nullopt);
  const auto list = loadAll();
  ASSERT_EQ(list.size(), 1U);
  EXPECT_EQ(list[0]->protocolConfiguration, protocol("https://dns.example/new"));
}

TEST_P(TunnelServiceContract, of_two_new_configurations_the_second_save_changes_the_first) {
  const auto first = make("https://dns.example/old");
  const auto second = make("https://dns.example/new");
  EXPECT_EQ(save(*first), std::nullopt);
  EXPECT_EQ(save(*second), std::nullopt);
  EXPECT_EQ(second->connection().status(), TunnelStatus::disconnected);
  const auto list = loadAll();
  ASSERT_EQ(list.size(), 1U);
  EXPECT_EQ(list[0]->protocolConfiguration, protocol("https://dns.example/new"));
}

TEST_P(TunnelServiceContract, a_new_configuration_after_a_saved_one_is_a_different_one) {
  save(*make());
  EXPECT_EQ(make()->connection().status(), TunnelStatus::invalid);
  EXPECT_EQ(save(*make()), std::nullopt);
  EXPECT_EQ(loadAll().size(), 2U);
}

TEST_P(TunnelServiceContract,
       while_the_user_is_being_asked_a_second_save_asks_nobody_and_has_the_same_answer) {
  harness().holdPermission();
  const auto first = make();
  const auto firstSaved = beginSave(*first);
  ASSERT_TRUE(harness().waitUntilAsked());
  EXPECT_TRUE(loadAll().empty()) << "a load waits for no save";
  const auto second = make();
  const auto secondSaved = beginSave(*second);
  EXPECT_TRUE(loadAll().empty());
  EXPECT_FALSE(*firstSaved || *secondSaved);

  harness().answerPermission(true);
  ASSERT_TRUE(runUntil([&] { return *firstSaved && *secondSaved; }));
  EXPECT_EQ(**firstSaved, std::nullopt);
  EXPECT_EQ(**secondSaved, std::nullopt);
  EXPECT_EQ(harness().timesAsked(), 1U);
  EXPECT_EQ(loadAll().size(), 1U);
  EXPECT_EQ(load(*second), std::nullopt);
  EXPECT_TRUE(second->connection().startTunnel());
}

TEST_P(TunnelServiceContract, the_last_save_during_a_prompt_wins) {
  harness().holdPermission();
  const auto saved = {beginSave(*make("https://dns.example/first")),
                      beginSave(*make("https://dns.example/second")),
                      beginSave(*make("https://dns.example/third"))};
  ASSERT_TRUE(harness().waitUntilAsked());
  harness().answerPermission(true);
  for (const auto& outcome : saved) {
    ASSERT_TRUE(runUntil([&] { return outcome->has_value(); }));
    EXPECT_EQ(**outcome, std::nullopt);
  }
  const auto list = loadAll();
  ASSERT_EQ(list.size(), 1U);
  EXPECT_EQ(list[0]->protocolConfiguration, protocol("https://dns.example/third"));
}

TEST_P(TunnelServiceContract, one_refusal_fails_all_waiting_saves_and_a_later_save_asks_again) {
  harness().holdPermission();
  const auto first = beginSave(*make("https://dns.example/old"));
  const auto second = beginSave(*make("https://dns.example/new"));
  ASSERT_TRUE(harness().waitUntilAsked());
  harness().answerPermission(false);
  ASSERT_TRUE(runUntil([&] { return *first && *second; }));
  ASSERT_NE(**first, std::nullopt);
  EXPECT_EQ(**second, **first);
  EXPECT_EQ(harness().timesAsked(), 1U);
  EXPECT_TRUE(loadAll().empty());

  harness().answerPermission(true);
  EXPECT_EQ(save(*make()), std::nullopt);
  EXPECT_EQ(harness().timesAsked(), 2U);
  EXPECT_EQ(loadAll().size(), 1U);
}

TEST_P(TunnelServiceContract, loading_replaces_unsaved_values) {
  const auto made = make();
  save(*made);
  made->localizedDescription = "Changed";
  made->protocolConfiguration.reset();
  EXPECT_EQ(load(*made), std::nullopt);
  EXPECT_EQ(made->localizedDescription, "Protection");
  EXPECT_EQ(made->protocolConfiguration, protocol("https://dns.example/q"));
}

TEST_P(TunnelServiceContract,
       a_start_leads_through_connecting_to_connected_and_each_change_is_told_on_the_main_thread) {
  const auto made = make();
  save(*made);
  std::vector<TunnelStatus> seen;
  const Subscription subscription = service().observeStatus([&](TunnelConnection& connection) {
    EXPECT_TRUE(isMainThread());
    seen.push_back(connection.status());
  });
  // The change that the save caused is not counted.
  ASSERT_TRUE(runUntil([&] { return seen.empty() || seen.back() == TunnelStatus::disconnected; }));
  seen.clear();
  EXPECT_TRUE(made->connection().startTunnel());
  ASSERT_TRUE(runUntil([&] { return !seen.empty() && seen.back() == TunnelStatus::connected; }));
  EXPECT_EQ(made->connection().status(), TunnelStatus::connected);
  EXPECT_THAT(seen, testing::Contains(TunnelStatus::connecting));
  EXPECT_EQ(loadAll().at(0)->connection().status(), TunnelStatus::connected);
}

TEST_P(TunnelServiceContract, a_cancelled_subscription_is_not_called) {
  const auto made = make();
  save(*made);
  int heard = 0;
  int other = 0;
  Subscription subscription = service().observeStatus([&](TunnelConnection&) { ++heard; });
  const Subscription stays = service().observeStatus([&](TunnelConnection&) { ++other; });
  subscription.cancel();
  EXPECT_TRUE(made->connection().startTunnel());
  ASSERT_TRUE(runUntil([&] { return made->connection().status() == TunnelStatus::connected && other > 0; }));
  EXPECT_EQ(heard, 0);
}

TEST_P(TunnelServiceContract, a_configuration_that_was_not_saved_does_not_start) {
  EXPECT_FALSE(make()->connection().startTunnel());
}

TEST_P(TunnelServiceContract, a_configuration_that_is_switched_off_does_not_start) {
  const auto made = make();
  made->isEnabled = false;
  save(*made);
  const auto started = made->connection().startTunnel();
  ASSERT_FALSE(started);
  EXPECT_FALSE(started.error().localizedDescription().empty());
}

}  // namespace quillmar
