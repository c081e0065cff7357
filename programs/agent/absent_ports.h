#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "platform/biometric_check.h"
#include "platform/clipboard.h"
#include "platform/qr_reader.h"
#include "platform/secure_item_store.h"
#include "platform/window_style.h"

// The ports that a program in a terminal, or without one, does not have.
namespace quillmar::agent {

class AbsentSecureItems final : public SecureItemStore {
 public:
  SecureItemStatus add(std::string_view /*service*/, std::string_view /*account*/,
                       std::string_view /*bytes*/) override {
    return SecureItemStatus::failed;
  }
  Found copyMatching(std::string_view /*service*/, std::string_view /*account*/) override {
    return {.status = SecureItemStatus::notFound, .bytes = {}};
  }
  SecureItemStatus remove(std::string_view /*service*/, std::string_view /*account*/) override {
    return SecureItemStatus::notFound;
  }
};

class AbsentBiometrics final : public BiometricCheck {
 public:
  bool canEvaluate() override { return false; }
  int biometryType() override { return 0; }
  void evaluate(std::string_view /*reason*/, std::function<void(BiometricReply)> reply) override {
    reply({});
  }
};

class AbsentClipboard final : public Clipboard {
 public:
  void setString(std::string_view /*text*/) override {}
  std::string string() const override { return {}; }
};

class AbsentWindowStyle final : public WindowStyle {
 public:
  void setBarAppearance(const BarAppearance& /*appearance*/) override {}
  void setOverrideUserInterfaceStyle(UserInterfaceStyle /*style*/) override {}
};

class AbsentQRReader final : public QRReader {
 public:
  CameraState camera() const override { return CameraState::absent; }
  Subscription observeCamera(std::function<void()> /*changed*/) override { return {}; }
  void startRunning(BatchHandler /*handler*/) override {}
  void stopRunning() override {}
  void readPicture(const std::string& /*path*/, Reply reply) override { refuse(reply); }
  void readClipboard(Reply reply) override { refuse(reply); }
  void readScreen(Reply reply) override { refuse(reply); }

 private:
  static void refuse(const Reply& reply) { reply(Error(QRReaderError{"This program reads no codes."})); }
};

}  // namespace quillmar::agent
