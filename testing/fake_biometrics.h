#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/biometric_check.h"
#include "platform/dispatch.h"

namespace quillmar {

// Answers on a background queue, as the real check does. While `holding`, prompts stay up until `reply`.
class FakeBiometrics final : public BiometricCheck {
 public:
  explicit FakeBiometrics(Dispatch& dispatch) : dispatch_(dispatch) {}

  bool available = true;
  int type = 2;
  // What the next prompt, and each one after it, is answered with.
  BiometricReply answer{.success = true, .code = std::nullopt};
  bool holding = false;
  // The reasons of all prompts, in order.
  std::vector<std::string> prompts;

  bool canEvaluate() override { return available; }
  Subscription observeAnswer(const std::function<void()>& observer) override {
    return answered_.connect(observer);
  }
  // The device takes until now to say whether it can be used.
  void answerAvailability(bool isAvailable) {
    available = isAvailable;
    answered_.emit();
  }
  int biometryType() override { return type; }

  void evaluate(std::string_view reason, std::function<void(BiometricReply)> reply) override {
    prompts.emplace_back(reason);
    if (holding) {
      waiting_.push_back(std::move(reply));
    } else {
      send(std::move(reply), answer);
    }
  }

  // Answers every prompt that is up.
  void reply(BiometricReply answer) {
    for (auto& waiting : std::exchange(waiting_, {})) {
      send(std::move(waiting), answer);
    }
  }

 private:
  void send(std::function<void(BiometricReply)> reply, BiometricReply answer) {
    dispatch_.global(QualityOfService::userInitiated).async([reply = std::move(reply), answer] {
      reply(answer);
    });
  }

  Dispatch& dispatch_;
  Signal<> answered_;
  std::vector<std::function<void(BiometricReply)>> waiting_;
};

}  // namespace quillmar
