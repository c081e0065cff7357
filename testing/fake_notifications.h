#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "platform/notifications.h"

namespace quillmar {

class FakeNotifications final : public Notifications {
 public:
  void show(const Notification& notification) override {
    all.push_back(notification);
    std::erase_if(visible, [&](const Notification& former) { return former.id == notification.id; });
    visible.push_back(notification);
  }
  std::vector<std::string> titles() const {
    std::vector<std::string> found;
    for (const auto& notification : all) {
      found.push_back(notification.title);
    }
    return found;
  }

  // All calls, and the notifications still visible.
  std::vector<Notification> all;
  std::vector<Notification> visible;
};

}  // namespace quillmar
