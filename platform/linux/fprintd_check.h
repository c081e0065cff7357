#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/signal.h"
#include "platform/biometric_check.h"
#include "platform/dispatch.h"
#include "platform/linux/bus_names.h"

namespace quillmar {

// Fingerprints through fprintd. Available if there is a reader and this user has enrolled a finger. A check
// claims the reader, verifies one finger and releases the reader in every case; then the reply comes. An
// unreadable finger may be retried; a wrong one ends the check. A check during another one fails.
//
// Error codes: -1 wrong finger, -2 cancelled, -3 password requested instead, -4 ended by the system, -6 no
// working reader, no fprintd or no permission, -7 no finger enrolled, -8 locked for some minutes after too
// many wrong fingers. Operations on the main thread; replies come on another thread.
class FprintdCheck final : public BiometricCheck {
 public:
  struct Options {
    // Always the system bus, whatever the environment says, because its answers are trusted.
    std::string busAddress = systemBusAddress;
    // For each reply of fprintd during a check.
    std::chrono::milliseconds timeout{1500};
    // For a reply of an fprintd that may have to be started first. Nothing blocks meanwhile.
    std::chrono::milliseconds startupTimeout{std::chrono::seconds(30)};
    // For a finger.
    std::chrono::milliseconds fingerTimeout{std::chrono::minutes(1)};
    int wrongFingers = 5;
    std::chrono::milliseconds lockTime{std::chrono::minutes(5)};
  };

  explicit FprintdCheck(Dispatch& dispatch);
  FprintdCheck(Dispatch& dispatch, const Options& options);
  ~FprintdCheck() override;

  // Asks fprintd on the first call only.
  bool canEvaluate() override;
  Subscription observeAnswer(const std::function<void()>& observer) override;
  int biometryType() override { return 1; }
  void evaluate(std::string_view reason, std::function<void(BiometricReply)> reply) override;

  // The user's answers to the prompt. Ignored without a running check.
  void cancel();
  void enterPassword();

  // The reason to show while the reader waits for a finger, else nullopt.
  using Prompt = std::optional<std::string>;
  Subscription observePrompt(std::function<void(const Prompt&)> observer);

 private:
  class Reader;
  using PromptSignal = Signal<const Prompt&>;

  Dispatch& dispatch_;
  struct Answer {
    bool isAskedFor = false;
    bool isUsable = false;
    Signal<> given;
  };

  const std::chrono::milliseconds fingerTimeout_;
  const std::shared_ptr<Answer> answer_ = std::make_shared<Answer>();
  const std::shared_ptr<PromptSignal> prompt_;
  const std::shared_ptr<Reader> reader_;  // owned by the main thread only
  std::uint64_t lastCheck_ = 0;
};

}  // namespace quillmar
