#include "child/protection_notices.h"

#include <chrono>
#include <utility>

#include "app/session/role_manager.h"
#include "child/child_app_state.h"
#include "child/vpn_dns_manager.h"

namespace quillmar {
namespace {

// Both changes have the same id, so that a new notice replaces one that no longer holds.
Notification changeNotice(bool isUp) {
  return isUp ? Notification{.id = "protection",
                             .title = "Protection Is Back",
                             .body = "The internet on this device is protected again."}
              : Notification{
                    .id = "protection",
                    .title = "Protection Is Down",
                    .body = "The internet on this device is not protected. Quillmar is reconnecting."};
}

Notification closingNotice() {
  return {.id = "window",
          .title = "Quillmar Is Still Running",
          .body = "The window is closed. Quillmar goes on working in the background."};
}

}  // namespace

ProtectionNotices::ProtectionNotices(Environment& environment, Notifications& notifications, bool isOn)
    : ObservableObject("ProtectionNotices"),
      isOn(*this, "isOn", isOn),
      environment_(environment),
      notifications_(notifications),
      role_(environment.roleManager()),
      child_(environment.childAppState()),
      roleReaction_(role_->currentRole.onChange([this] { watch(); })),
      enrollmentReaction_(child_->isEnrolled.onChange([this] { watch(); })),
      switchReaction_(this->isOn.onChange([this] { watch(); })) {
  watch();
}

ProtectionNotices::~ProtectionNotices() = default;

void ProtectionNotices::windowClosed() {
  if (isTelling() && !quietAfterClosing_) {
    quietAfterClosing_ = minuteThen([this] { quietAfterClosing_.reset(); });
    notifications_.show(closingNotice());
  }
}

bool ProtectionNotices::isTelling() const {
  return isOn() && role_->currentRole() == DeviceRole::child && child_->isEnrolled();
}

// The tunnel service is not touched on a device that is not a child's.
void ProtectionNotices::watch() {
  if (!isTelling()) {
    connectionReaction_.cancel();
    knownUp_.reset();
    return;
  }
  vpn_ = environment_.vpnManager();
  connectionReaction_ = vpn_->isConnected.onChange([this] { follow(); });
  follow();
}

void ProtectionNotices::follow() {
  if (!isTelling() || quietAfterChange_) {
    return;
  }
  const bool isUp = vpn_->isConnected();
  if (!knownUp_) {
    knownUp_ = isUp ? std::optional(true) : std::nullopt;
  } else if (isUp != *knownUp_) {
    knownUp_ = isUp;
    quietAfterChange_ = minuteThen([this] {
      quietAfterChange_.reset();
      follow();
    });
    notifications_.show(changeNotice(isUp));
  }
}

std::unique_ptr<Timer> ProtectionNotices::minuteThen(Task task) {
  return environment_.platform().dispatch.scheduleRepeating(std::chrono::minutes(1), std::move(task));
}

}  // namespace quillmar
