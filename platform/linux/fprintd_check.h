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

namespace quillmar {

// A finger on the machine's reader, through fprintd: possible when there is a reader and the person of this
// session has enrolled a finger. A check claims the reader, takes one finger, and releases the reader,
// however it ends; only then comes its reply. A finger that could not be read may be tried again, a wrong one
// ends the check. Checks come one at a time: another one meanwhile fails.
//
// Failures carry the platform's codes: -1 another finger, -2 cancelled, -3 the password is wanted instead, -4
// ended without anybody's doing, -6 no reader that works (or no fprintd, or no permission), -7 no finger
// enrolled, -8 too many wrong fingers, for some minutes. All operations on the main thread; replies come on
// another.
class FprintdCheck final : public BiometricCheck {
 public:
  struct Options {
    // The system's bus by default, whatever the environment says: what answers there is trusted.
    std::string busAddress = "unix:path=/run/dbus/system_bus_socket";
    // For each answer of fprintd during a check.
    std::chrono::milliseconds patience{1500};
    // For each answer of an fprintd that may have to be started first, while nobody waits.
    std::chrono::milliseconds answerPatience{std::chrono::seconds(30)};
    // How long the reader waits for a finger.
    std::chrono::milliseconds fingerPatience{std::chrono::minutes(1)};
    int wrongFingers = 5;
    std::chrono::milliseconds lockTime{std::chrono::minutes(5)};
  };

  explicit FprintdCheck(Dispatch& dispatch);
  FprintdCheck(Dispatch& dispatch, const Options& options);
  ~FprintdCheck() override;

  // Asks fprintd when it is first called, once and for all.
  bool canEvaluate() override;
  Subscription observeAnswer(const std::function<void()>& observer) override;
  int biometryType() override { return 1; }
  void evaluate(std::string_view reason, std::function<void(BiometricReply)> reply) override;

  // A person's answers to the prompt. Nothing happens when no check is under way.
  void cancel();
  void enterPassword();

  // The reason to show while the reader waits for a finger; nothing when it no longer does.
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

  const std::chrono::milliseconds fingerPatience_;
  const std::shared_ptr<Answer> answer_ = std::make_shared<Answer>();
  const std::shared_ptr<PromptSignal> prompt_;
  const std::shared_ptr<Reader> reader_;  // held by the main thread alone
  std::uint64_t lastCheck_ = 0;
};

}  // namespace quillmar
