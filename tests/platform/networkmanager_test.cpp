#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "platform/common/asio_dispatch.h"
#include "platform/common/file_descriptor.h"
#include "platform/linux/networkmanager_tunnel.h"
#include "programs/doctor/probes.h"
#include "tests/contracts/tunnel_service_contract.h"
#include "tests/platform/networkmanager_world.h"
#include "tests/shared_world.h"

namespace quillmar {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using std::chrono_literals::operator""ms;
using std::chrono_literals::operator""s;

using Status = TunnelStatus;

const auto& world = SharedWorld<NetworkManagerWorld>::forAllTests();

constexpr const char* endpoint = "https://dns.example/q";

TunnelProtocol protocolOf(const std::string& service, const std::string& endpoint) {
  return {service, "dns.example", {{"dohEndpoint", endpoint}}};
}

// The adapter and its main queue.
class Machine {
 public:
  explicit Machine(NetworkManagerTunnel::Options options = {},
                   const char* service = NetworkManagerWorld::service)
      : service_(dispatch, service, at(std::move(options))) {}

  TunnelService& service() { return service_; }
  bool runUntil(const std::function<bool()>& done) {
    const auto deadline = std::chrono::steady_clock::now() + 60s;
    while (!done()) {
      if (!dispatch.runOne(deadline)) {
        return false;
      }
    }
    return true;
  }
  template <class Outcome>
  Outcome await(const std::function<void(std::function<void(Outcome)>)>& begin) {
    std::optional<Outcome> outcome;
    begin([&](Outcome result) { outcome.emplace(std::move(result)); });
    EXPECT_TRUE(runUntil([&] { return outcome.has_value(); }));
    return std::move(*outcome);
  }

  AsioDispatch dispatch;

 private:
  // Defaults for the test: the world's bus, and timeouts for a busy machine.
  static NetworkManagerTunnel::Options at(NetworkManagerTunnel::Options options) {
    const NetworkManagerTunnel::Options standard;
    if (options.busAddress == standard.busAddress) {
      options.busAddress = world().bus().address();
    }
    if (options.timeout == standard.timeout) {
      options.timeout = 30s;
      options.startTimeout = 30s;
    }
    return options;
  }

  NetworkManagerTunnel service_;
};

class NetworkManagerHarness final : public TunnelServiceHarness {
 public:
  NetworkManagerHarness() { world().tidy(); }

  TunnelService& service() override { return machine_.service(); }
  TunnelProtocol protocol(const std::string& endpoint) override {
    return protocolOf(NetworkManagerWorld::service, endpoint);
  }
  bool isMainThread() override { return machine_.dispatch.isMainThread(); }
  void onMain(std::function<void()> task) override { machine_.dispatch.main().async(std::move(task)); }
  bool runUntil(const std::function<bool()>& done) override { return machine_.runUntil(done); }
  void holdPermission() override { world().permissions().hold(); }
  void answerPermission(bool granted) override { world().permissions().grant(granted); }
  bool waitUntilAsked() override { return world().permissions().waitUntilAsked(); }
  std::size_t timesAsked() override { return world().permissions().asked(); }

 private:
  // NetworkManager asks for no permission when root calls, so these calls come from another user.
  const BusRelay relay_{world().file("user-bus"), world().bus().socket()};
  Machine machine_{{.busAddress = relay_.address()}};
};

INSTANTIATE_TEST_SUITE_P(
    NetworkManager, TunnelServiceContract,
    testing::Values(factory<TunnelServiceHarness, NetworkManagerHarness>("NetworkManager")));

class NetworkManagerTest : public testing::Test {
 protected:
  NetworkManagerTest() {
    world().tidy();
    makeMachine();
  }

  void makeMachine(NetworkManagerTunnel::Options options = {},
                   const char* service = NetworkManagerWorld::service) {
    subscription_.cancel();
    machine_ = std::make_unique<Machine>(std::move(options), service);
    subscription_ = machine_->service().observeStatus(
        [this](TunnelConnection& connection) { announced.push_back(connection.status()); });
  }

  std::shared_ptr<TunnelConfiguration> make(const std::string& endpoint,
                                            const std::string& service = NetworkManagerWorld::service) {
    auto configuration = machine_->service().makeConfiguration();
    enable(*configuration, protocolOf(service, endpoint));
    return configuration;
  }
  std::optional<Error> save(TunnelConfiguration& configuration) {
    return machine_->await<std::optional<Error>>(
        [&](auto completion) { configuration.save(std::move(completion)); });
  }
  std::optional<Error> load(TunnelConfiguration& configuration) {
    return machine_->await<std::optional<Error>>(
        [&](auto completion) { configuration.load(std::move(completion)); });
  }
  Result<TunnelService::Configurations> list() {
    return machine_->await<Result<TunnelService::Configurations>>(
        [&](auto completion) { machine_->service().loadAll(std::move(completion)); });
  }
  TunnelService::Configurations listed() {
    auto result = list();
    EXPECT_TRUE(result.ok()) << result.error().localizedDescription();
    return result.ok() ? std::move(result).value() : TunnelService::Configurations();
  }
  std::shared_ptr<TunnelConfiguration> saved(const std::string& endpoint = quillmar::endpoint,
                                             bool onDemand = true) {
    auto configuration = make(endpoint);
    configuration->isOnDemandEnabled = onDemand;
    EXPECT_EQ(save(*configuration), std::nullopt);
    announced.clear();
    return configuration;
  }
  std::shared_ptr<TunnelConfiguration> connected(bool onDemand = true) {
    auto configuration = saved(endpoint, onDemand);
    EXPECT_TRUE(configuration->connection().startTunnel());
    EXPECT_TRUE(becomes(Status::connected));
    announced.clear();
    return configuration;
  }
  bool becomes(Status status) {
    return machine_->runUntil([&] { return !announced.empty() && announced.back() == status; });
  }
  // A property of the one connection, as nmcli prints it.
  static std::string property(const std::string& name) {
    return world().nmcli({"-g", name, "connection", "show", "Protection"});
  }
  static std::string connections() { return world().nmcli({"-g", "NAME", "connection", "show"}); }
  static std::string said(const std::optional<Error>& error) {
    return error ? error->localizedDescription() : "no error";
  }
  template <class T>
  static std::string said(const Result<T>& result) {
    return result.ok() ? "no error" : result.error().localizedDescription();
  }

  std::vector<Status> announced;

 private:
  std::unique_ptr<Machine> machine_;
  Subscription subscription_;
};

TEST_F(NetworkManagerTest, the_first_save_adds_a_connection_that_nmcli_shows) {
  EXPECT_EQ(save(*make(endpoint)), std::nullopt);
  EXPECT_EQ(property("connection.type"), "vpn");
  EXPECT_EQ(property("vpn.service-type"), NetworkManagerWorld::service);
  EXPECT_EQ(property("vpn.data"), "dohEndpoint = https\\://dns.example/q");
  EXPECT_EQ(property("vpn.persistent"), "yes");
  EXPECT_EQ(property("connection.autoconnect"), "yes");
  EXPECT_EQ(announced, std::vector{Status::disconnected});
}

TEST_F(NetworkManagerTest, a_connection_claims_all_names_and_no_routes) {
  EXPECT_EQ(save(*make(endpoint)), std::nullopt);
  for (const std::string family : {"ipv4", "ipv6"}) {
    EXPECT_EQ(property(family + ".dns-priority"), "-100");
    EXPECT_EQ(property(family + ".dns-search"), "~.");
    EXPECT_EQ(property(family + ".never-default"), "yes");
  }
}

TEST_F(NetworkManagerTest, a_connection_of_an_earlier_version_claims_all_names_from_the_next_save_on) {
  const auto configuration = saved();
  world().nmcli({"connection", "modify", "Protection", "ipv4.dns-priority", "0", "ipv4.dns-search", "",
                 "ipv4.never-default", "no", "ipv6.dns-priority", "-200", "ipv6.dns-search", "home",
                 "ipv6.never-default", "no"});
  EXPECT_EQ(save(*configuration), std::nullopt);
  EXPECT_EQ(property("ipv4.dns-priority"), "-100");
  EXPECT_EQ(property("ipv4.dns-search"), "~.");
  EXPECT_EQ(property("ipv4.never-default"), "yes");
  EXPECT_EQ(property("ipv6.dns-priority"), "-200");
  EXPECT_EQ(property("ipv6.dns-search"), "home,~.");
  EXPECT_EQ(property("ipv6.never-default"), "yes");
}

TEST_F(NetworkManagerTest, a_refused_permission_is_an_error_in_networkmanagers_words_and_can_be_given_later) {
  const BusRelay relay(world().file("user-bus"), world().bus().socket());
  makeMachine({.busAddress = relay.address()});
  world().permissions().grant(false);
  const auto configuration = make(endpoint);
  EXPECT_EQ(said(save(*configuration)), "Insufficient privileges");
  EXPECT_EQ(connections().find("Protection"), std::string::npos);
  EXPECT_THAT(announced, IsEmpty());
  EXPECT_EQ(configuration->connection().status(), Status::invalid);

  world().permissions().grant(true);
  EXPECT_EQ(save(*configuration), std::nullopt);
  EXPECT_EQ(property("vpn.service-type"), NetworkManagerWorld::service);
}

TEST_F(NetworkManagerTest, a_prompt_that_is_answered_late_adds_one_connection_however_often_it_was_saved) {
  const BusRelay relay(world().file("user-bus"), world().bus().socket());
  makeMachine({.busAddress = relay.address(), .promptTimeout = 100ms});
  world().permissions().hold();
  EXPECT_EQ(said(save(*make(endpoint))), "NetworkManager does not answer.");
  EXPECT_EQ(said(save(*make(endpoint))), "NetworkManager does not answer.");
  world().permissions().grant(true);
  EXPECT_TRUE(becomes(Status::disconnected));
  EXPECT_EQ(listed().size(), 1U);
  EXPECT_EQ(property("vpn.service-type"), NetworkManagerWorld::service);
}

TEST_F(NetworkManagerTest, a_refused_change_leaves_the_connection_as_it_was) {
  saved();
  const BusRelay relay(world().file("user-bus"), world().bus().socket());
  makeMachine({.busAddress = relay.address()});
  world().permissions().grant(false);
  const auto list = listed();
  ASSERT_EQ(list.size(), 1U);
  list[0]->protocolConfiguration = protocolOf(NetworkManagerWorld::service, "https://dns.example/new");
  EXPECT_EQ(said(save(*list[0])), "Insufficient privileges");
  EXPECT_EQ(property("vpn.data"), "dohEndpoint = https\\://dns.example/q");
  EXPECT_EQ(said(list[0]->connection().startTunnel()).find("Not authorized"), 0U);
}

TEST_F(NetworkManagerTest, another_endpoint_goes_into_the_same_connection_and_replaces_all_its_data) {
  saved();
  const auto uuid = property("connection.uuid");
  world().nmcli(
      {"connection", "modify", "Protection", "+vpn.data", "added=by hand", "ipv4.dns-search", "home"});
  const auto found = listed().at(0);
  found->protocolConfiguration = protocolOf(NetworkManagerWorld::service, "https://dns.example/new");
  EXPECT_EQ(save(*found), std::nullopt);
  EXPECT_EQ(property("connection.uuid"), uuid);
  EXPECT_EQ(property("vpn.data"), "dohEndpoint = https\\://dns.example/new");
  EXPECT_EQ(property("ipv4.dns-search"), "home,~.");
}

TEST_F(NetworkManagerTest, a_running_tunnel_is_not_taken_down_for_another_endpoint) {
  const auto configuration = connected();
  const auto before = world().program().connections().size();
  configuration->protocolConfiguration = protocolOf(NetworkManagerWorld::service, "https://dns.example/new");
  EXPECT_EQ(save(*configuration), std::nullopt);
  EXPECT_THAT(announced, IsEmpty());
  EXPECT_TRUE(configuration->connection().startTunnel());
  listed();
  EXPECT_THAT(announced, IsEmpty());
  EXPECT_EQ(world().program().connections().size(), before);
  EXPECT_EQ(property("vpn.data"), "dohEndpoint = https\\://dns.example/new");
}

TEST_F(NetworkManagerTest, a_tunnel_that_is_up_is_left_alone_by_another_save_of_the_same_and_another_start) {
  const auto configuration = connected();
  const auto before = world().program().connections().size();
  EXPECT_EQ(save(*configuration), std::nullopt);
  EXPECT_TRUE(configuration->connection().startTunnel());
  listed();
  EXPECT_THAT(announced, IsEmpty());
  EXPECT_EQ(world().program().connections().size(), before);
}

TEST_F(NetworkManagerTest, connections_of_other_services_are_ignored) {
  const auto profiles = [] {
    std::string text;
    for (const char* name : {"wire", "Office"}) {
      text += world().nmcli({"-s", "connection", "show", name});
    }
    return text;
  };
  world().nmcli({"connection", "add", "type", "vpn", "vpn-type", NetworkManagerWorld::foreignService,
                 "con-name", "Office", "vpn.data", "gateway=office"});
  EXPECT_THAT(listed(), IsEmpty());
  world().nmcli({"connection", "up", "Office"});
  const auto before = profiles();

  auto foreign = make(endpoint, NetworkManagerWorld::foreignService);
  EXPECT_NE(save(*foreign), std::nullopt);
  foreign->protocolConfiguration.reset();
  EXPECT_NE(save(*foreign), std::nullopt);
  EXPECT_THAT(announced, IsEmpty());
  const auto configuration = connected();
  EXPECT_EQ(listed().size(), 1U);
  EXPECT_EQ(profiles(), before);
}

TEST_F(NetworkManagerTest, a_connection_that_now_belongs_to_another_service_is_left_alone) {
  const auto configuration = saved();
  world().nmcli(
      {"connection", "modify", "Protection", "vpn.service-type", NetworkManagerWorld::foreignService});
  EXPECT_NE(save(*configuration), std::nullopt);
  EXPECT_NE(load(*configuration), std::nullopt);
  EXPECT_FALSE(configuration->connection().startTunnel());
  EXPECT_EQ(property("vpn.service-type"), NetworkManagerWorld::foreignService);
  EXPECT_THAT(listed(), IsEmpty());
  EXPECT_EQ(configuration->connection().status(), Status::invalid);
}

TEST_F(NetworkManagerTest, changes_made_with_nmcli_take_effect) {
  const auto configuration = saved();
  world().nmcli({"connection", "modify", "Protection", "connection.autoconnect", "no", "vpn.persistent", "no",
                 "connection.id", "Renamed", "vpn.data", "dohEndpoint=https://other.example/"});
  EXPECT_EQ(load(*configuration), std::nullopt);
  EXPECT_FALSE(configuration->isEnabled);
  EXPECT_FALSE(configuration->isOnDemandEnabled);
  EXPECT_TRUE(configuration->onDemandRules.empty());
  EXPECT_EQ(configuration->localizedDescription, "Renamed");
  EXPECT_EQ(configuration->protocolConfiguration,
            (TunnelProtocol{
                NetworkManagerWorld::service, "other.example", {{"dohEndpoint", "https://other.example/"}}}));
  EXPECT_EQ(said(configuration->connection().startTunnel()), "“Renamed” is switched off.");

  world().nmcli({"connection", "modify", "Renamed", "connection.autoconnect", "yes"});
  EXPECT_TRUE(configuration->connection().startTunnel());
  EXPECT_TRUE(becomes(Status::connected));
}

TEST_F(NetworkManagerTest, each_change_is_announced_once_whatever_caused_it) {
  const auto configuration = saved();
  world().nmcli({"connection", "up", "Protection"});
  EXPECT_TRUE(becomes(Status::connected));
  world().nmcli({"connection", "down", "Protection"});
  EXPECT_TRUE(becomes(Status::disconnected));
  listed();
  EXPECT_THAT(announced, ElementsAre(Status::connecting, Status::connected, Status::disconnecting,
                                     Status::disconnected));
}

TEST_F(NetworkManagerTest, a_status_that_was_there_before_is_listed_and_not_announced) {
  connected();
  makeMachine();
  EXPECT_EQ(listed().at(0)->connection().status(), Status::connected);
  listed();
  EXPECT_THAT(announced, IsEmpty());
}

TEST_F(NetworkManagerTest, a_dropped_tunnel_on_demand_is_brought_back_by_networkmanager) {
  connected();
  world().program().drop();
  EXPECT_TRUE(becomes(Status::connected));
  EXPECT_THAT(announced, ElementsAre(Status::disconnected, Status::connecting, Status::connected));
}

TEST_F(NetworkManagerTest, a_dropped_tunnel_can_be_started_again) {
  const auto configuration = connected(false);
  world().program().drop();
  EXPECT_TRUE(becomes(Status::disconnected));
  EXPECT_TRUE(configuration->connection().startTunnel());
  EXPECT_TRUE(becomes(Status::connected));
  EXPECT_THAT(announced, ElementsAre(Status::disconnected, Status::connecting, Status::connected));
}

TEST_F(NetworkManagerTest, a_connecting_tunnel_is_not_started_twice) {
  world().program().setSlow(true);
  const auto configuration = saved();
  const auto before = world().program().connections().size();
  EXPECT_TRUE(configuration->connection().startTunnel());
  EXPECT_TRUE(becomes(Status::connecting));
  EXPECT_TRUE(configuration->connection().startTunnel());
  listed();
  EXPECT_EQ(announced, std::vector{Status::connecting});
  EXPECT_LE(world().program().connections().size(), before + 1);
}

TEST_F(NetworkManagerTest, a_missing_tunnel_program_refuses_the_start_and_not_the_save) {
  makeMachine({}, "missing.tunnel");
  const auto configuration = make(endpoint, "missing.tunnel");
  EXPECT_EQ(save(*configuration), std::nullopt);
  announced.clear();
  EXPECT_EQ(said(configuration->connection().startTunnel()),
            "The VPN service 'missing.tunnel' was not installed.");
  listed();
  EXPECT_EQ(configuration->connection().status(), Status::disconnected);
}

TEST_F(NetworkManagerTest, without_a_network_the_start_is_refused_until_there_is_one) {
  const auto configuration = saved();
  world().nmcli({"connection", "down", "wire"});
  EXPECT_EQ(said(configuration->connection().startTunnel()), "Could not find source connection.");
  EXPECT_EQ(configuration->connection().status(), Status::disconnected);
  world().nmcli({"connection", "up", "wire"});
  EXPECT_TRUE(configuration->connection().startTunnel());
  EXPECT_TRUE(becomes(Status::connected));
}

TEST_F(NetworkManagerTest, a_lost_network_disconnects_the_tunnel) {
  const auto configuration = connected();
  world().nmcli({"connection", "down", "wire"});
  EXPECT_TRUE(becomes(Status::disconnected));
  EXPECT_EQ(announced.size(), 1U);
}

TEST_F(NetworkManagerTest, a_connection_deleted_from_outside_is_invalid_until_it_is_saved_again) {
  const auto configuration = connected();
  world().nmcli({"connection", "delete", "Protection"});
  EXPECT_TRUE(becomes(Status::invalid));
  EXPECT_THAT(listed(), IsEmpty());
  EXPECT_NE(load(*configuration), std::nullopt);
  EXPECT_EQ(configuration->localizedDescription, "Protection");
  EXPECT_FALSE(configuration->connection().startTunnel());
  announced.clear();

  EXPECT_EQ(save(*configuration), std::nullopt);
  EXPECT_EQ(announced, std::vector{Status::disconnected});
  EXPECT_TRUE(configuration->connection().startTunnel());
  EXPECT_TRUE(becomes(Status::connected));
}

TEST_F(NetworkManagerTest, a_restarted_networkmanager_is_found_again) {
  const auto configuration = connected();
  world().stop();
  EXPECT_TRUE(becomes(Status::disconnected));
  EXPECT_EQ(said(list()), "NetworkManager is not running.");
  EXPECT_EQ(said(save(*configuration)), "NetworkManager is not running.");
  EXPECT_EQ(said(load(*configuration)), "NetworkManager is not running.");
  EXPECT_EQ(said(configuration->connection().startTunnel()), "NetworkManager is not running.");

  world().start();
  EXPECT_EQ(load(*configuration), std::nullopt);
  EXPECT_EQ(listed().size(), 1U);
  announced.clear();
  EXPECT_TRUE(configuration->connection().startTunnel());
  EXPECT_TRUE(becomes(Status::connected));
  EXPECT_THAT(announced, ElementsAre(Status::connecting, Status::connected));
}

TEST_F(NetworkManagerTest, a_restarted_bus_is_joined_again) {
  auto relay = std::make_unique<BusRelay>(world().file("user-bus"), world().bus().socket());
  makeMachine({.busAddress = relay->address()});
  connected();
  relay.reset();
  EXPECT_TRUE(becomes(Status::disconnected));
  EXPECT_EQ(said(list()), "The system's message bus does not answer.");
  relay = std::make_unique<BusRelay>(world().file("user-bus"), world().bus().socket());
  EXPECT_EQ(listed().size(), 1U);
  EXPECT_TRUE(becomes(Status::connected));
}

TEST_F(NetworkManagerTest, a_hanging_networkmanager_is_an_error_and_works_again_later) {
  makeMachine({.timeout = 300ms, .startTimeout = 20ms});
  const auto configuration = saved();
  const auto process = world().process();
  kill(process, SIGSTOP);
  EXPECT_EQ(said(list()), "NetworkManager does not answer.");
  EXPECT_TRUE(configuration->connection().startTunnel());
  EXPECT_EQ(said(load(*configuration)), "NetworkManager does not answer.");
  EXPECT_THAT(announced, IsEmpty());
  kill(process, SIGCONT);
  world().nmcli({"general"});
  EXPECT_EQ(listed().size(), 1U);
}

TEST_F(NetworkManagerTest, a_forged_signal_is_ignored) {
  connected();
  const auto liar = sdbus::createSessionBusConnectionWithAddress(world().bus().address());
  const auto path =
      world().nmcli({"-g", "GENERAL.DBUS-PATH", "connection", "show", "--active", "Protection"});
  ASSERT_TRUE(path.starts_with("/org/freedesktop/NetworkManager/ActiveConnection/")) << path;
  std::vector<std::string> everybody;
  sdbus::createProxy(*liar, "org.freedesktop.DBus", "/org/freedesktop/DBus")
      ->callMethod("ListNames")
      .onInterface("org.freedesktop.DBus")
      .storeResultsTo(everybody);
  const auto object = sdbus::createObject(*liar, path);
  for (const auto& one : everybody) {
    auto lie = object->createSignal("org.freedesktop.DBus.Properties", "PropertiesChanged");
    lie.setDestination(one);
    lie << std::string("org.freedesktop.NetworkManager.Connection.Active")
        << std::map<std::string, sdbus::Variant>{{"State", std::uint32_t{4}}} << std::vector<std::string>();
    object->emitSignal(lie);
  }
  world().nmcli({"connection", "down", "Protection"});
  EXPECT_TRUE(becomes(Status::disconnected));
  EXPECT_THAT(announced, ElementsAre(Status::disconnecting, Status::disconnected));
}

TEST_F(NetworkManagerTest, a_service_destroyed_with_work_under_way_leaves_its_configurations_harmless) {
  const auto configuration = saved();
  bool told = false;
  configuration->save([&](const auto&) { told = true; });
  makeMachine();
  configuration->load([&](const auto&) { told = true; });
  EXPECT_FALSE(configuration->connection().startTunnel());
  EXPECT_EQ(listed().size(), 1U);
  EXPECT_FALSE(told);
}

TEST_F(NetworkManagerTest, a_service_destroyed_during_a_prompt_calls_no_completion) {
  auto relay = std::make_unique<BusRelay>(world().file("user-bus"), world().bus().socket());
  makeMachine({.busAddress = relay->address()});
  world().permissions().hold();
  const auto first = make(endpoint);
  const auto second = make("https://dns.example/new");
  bool told = false;
  first->save([&](const auto&) { told = true; });
  second->save([&](const auto&) { told = true; });
  ASSERT_TRUE(world().permissions().waitUntilAsked());
  makeMachine();
  world().permissions().grant(true);
  first->save([&](const auto&) { told = true; });
  EXPECT_TRUE(list().ok());
  EXPECT_FALSE(told);
}

// A bus on which a fake owns NetworkManager's name.
class StrangeManagerTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(bus_.running()); }

  template <class Answer>
  void answerLists(Answer answer) {
    object_ = sdbus::createObject(*connection_, "/org/freedesktop/NetworkManager/Settings");
    object_->registerMethod("ListConnections")
        .onInterface("org.freedesktop.NetworkManager.Settings")
        .implementedAs([answer] { return answer; });
    object_->finishRegistration();
    connection_->requestName("org.freedesktop.NetworkManager");
    connection_->enterEventLoopAsync();
  }
  Result<TunnelService::Configurations> list() {
    Machine machine({.busAddress = bus_.address()});
    return machine.await<Result<TunnelService::Configurations>>(
        [&](auto completion) { machine.service().loadAll(std::move(completion)); });
  }

 private:
  const TemporaryDirectory directory_;
  const PrivateBus bus_{directory_.path()};
  const std::unique_ptr<sdbus::IConnection> connection_ =
      sdbus::createSessionBusConnectionWithAddress(bus_.address());
  std::unique_ptr<sdbus::IObject> object_;
};

TEST_F(StrangeManagerTest, an_answer_of_another_shape_is_an_error) {
  answerLists(std::string("none"));
  const auto result = list();
  ASSERT_FALSE(result.ok());
  EXPECT_FALSE(result.error().localizedDescription().empty());
}

TEST_F(StrangeManagerTest, a_manager_without_the_rest_has_no_connections) {
  answerLists(std::vector<sdbus::ObjectPath>{sdbus::ObjectPath("/gone")});
  const auto result = list();
  ASSERT_TRUE(result.ok());
  EXPECT_THAT(result.value(), IsEmpty());
}

TEST(MuteBusTest, a_silent_bus_is_an_error) {
  const TemporaryDirectory directory;
  const auto path = directory.path() / "mute";
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.string().copy(static_cast<char*>(address.sun_path), sizeof address.sun_path - 1);
  const FileDescriptor listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  ASSERT_EQ(bind(listener.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(listen(listener.get(), 4), 0);
  Machine machine({.busAddress = "unix:path=" + path.string(), .timeout = 20ms});
  const auto result = machine.await<Result<TunnelService::Configurations>>(
      [&](auto completion) { machine.service().loadAll(std::move(completion)); });
  ASSERT_FALSE(result.ok());
  EXPECT_EQ(result.error().localizedDescription(), "The system's message bus does not answer.");
}

TEST_F(NetworkManagerTest, the_doctor_reports_whether_it_runs) {
  const auto& bus = world().bus();
  const auto running = doctor::lookAtNetworkManager(bus.address());
  EXPECT_TRUE(running.works);
  EXPECT_EQ(running.words, "version " + world().nmcli({"-g", "VERSION", "general", "status"}) + " runs.");
  world().stop();
  const auto stopped = doctor::lookAtNetworkManager(bus.address());
  EXPECT_FALSE(stopped.works);
  EXPECT_THAT(stopped.words, testing::StartsWith("does not answer ("));
  world().start();
}

}  // namespace
}  // namespace quillmar
