#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "platform/simulated/simulated_tunnel.h"
#include "testing/fake_clipboard.h"
#include "testing/fake_notifications.h"
#include "testing/fake_qr_reader.h"
#include "testing/memory_secure_items.h"
#include "testing/virtual_dispatch.h"
#include "tests/contracts/clipboard_contract.h"
#include "tests/contracts/notifications_contract.h"
#include "tests/contracts/qr_reader_contract.h"
#include "tests/contracts/secure_item_store_contract.h"
#include "tests/contracts/tunnel_service_contract.h"

namespace quillmar {
namespace {

class MemorySecureItemsHarness final : public SecureItemStoreHarness {
 public:
  SecureItemStore& store() override { return store_; }
  void setLocked(bool locked) override { store_.setLocked(locked); }

 private:
  MemorySecureItems store_;
};

class SimulatedTunnelHarness final : public TunnelServiceHarness {
 public:
  SimulatedTunnelHarness() {
    service_.behaveLikePlatform([this](const std::function<void(bool)>& answer) {
      ++asked_;
      if (granted_) {
        answer(*granted_);
      } else {
        waiting_.push_back(answer);
      }
    });
  }

  TunnelService& service() override { return service_; }
  TunnelProtocol protocol(const std::string& endpoint) override {
    return {"example.tunnel", "dns.example", {{"dohEndpoint", endpoint}}};
  }
  bool isMainThread() override { return dispatch_.isMainThread(); }
  void onMain(std::function<void()> task) override { dispatch_.main().async(std::move(task)); }
  bool runUntil(const std::function<bool()>& done) override { return dispatch_.advanceUntil(done); }
  void holdPermission() override {
    granted_.reset();
    asked_ = 0;
  }
  void answerPermission(bool granted) override {
    granted_ = granted;
    for (const auto& answer : std::exchange(waiting_, {})) {
      answer(granted);
    }
  }
  bool waitUntilAsked() override {
    return runUntil([this] { return asked_ > 0; });
  }
  std::size_t timesAsked() override { return asked_; }

 private:
  std::optional<bool> granted_ = true;
  std::vector<std::function<void(bool)>> waiting_;
  std::size_t asked_ = 0;
  VirtualDispatch dispatch_;
  SimulatedTunnel service_{dispatch_};
};

class FakeReaderHarness final : public QRReaderHarness {
 public:
  QRReader& reader() override { return reader_; }
  bool isMainThread() override { return dispatch_.isMainThread(); }
  void settle() override { dispatch_.settle(); }
  void setCamera(CameraState state) override { reader_.setCamera(state); }
  void show(const CodeTexts& codes) override { reader_.show(objectsOf(codes)); }
  std::string picture(const CodeTexts& codes) override {
    reader_.picture = objectsOf(codes);
    return "/picture.png";
  }
  std::string noPicture() override {
    reader_.picture = Error(QRReaderError{"This is no picture."});
    return "/text.png";
  }
  void copy(const CodeTexts& codes) override { reader_.clipboard = objectsOf(codes); }
  void display(const CodeTexts& codes) override { reader_.screen = objectsOf(codes); }

 private:
  static RecognisedObjects objectsOf(const CodeTexts& codes) {
    RecognisedObjects objects;
    for (const auto& code : codes) {
      objects.push_back({.isQRCode = true, .text = code});
    }
    return objects;
  }

  VirtualDispatch dispatch_;
  FakeQRReader reader_{dispatch_};
};

class FakeDesktop final : public NotificationsHarness {
 public:
  Notifications& notifications() override { return notifications_; }
  std::vector<Notification> visibleAfter(std::size_t calls) override {
    EXPECT_EQ(notifications_.all.size(), calls);
    return notifications_.visible;
  }

 private:
  FakeNotifications notifications_;
};

INSTANTIATE_TEST_SUITE_P(Fake, ClipboardContract, testing::Values(factory<Clipboard, FakeClipboard>("fake")));
INSTANTIATE_TEST_SUITE_P(Fake, NotificationsContract,
                         testing::Values(factory<NotificationsHarness, FakeDesktop>("fake")));
INSTANTIATE_TEST_SUITE_P(Fake, QRReaderContract,
                         testing::Values(factory<QRReaderHarness, FakeReaderHarness>("fake")));
INSTANTIATE_TEST_SUITE_P(
    Memory, SecureItemStoreContract,
    testing::Values(factory<SecureItemStoreHarness, MemorySecureItemsHarness>("memory")));
INSTANTIATE_TEST_SUITE_P(Simulated, TunnelServiceContract,
                         testing::Values(factory<TunnelServiceHarness, SimulatedTunnelHarness>("simulated")));

}  // namespace
}  // namespace quillmar
