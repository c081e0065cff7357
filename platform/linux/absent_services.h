#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/biometric_check.h"
#include "platform/dispatch.h"
#include "platform/haptics.h"
#include "platform/secure_item_store.h"
#include "platform/tunnel.h"

// What an ordinary run has in the place of services that this build can't reach yet. Each says so and
// pretends nothing.
namespace quillmar {

class AbsentTunnelService final : public TunnelService {
 public:
  explicit AbsentTunnelService(Dispatch& dispatch) : dispatch_(dispatch) {}

  void loadAll(ListCompletion completion) override {
    dispatch_.main().async([completion = std::move(completion)] { completion(absence()); });
  }
  std::shared_ptr<TunnelConfiguration> makeConfiguration() override {
    return std::make_shared<Configuration>(dispatch_);
  }
  Subscription observeStatus(std::function<void(TunnelConnection&)> /*never called*/) override { return {}; }

 private:
  static Error absence() { return TunnelError{"This build cannot reach a VPN service on this computer."}; }

  class Connection final : public TunnelConnection {
   public:
    TunnelStatus status() const override { return TunnelStatus::invalid; }
    Result<void> startTunnel() override { return absence(); }
  };

  class Configuration final : public TunnelConfiguration {
   public:
    explicit Configuration(Dispatch& dispatch) : dispatch_(dispatch) {}
    void save(Completion completion) override { refuse(std::move(completion)); }
    void load(Completion completion) override { refuse(std::move(completion)); }
    TunnelConnection& connection() override { return connection_; }

   private:
    void refuse(Completion completion) {
      dispatch_.main().async([completion = std::move(completion)] { completion(absence()); });
    }
    Dispatch& dispatch_;
    Connection connection_;
  };

  Dispatch& dispatch_;
};

class AbsentSecureItemStore final : public SecureItemStore {
 public:
  SecureItemStatus add(std::string_view /*service*/, std::string_view /*account*/,
                       std::string_view /*bytes*/) override {
    return SecureItemStatus::failed;
  }
  Found copyMatching(std::string_view /*service*/, std::string_view /*account*/) override { return {}; }
  SecureItemStatus remove(std::string_view /*service*/, std::string_view /*account*/) override {
    return SecureItemStatus::failed;
  }
};

class AbsentBiometricCheck final : public BiometricCheck {
 public:
  bool canEvaluate() override { return false; }
  int biometryType() override { return 0; }
  void evaluate(std::string_view /*reason*/, std::function<void(BiometricReply)> reply) override {
    reply({});
  }
};

class AbsentHaptics final : public Haptics {
 public:
  void play(HapticFeedback /*feedback*/) override {}
};

}  // namespace quillmar
