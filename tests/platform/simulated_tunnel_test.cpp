#include "platform/simulated/simulated_tunnel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "testing/virtual_dispatch.h"

namespace quillmar {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Operation = SimulatedTunnel::Operation;

const TunnelProtocol protocol{"example.tunnel", "dns.example", {{"dohEndpoint", "https://dns.example/q"}}};

class SimulatedTunnelTest : public testing::Test {
 protected:
  static void fill(TunnelConfiguration& configuration) {
    configuration.protocolConfiguration = protocol;
    configuration.localizedDescription = "Protection";
    configuration.isEnabled = true;
    configuration.onDemandRules = {{InterfaceType::any}};
    configuration.isOnDemandEnabled = true;
  }
  std::string save(TunnelConfiguration& configuration) {
    const auto outcome = std::make_shared<std::string>("none");  // it may come much later
    configuration.save([this, outcome](const std::optional<Error>& error) {
      EXPECT_FALSE(dispatch.isMainThread());
      *outcome = error ? error->localizedDescription() : "saved";
    });
    EXPECT_EQ(*outcome, "none");
    dispatch.settle();
    return *outcome;
  }
  TunnelService::Configurations load(TunnelService& service) {
    TunnelService::Configurations list;
    service.loadAll([&](Result<TunnelService::Configurations> result) {
      EXPECT_FALSE(dispatch.isMainThread());
      ASSERT_TRUE(result.ok());
      list = std::move(result).value();
    });
    dispatch.settle();
    return list;
  }

  VirtualDispatch dispatch;
  SimulatedTunnel tunnel{dispatch};
  std::vector<TunnelStatus> seen;
  Subscription subscription = tunnel.observeStatus([this](TunnelConnection& connection) {
    EXPECT_TRUE(dispatch.isMainThread());
    seen.push_back(connection.status());
  });
};

TEST_F(SimulatedTunnelTest, a_new_configuration_is_invalid_and_unlisted_until_saved) {
  const auto made = tunnel.makeConfiguration();
  fill(*made);
  EXPECT_EQ(made->connection().status(), TunnelStatus::invalid);
  EXPECT_THAT(load(tunnel), IsEmpty());
  EXPECT_EQ(save(*made), "saved");
  EXPECT_EQ(made->connection().status(), TunnelStatus::disconnected);
  EXPECT_THAT(seen, ElementsAre(TunnelStatus::disconnected));
  const auto list = load(tunnel);
  ASSERT_THAT(list, SizeIs(1));
  EXPECT_EQ(list[0]->protocolConfiguration, protocol);
  EXPECT_EQ(&list[0]->connection(), &made->connection());
  EXPECT_THAT(tunnel.operations(), ElementsAre(Operation::load, Operation::save, Operation::load));
}

TEST_F(SimulatedTunnelTest, injected_errors_come_back_in_their_words_and_change_nothing) {
  const auto made = tunnel.makeConfiguration();
  fill(*made);
  tunnel.fail(Operation::save, "no room");
  EXPECT_EQ(save(*made), "no room");
  EXPECT_THAT(tunnel.saved(), IsEmpty());
  tunnel.fail(Operation::save, std::nullopt);
  EXPECT_EQ(save(*made), "saved");
  tunnel.fail(Operation::start, "no route");
  const auto started = made->connection().startTunnel();
  ASSERT_FALSE(started);
  EXPECT_EQ(started.error(), TunnelError{"no route"});
  tunnel.fail(Operation::reload, "gone");
  made->isEnabled = false;
  std::string reloaded;
  made->load([&](const std::optional<Error>& error) { reloaded = error->localizedDescription(); });
  dispatch.settle();
  EXPECT_EQ(reloaded, "gone");
  EXPECT_FALSE(made->isEnabled);
  tunnel.fail(Operation::load, "busy");
  std::string loaded;
  tunnel.loadAll([&](const Result<TunnelService::Configurations>& result) {
    loaded = result.error().localizedDescription();
  });
  dispatch.settle();
  EXPECT_EQ(loaded, "busy");
}

TEST_F(SimulatedTunnelTest, a_status_set_from_outside_is_told_once) {
  const auto made = tunnel.makeConfiguration();
  fill(*made);
  EXPECT_FALSE(tunnel.setStatus(TunnelStatus::connected));
  save(*made);
  seen.clear();
  EXPECT_TRUE(tunnel.setStatus(TunnelStatus::connected));
  EXPECT_TRUE(tunnel.setStatus(TunnelStatus::connected));
  EXPECT_THAT(seen, IsEmpty());
  dispatch.settle();
  EXPECT_THAT(seen, ElementsAre(TunnelStatus::connected));
}

TEST_F(SimulatedTunnelTest, a_start_changes_nothing_by_itself_unless_told_to_behave) {
  const auto made = tunnel.makeConfiguration();
  fill(*made);
  save(*made);
  EXPECT_TRUE(made->connection().startTunnel());
  dispatch.advance(std::chrono::hours(1));
  EXPECT_EQ(made->connection().status(), TunnelStatus::disconnected);
}

TEST_F(SimulatedTunnelTest, behaving_like_a_platform_it_asks_once_and_connects_after_a_while) {
  std::vector<std::function<void(bool)>> prompts;
  tunnel.behaveLikePlatform([&](std::function<void(bool)> answer) { prompts.push_back(std::move(answer)); },
                            Duration(400));
  const auto made = tunnel.makeConfiguration();
  fill(*made);
  EXPECT_FALSE(made->connection().startTunnel());
  EXPECT_EQ(save(*made), "none");
  ASSERT_THAT(prompts, SizeIs(1));
  prompts[0](true);
  dispatch.settle();
  EXPECT_EQ(save(*made), "saved");
  EXPECT_THAT(prompts, SizeIs(1));
  EXPECT_TRUE(made->connection().startTunnel());
  EXPECT_EQ(made->connection().status(), TunnelStatus::connecting);
  dispatch.advance(Duration(400));
  EXPECT_THAT(seen,
              ElementsAre(TunnelStatus::disconnected, TunnelStatus::connecting, TunnelStatus::connected));
}

TEST_F(SimulatedTunnelTest, each_call_is_recorded_also_one_that_waits_for_the_answer_of_another) {
  std::vector<std::function<void(bool)>> prompts;
  tunnel.behaveLikePlatform([&](std::function<void(bool)> answer) { prompts.push_back(std::move(answer)); });
  const auto made = tunnel.makeConfiguration();
  fill(*made);
  save(*made);
  save(*made);
  EXPECT_THAT(tunnel.operations(), ElementsAre(Operation::save, Operation::save));
  EXPECT_THAT(prompts, SizeIs(1));
}

TEST_F(SimulatedTunnelTest, a_refused_permission_is_an_error_of_the_save) {
  tunnel.behaveLikePlatform([](const std::function<void(bool)>& answer) { answer(false); });
  const auto made = tunnel.makeConfiguration();
  fill(*made);
  EXPECT_EQ(save(*made), "permission denied");
  EXPECT_THAT(tunnel.saved(), IsEmpty());
  EXPECT_EQ(made->connection().status(), TunnelStatus::invalid);
}

TEST_F(SimulatedTunnelTest, a_configuration_switched_off_by_the_user_does_not_start) {
  tunnel.behaveLikePlatform();
  const auto made = tunnel.makeConfiguration();
  fill(*made);
  save(*made);
  tunnel.change(0, [](SavedTunnel& saved) { saved.isEnabled = false; });
  EXPECT_FALSE(load(tunnel)[0]->isEnabled);
  EXPECT_FALSE(made->connection().startTunnel());
}

TEST_F(SimulatedTunnelTest, configurations_of_others_stay_as_they_are) {
  const SavedTunnel foreign{TunnelProtocol{"other.tunnel", "h", {}}, "Work", true, {}, false};
  tunnel.put(foreign);
  const auto made = tunnel.makeConfiguration();
  fill(*made);
  save(*made);
  ASSERT_THAT(tunnel.saved(), SizeIs(2));
  EXPECT_EQ(tunnel.saved()[0], foreign);
  tunnel.setStatus(0, TunnelStatus::connected);
  EXPECT_EQ(tunnel.status(0), TunnelStatus::connected);
  EXPECT_EQ(made->connection().status(), TunnelStatus::disconnected);
}

TEST_F(SimulatedTunnelTest, a_configuration_removed_in_the_systems_settings_turns_invalid) {
  const auto made = tunnel.makeConfiguration();
  fill(*made);
  save(*made);
  tunnel.removeSaved(0);
  dispatch.settle();
  EXPECT_THAT(load(tunnel), IsEmpty());
  EXPECT_EQ(made->connection().status(), TunnelStatus::invalid);
  EXPECT_EQ(seen.back(), TunnelStatus::invalid);
}

TEST_F(SimulatedTunnelTest, latency_delays_what_a_load_brings) {
  tunnel.setLatency(Duration(500));
  bool loaded = false;
  tunnel.loadAll([&](const Result<TunnelService::Configurations>&) { loaded = true; });
  dispatch.advance(Duration(499));
  EXPECT_FALSE(loaded);
  dispatch.advance(Duration(1));
  EXPECT_TRUE(loaded);
}

TEST_F(SimulatedTunnelTest, saved_configurations_are_there_again_in_the_next_run) {
  std::optional<std::string> stored;
  const SimulatedTunnel::Storage storage{[&] { return stored; },
                                         [&](const std::string& text) { stored = text; }};
  std::vector<SavedTunnel> before;
  {
    SimulatedTunnel first(dispatch, storage);
    const auto made = first.makeConfiguration();
    fill(*made);
    save(*made);
    before = first.saved();
  }
  SimulatedTunnel second(dispatch, storage);
  EXPECT_THAT(before, SizeIs(1));
  EXPECT_EQ(second.saved(), before);
  EXPECT_EQ(second.status(0), TunnelStatus::disconnected);
}

TEST_F(SimulatedTunnelTest, a_damaged_storage_gives_no_configurations) {
  SimulatedTunnel damaged(dispatch, {[] { return "{\"configurations\":[{}]}"; }, {}});
  EXPECT_THAT(damaged.saved(), IsEmpty());
}

}  // namespace
}  // namespace quillmar
