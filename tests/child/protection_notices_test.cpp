#include "child/protection_notices.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "app/session/role_manager.h"
#include "child/protection_actions.h"
#include "testing/fake_notifications.h"
#include "testing/test_application.h"

namespace quillmar {
namespace {

using namespace std::chrono_literals;
using Names = std::vector<std::string>;

const std::string down = "Protection Is Down";
const std::string back = "Protection Is Back";
const std::string closed = "Quillmar Is Still Running";

struct Notices : testing::Test {
  explicit Notices(const StoredSettings& stored = asEnrolledChild()) : app(stored) { app.settle(); }

  void start(bool isOn = true) {
    notices = std::make_unique<ProtectionNotices>(app.environment(), desktop, isOn);
    app.settle();
  }
  void setTunnel(TunnelStatus status) {
    app.machine.tunnel.setStatus(status);
    app.settle();
  }
  void goUp() { setTunnel(TunnelStatus::connected); }
  void goDown() { setTunnel(TunnelStatus::disconnected); }
  void startUp() {
    start();
    goUp();
  }
  Names told() const { return desktop.titles(); }

  TestApplication app;
  FakeNotifications desktop;
  std::unique_ptr<ProtectionNotices> notices;
};

TEST_F(Notices, the_first_connection_is_not_told) {
  start();
  setTunnel(TunnelStatus::connecting);
  goUp();
  app.advance(10min);
  EXPECT_EQ(told(), Names());
}

TEST_F(Notices, a_device_that_never_came_up_is_not_told_to_be_down) {
  start();
  setTunnel(TunnelStatus::connecting);
  goDown();
  app.advance(10min);
  EXPECT_EQ(told(), Names());
}

TEST_F(Notices, going_down_and_coming_back_are_told_once_each) {
  startUp();
  goDown();
  EXPECT_EQ(told(), Names{down});
  app.advance(5min);
  EXPECT_EQ(told(), Names{down}) << "the same state is no news";
  goUp();
  EXPECT_EQ(told(), (Names{down, back}));
  app.advance(5min);
  EXPECT_EQ(told(), (Names{down, back}));
}

TEST_F(Notices, the_news_replaces_what_is_no_longer_true) {
  startUp();
  goDown();
  app.advance(5min);
  goUp();
  EXPECT_EQ(
      desktop.visible,
      (std::vector{Notification{
          .id = "protection", .title = back, .body = "The internet on this device is protected again."}}));
}

TEST_F(Notices, reconnecting_is_not_yet_back) {
  startUp();
  goDown();
  app.advance(5min);
  setTunnel(TunnelStatus::connecting);
  EXPECT_EQ(told(), Names{down});
}

TEST_F(Notices, a_change_within_a_minute_waits_for_its_end) {
  startUp();
  goDown();
  app.advance(10s);
  goUp();
  app.advance(49900ms);
  EXPECT_EQ(told(), Names{down});
  app.advance(100ms);
  EXPECT_EQ(told(), (Names{down, back}));
}

TEST_F(Notices, a_state_that_has_passed_by_the_end_of_the_minute_is_not_told) {
  startUp();
  goDown();
  app.advance(10s);
  goUp();
  goDown();
  app.advance(5min);
  EXPECT_EQ(told(), Names{down});
}

TEST_F(Notices, a_flapping_tunnel_is_told_at_most_once_a_minute) {
  startUp();
  for (int change = 0; change < 120; ++change) {
    change % 2 == 0 ? goDown() : goUp();
    app.advance(7s);
  }
  // 120 changes take 14 minutes.
  EXPECT_GE(told().size(), 2U);
  EXPECT_LE(told().size(), 14U);
  for (std::size_t i = 0; i < told().size(); ++i) {
    EXPECT_EQ(told()[i], i % 2 == 0 ? down : back) << i;
  }
}

TEST_F(Notices, a_reset_is_the_persons_wish_and_no_news) {
  startUp();
  resetEnrollment(app.environment());
  goDown();
  app.advance(5min);
  EXPECT_EQ(told(), Names());
}

TEST_F(Notices, a_reset_ends_what_waits) {
  startUp();
  goDown();
  goUp();
  resetEnrollment(app.environment());
  app.advance(5min);
  EXPECT_EQ(told(), Names{down});
}

TEST_F(Notices, a_closed_window_is_told) {
  startUp();
  notices->windowClosed();
  EXPECT_EQ(desktop.visible,
            (std::vector{
                Notification{.id = "window",
                             .title = closed,
                             .body = "The window is closed. Quillmar goes on working in the background."}}));
}

TEST_F(Notices, a_window_that_is_closed_again_within_a_minute_is_not_told_again) {
  startUp();
  notices->windowClosed();
  app.advance(59900ms);
  notices->windowClosed();
  EXPECT_EQ(told(), Names{closed});
  app.advance(100ms);
  notices->windowClosed();
  EXPECT_EQ(told(), (Names{closed, closed}));
}

TEST_F(Notices, a_closed_window_does_not_delay_a_change) {
  startUp();
  notices->windowClosed();
  goDown();
  EXPECT_EQ(told(), (Names{closed, down}));
}

TEST_F(Notices, the_switch_silences_all) {
  startUp();
  notices->flip();
  EXPECT_FALSE(notices->isOn());
  goDown();
  notices->windowClosed();
  app.advance(5min);
  EXPECT_EQ(told(), Names());
}

TEST_F(Notices, the_switch_silences_what_waits) {
  startUp();
  goDown();
  goUp();
  notices->isOn.input(false);
  app.advance(5min);
  EXPECT_EQ(told(), Names{down});
}

TEST_F(Notices, turning_the_switch_on_tells_only_later_changes) {
  start(false);
  goUp();
  goDown();
  notices->flip();
  app.advance(5min);
  EXPECT_EQ(told(), Names());
  goUp();
  EXPECT_EQ(told(), Names()) << "nobody was told that it was down";
  goDown();
  EXPECT_EQ(told(), Names{down});
}

TEST_F(Notices, the_switch_does_not_shorten_the_minute) {
  startUp();
  goDown();
  notices->flip();
  goUp();
  notices->flip();
  app.advance(30s);
  goDown();
  EXPECT_EQ(told(), Names{down});
}

TEST_F(Notices, nothing_is_told_once_they_are_gone) {
  startUp();
  goDown();
  goUp();
  notices.reset();
  app.advance(5min);
  EXPECT_EQ(told(), Names{down});
}

struct NewDeviceNotices : Notices {
  NewDeviceNotices() : Notices(asNewChild()) {}
};

TEST_F(NewDeviceNotices, a_device_without_an_enrollment_tells_nothing) {
  start();
  notices->windowClosed();
  EXPECT_EQ(told(), Names());
}

TEST_F(NewDeviceNotices, a_device_that_is_enrolled_later_is_watched) {
  start();
  app.child().saveEnrollment("device-1", "https://dns.example/d1", std::nullopt,
                             std::string(TestApplication::serviceRoot));
  app.advance(2s);
  goUp();
  goDown();
  EXPECT_EQ(told(), Names{down});
}

struct ParentNotices : Notices {
  ParentNotices() : Notices(asParent()) {}
};

TEST_F(ParentNotices, a_parents_device_tells_nothing_and_touches_no_tunnel) {
  start();
  notices->windowClosed();
  app.advance(1min);
  EXPECT_EQ(told(), Names());
  EXPECT_TRUE(app.machine.tunnel.calls().empty());
}

}  // namespace
}  // namespace quillmar
