#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "app/quillmar_app.h"
#include "app/role_selection_view.h"
#include "app/session/appearance_manager.h"
#include "child/child_enrollment_view.h"
#include "child/child_home_view.h"
#include "testing/test_application.h"

namespace quillmar {
namespace {

using Names = std::vector<std::string>;

StoredSettings with(StoredSettings stored, std::string_view key, SettingValue value) {
  stored.insert_or_assign(key, std::move(value));
  return stored;
}

TEST(RootScreen, follows_from_role_session_and_enrollment) {
  using Row = std::tuple<DeviceRole, bool, bool, RootScreen>;
  const auto rows = std::to_array<Row>({
      {DeviceRole::unset, false, false, RootScreen::roleSelection},
      {DeviceRole::unset, true, true, RootScreen::roleSelection},
      {DeviceRole::parent, false, true, RootScreen::login},
      {DeviceRole::parent, true, true, RootScreen::deviceList},
      {DeviceRole::parent, true, false, RootScreen::deviceList},
      {DeviceRole::child, true, false, RootScreen::childEnrollment},
      {DeviceRole::child, false, true, RootScreen::childHome},
      {DeviceRole::child, true, true, RootScreen::childHome},
  });
  for (const auto& [role, isLoggedIn, isEnrolled, expected] : rows) {
    EXPECT_EQ(rootScreenFor(role, isLoggedIn, isEnrolled), expected);
  }
}

TEST(ApplicationRoot, loads_the_state_objects_in_a_fixed_order) {
  // Records the keys that are read: role, region, session, enrollment and appearance, in this order.
  class AskedStore final : public SettingsStore {
   public:
    std::optional<SettingValue> object(std::string_view key) const override {
      asked.emplace_back(key);
      return std::nullopt;
    }
    void set(std::string_view /*key*/, SettingValue /*value*/) override {}
    void remove(std::string_view /*key*/) override {}
    void writeTogether(const std::function<void()>& writes) override { writes(); }
    void synchronize() override {}
    void scrub() override {}
    std::map<std::string, SettingValue> all() const override { return {}; }
    mutable Names asked;
  };
  FakePlatform machine;
  AskedStore store;
  const auto ports = machine.with({.settings = store,
                                   .http = machine.http,
                                   .dispatch = machine.dispatch,
                                   .log = machine.log,
                                   .tunnel = machine.tunnel});
  QuillmarApp app(ports, Deployments::all("https://au.example"));
  EXPECT_TRUE(store.asked.empty()) << "nothing is loaded before the scene is built";
  app.launch();
  EXPECT_EQ(store.asked,
            (Names{"com.quillmar.deviceRole", "com.quillmar.region", "authToken", "child_isEnrolled",
                   "child_deviceID", "child_dohEndpoint", "child_dohBaseUrl", "appearanceMode"}));
}

TEST(ApplicationRoot, sets_up_the_bars_once_before_loading) {
  FakePlatform machine;
  const QuillmarApp app(machine.ports(), Deployments::all("https://au.example"));
  EXPECT_EQ(machine.windowStyle.barAppearances, std::vector{barAppearance()});
}

TEST(ApplicationRoot, the_delegate_has_the_objects_after_the_root_has_appeared) {
  FakePlatform machine;
  for (const auto& [key, value] : asEnrolledChild()) {
    machine.settings.set(key, value);
  }
  QuillmarApp app(machine.ports(), Deployments::all("https://au.example"));
  app.applicationDidBecomeActive();
  machine.dispatch.settle();
  EXPECT_TRUE(machine.http.requests().empty());
  app.launch();
  EXPECT_FALSE(app.appDelegate().childAppState.expired());
  EXPECT_FALSE(app.appDelegate().roleManager.expired());
}

TEST(ApplicationRoot, a_signed_in_parent_sees_the_dashboard) {
  TestApplication app(with(asParent(), settings::authToken, std::string("t")));
  EXPECT_EQ(app.screenNames(), Names{"DeviceListView"});
}

TEST(ApplicationRoot, a_parent_who_logs_out_keeps_role_and_region) {
  TestApplication app(with(asParent(), settings::authToken, std::string("t")));
  app.environment().authState()->logout();
  app.settle();
  EXPECT_EQ(app.screenNames(), Names{"LoginView"});
  EXPECT_EQ(app.environment().roleManager()->currentRole(), DeviceRole::parent);
  EXPECT_EQ(app.machine.settings.string("com.quillmar.region"), "australia");
}

TEST(ApplicationRoot, a_changed_value_switches_the_root_and_an_equal_value_does_not) {
  TestApplication app(asEnrolledChild());
  const auto home = app.find<ChildHomeView>();
  app.child().isEnrolled = true;
  app.settle();
  EXPECT_EQ(app.find<ChildHomeView>(), home) << "the same screen stays up";
  app.child().resetEnrollment();
  EXPECT_EQ(app.app().contentView().root(), RootScreen::childEnrollment);
  app.settle();
  EXPECT_EQ(app.screenNames(), Names{"ChildEnrollmentView"});
  EXPECT_FALSE(home->isOnScreen());
}

TEST(ApplicationRoot, the_token_is_checked_only_when_the_scene_becomes_active) {
  TestApplication app(with(with(asParent(), settings::authToken, std::string("t")),
                           settings::authTokenTimestamp, VirtualDispatch::defaultStart));
  const auto checks = [&] {
    return app.machine.log.countPrinted("[AuthState] Token is 0 hours old, no refresh needed");
  };
  ASSERT_EQ(checks(), 1) << "loading the session checks once";
  app.app().setScenePhase(ScenePhase::active);
  EXPECT_EQ(checks(), 2);
  app.app().setScenePhase(ScenePhase::active);
  EXPECT_EQ(checks(), 2) << "no change, no check";
  app.app().setScenePhase(ScenePhase::inactive);
  app.app().setScenePhase(ScenePhase::background);
  EXPECT_EQ(checks(), 2);
  app.app().setScenePhase(ScenePhase::active);
  EXPECT_EQ(checks(), 3);
}

TEST(ApplicationRoot, the_token_check_on_a_childs_device_does_nothing_without_a_session) {
  TestApplication app(asNewChild());
  app.app().setScenePhase(ScenePhase::active);
  app.settle();
  EXPECT_TRUE(app.machine.http.requests().empty());
}

TEST(ApplicationRoot, activation_starts_nothing_for_a_parent_or_an_unenrolled_child) {
  for (const auto& stored : {asParent(), asNewChild(), StoredSettings(),
                             with(asEnrolledChild(), settings::deviceRole, std::string("parent"))}) {
    TestApplication app(stored);
    app.app().applicationDidBecomeActive();
    app.advance(std::chrono::minutes(5));
    EXPECT_TRUE(app.machine.http.requests().empty());
    EXPECT_TRUE(app.machine.tunnel.calls().empty());
  }
}

TEST(ApplicationRoot, a_second_activation_restarts_the_timers_without_duplicates) {
  TestApplication app(asEnrolledChild());
  app.settle();
  app.advance(std::chrono::seconds(30));
  app.app().applicationDidBecomeActive();
  app.settle();
  app.machine.http.forgetRequests();
  app.advance(std::chrono::seconds(59));
  EXPECT_EQ(app.machine.http.count("POST", "/device/checkin"), 0U);
  app.advance(std::chrono::seconds(1));
  EXPECT_EQ(app.machine.http.count("POST", "/device/checkin"), 1U);
}

TEST(ApplicationRoot, going_to_the_background_stops_nothing) {
  TestApplication app(asEnrolledChild());
  app.app().setScenePhase(ScenePhase::active);
  app.settle();
  app.app().appDelegate().applicationWillResignActive();
  app.app().appDelegate().applicationDidEnterBackground();
  app.app().setScenePhase(ScenePhase::background);
  app.machine.http.forgetRequests();
  app.advance(std::chrono::minutes(3));
  EXPECT_EQ(app.machine.http.count("POST", "/device/checkin"), 3U);
}

TEST(ApplicationRoot, two_applications_in_one_process_are_independent) {
  TestApplication parent(asParent());
  TestApplication child(asEnrolledChild());
  child.child().resetEnrollment();
  child.settle();
  parent.settle();
  EXPECT_EQ(parent.screenNames(), Names{"LoginView"});
  EXPECT_EQ(child.screenNames(), Names{"ChildEnrollmentView"});
  EXPECT_NE(&parent.environment(), &child.environment());
  EXPECT_FALSE(parent.child().isEnrolled());
}

}  // namespace
}  // namespace quillmar
