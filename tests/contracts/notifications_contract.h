#pragma once

// What every Notifications promises:
//   INSTANTIATE_TEST_SUITE_P(Fake, NotificationsContract,
//                            testing::Values(factory<NotificationsHarness, FakeDesktop>("fake")));

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/notifications.h"
#include "tests/contracts/factory.h"

namespace quillmar {

// Notifications and the desktop that shows them.
class NotificationsHarness : public Harness {
 public:
  virtual Notifications& notifications() = 0;
  // The notifications visible on the desktop after this number of calls, oldest first.
  virtual std::vector<Notification> visibleAfter(std::size_t calls) = 0;
};

class NotificationsContract : public testing::TestWithParam<Factory<NotificationsHarness>> {
 protected:
  using Visible = std::vector<Notification>;

  std::unique_ptr<NotificationsHarness> desktop = GetParam()();
  Notifications& notifications = desktop->notifications();
};

TEST_P(NotificationsContract, shows_a_notification_with_its_texts) {
  const Notification notification{.id = "a", .title = "Zwölf 👨‍👩‍👧", .body = "two\nlines, %s"};
  notifications.show(notification);
  EXPECT_EQ(desktop->visibleAfter(1), Visible{notification});
}

TEST_P(NotificationsContract, shows_others_beside_it) {
  const Notification first{.id = "a", .title = "first", .body = "1"};
  const Notification second{.id = "b", .title = "second", .body = "2"};
  notifications.show(first);
  desktop->visibleAfter(1);
  notifications.show(second);
  EXPECT_EQ(desktop->visibleAfter(2), (Visible{first, second}));
}

TEST_P(NotificationsContract, replaces_the_one_with_the_same_id) {
  const Notification other{.id = "b", .title = "other", .body = "0"};
  const Notification later{.id = "a", .title = "later", .body = "2"};
  notifications.show({.id = "a", .title = "first", .body = "1"});
  desktop->visibleAfter(1);
  notifications.show(other);
  desktop->visibleAfter(2);
  notifications.show(later);
  EXPECT_EQ(desktop->visibleAfter(3), (Visible{other, later}));
}

TEST_P(NotificationsContract, shows_an_empty_body) {
  const Notification notification{.id = "a", .title = "title", .body = ""};
  notifications.show(notification);
  EXPECT_EQ(desktop->visibleAfter(1), Visible{notification});
}

}  // namespace quillmar
