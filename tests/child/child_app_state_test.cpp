#include "child/child_app_state.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "testing/memory_settings_store.h"
#include "testing/virtual_dispatch.h"

namespace quillmar {
namespace {

struct ChildState : testing::Test {
  VirtualDispatch dispatch;
  MemorySettingsStore settings;
  ChildAppState state{settings, dispatch};

  // The names of the announced fields, in order, from now on.
  std::vector<std::string> announced;
  Subscription listening =
      state.observe([this](const Member& member) { announced.emplace_back(member.name()); });
};

using Names = std::vector<std::string>;

TEST_F(ChildState, a_first_launch_has_the_initial_values_and_writes_nothing) {
  EXPECT_FALSE(state.isEnrolled());
  EXPECT_EQ(state.deviceID(), "");
  EXPECT_EQ(state.dohEndpoint(), "");
  EXPECT_EQ(state.dohBaseUrl(), "");
  EXPECT_FALSE(state.isConnectedToServer());
  EXPECT_EQ(state.lastCheckinTime(), std::nullopt);
  EXPECT_FALSE(state.isDohConfigured());
  EXPECT_EQ(state.dohConfigWarning(), "");
  EXPECT_EQ(settings.writes(), 0);
}

TEST_F(ChildState, inconsistent_values_are_loaded_unchanged) {
  settings.set("child_isEnrolled", true);
  const ChildAppState loaded(settings, dispatch);
  EXPECT_TRUE(loaded.isEnrolled());
  EXPECT_EQ(loaded.dohEndpoint(), "");
}

TEST_F(ChildState, loading_keeps_values_that_are_not_stored) {
  state.isConnectedToServer = true;
  state.dohConfigWarning = "warning";
  state.loadState();
  EXPECT_TRUE(state.isConnectedToServer());
  EXPECT_EQ(state.dohConfigWarning(), "warning");
}

TEST_F(ChildState, an_enrollment_is_announced_in_a_fixed_order) {
  state.saveEnrollment("d1", "https://dns.example/d1", "https://dns.example", "https://api.example");
  EXPECT_EQ(announced, (Names{"deviceID", "dohEndpoint", "isEnrolled", "dohBaseUrl"}));
}

TEST_F(ChildState, observers_see_the_enrollment_before_anything_is_stored) {
  bool sawNothingStored = false;
  const auto reaction = state.isEnrolled.onChange(
      [&] { sawNothingStored = settings.writes() == 0 && state.dohBaseUrl().empty(); });
  state.saveEnrollment("d1", "https://dns.example/d1", "https://dns.example", "https://api.example");
  EXPECT_TRUE(sawNothingStored);
}

TEST_F(ChildState, an_enrollment_survives_a_restart) {
  state.saveEnrollment("d1", "https://dns.example/d1", "https://dns.example", "https://api.example");
  const ChildAppState again(settings, dispatch);
  EXPECT_TRUE(again.isEnrolled());
  EXPECT_EQ(again.deviceID(), "d1");
  EXPECT_EQ(again.dohEndpoint(), "https://dns.example/d1");
  EXPECT_EQ(again.dohBaseUrl(), "https://dns.example");
  EXPECT_FALSE(again.isConnectedToServer());
  EXPECT_EQ(settings.string("com.quillmar.apiBaseURL"), "https://api.example");
}

TEST_F(ChildState, absent_urls_keep_the_values_of_an_earlier_enrollment) {
  state.saveEnrollment("d1", "https://dns.example/d1", "https://dns.example", "https://api.example");
  state.saveEnrollment("d2", "https://dns.example/d2", std::nullopt, std::nullopt);
  EXPECT_EQ(state.deviceID(), "d2");
  EXPECT_EQ(state.dohBaseUrl(), "https://dns.example");
  EXPECT_EQ(settings.string("child_dohBaseUrl"), "https://dns.example");
  EXPECT_EQ(settings.string("com.quillmar.apiBaseURL"), "https://api.example");
}

TEST_F(ChildState, a_checkin_without_an_endpoint_keeps_the_stored_one) {
  state.saveEnrollment("d1", "https://dns.example/d1", "https://dns.example", std::nullopt);
  state.updateEndpoint(std::nullopt, std::nullopt);
  EXPECT_EQ(state.dohEndpoint(), "https://dns.example/d1");
  EXPECT_EQ(settings.string("child_dohEndpoint"), "https://dns.example/d1");
  EXPECT_EQ(settings.string("child_dohBaseUrl"), "https://dns.example");
  EXPECT_TRUE(state.isConnectedToServer());
  EXPECT_EQ(state.lastCheckinTime(), dispatch.now());
}

TEST_F(ChildState, an_empty_endpoint_counts_as_present) {
  state.saveEnrollment("d1", "https://dns.example/d1", "https://dns.example", std::nullopt);
  state.updateEndpoint("", "");
  EXPECT_EQ(state.dohEndpoint(), "");
  EXPECT_EQ(settings.string("child_dohEndpoint"), "");
  EXPECT_EQ(state.dohBaseUrl(), "");
  EXPECT_EQ(settings.string("child_dohBaseUrl"), "");
}

TEST_F(ChildState, an_update_is_announced_in_a_fixed_order_with_this_devices_time) {
  dispatch.advance(std::chrono::seconds(7));
  state.updateEndpoint("https://dns.example/new", "https://new.example");
  EXPECT_EQ(announced, (Names{"dohEndpoint", "dohBaseUrl", "isConnectedToServer", "lastCheckinTime"}));
  EXPECT_EQ(state.lastCheckinTime(), VirtualDispatch::defaultStart + std::chrono::seconds(7));
}

TEST_F(ChildState, a_reset_announces_every_field_in_declaration_order) {
  state.saveEnrollment("d1", "https://dns.example/d1", "https://dns.example", "https://api.example");
  announced.clear();
  state.resetEnrollment();
  EXPECT_EQ(announced, (Names{"isEnrolled", "deviceID", "dohEndpoint", "dohBaseUrl", "isConnectedToServer",
                              "lastCheckinTime", "isDohConfigured", "dohConfigWarning"}));
}

TEST_F(ChildState, a_reset_publishes_before_removing) {
  state.saveEnrollment("d1", "https://dns.example/d1", std::nullopt, std::nullopt);
  bool wasStillStored = false;
  const auto reaction =
      state.isEnrolled.onChange([&] { wasStillStored = settings.boolean("child_isEnrolled"); });
  state.resetEnrollment();
  EXPECT_TRUE(wasStillStored);
}

TEST_F(ChildState, a_reset_keeps_the_root_and_the_role_but_no_enrollment) {
  settings.set("com.quillmar.deviceRole", std::string("child"));
  state.saveEnrollment("d1", "https://dns.example/d1", "https://dns.example", "https://api.example");
  state.updateEndpoint(std::nullopt, std::nullopt);
  state.isDohConfigured = true;
  state.dohConfigWarning = "warning";
  state.resetEnrollment();

  EXPECT_EQ(state.lastCheckinTime(), std::nullopt);
  EXPECT_FALSE(state.isDohConfigured());
  EXPECT_EQ(state.dohConfigWarning(), "");
  const auto left = settings.all();
  EXPECT_EQ(left.size(), 2U);
  EXPECT_EQ(settings.string("com.quillmar.apiBaseURL"), "https://api.example");
  EXPECT_EQ(settings.string("com.quillmar.deviceRole"), "child");
  const ChildAppState again(settings, dispatch);
  EXPECT_FALSE(again.isEnrolled());
  EXPECT_EQ(again.deviceID() + again.dohEndpoint() + again.dohBaseUrl(), "");
}

}  // namespace
}  // namespace quillmar
