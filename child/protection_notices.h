#pragma once

#include <memory>
#include <optional>

#include "app/session/environment.h"
#include "foundation/observable.h"
#include "platform/dispatch.h"
#include "platform/notifications.h"

namespace quillmar {

class ChildAppState;
class RoleManager;
class VPNDNSManager;

// Tells the person at a child's device through the desktop that the protection went down or came back, and
// that the program continues without its window. The process of a window has one; the agent has none.
//
// Each change is told once, and at most one a minute. A state that ends within that minute is not told. The
// first connection is expected, so it is not told either.
class ProtectionNotices final : public ObservableObject {
 public:
  ProtectionNotices(Environment& environment, Notifications& notifications, bool isOn);
  ~ProtectionNotices() override;

  Input<bool> isOn;

  Text section{*this, "section", "Notifications"};
  Text title{*this, "title", "Protection Changes"};
  Text caption{
      *this, "caption",
      "Shows when protection goes down or comes back, and when Quillmar goes on without its window."};

  Action<> flip{*this, "flip", [this] { isOn = !isOn(); }};

  // Call it when the window was closed and the process continues.
  void windowClosed();

 private:
  bool isTelling() const;
  void watch();
  void follow();
  std::unique_ptr<Timer> minuteThen(Task task);

  Environment& environment_;
  Notifications& notifications_;
  const std::shared_ptr<RoleManager> role_;
  const std::shared_ptr<ChildAppState> child_;
  std::shared_ptr<VPNDNSManager> vpn_;
  // The state that the person knows; nullopt before the first connection.
  std::optional<bool> knownUp_;
  // While a timer runs, no further notice of its kind is shown.
  std::unique_ptr<Timer> quietAfterChange_;
  std::unique_ptr<Timer> quietAfterClosing_;
  Subscription roleReaction_;
  Subscription enrollmentReaction_;
  Subscription switchReaction_;
  Subscription connectionReaction_;
};

}  // namespace quillmar
