#include "platform/linux/fprintd_check.h"

#include <sdbus-c++/sdbus-c++.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/hop.h"
#include "platform/linux/bus_calls.h"
#include "platform/linux/bus_names.h"
#include "platform/linux/bus_signals.h"
#include "platform/linux/bus_thread.h"

namespace quillmar {
namespace {

using Clock = std::chrono::steady_clock;

// fprintd takes an empty name for the caller.
const std::string currentUser;
const std::string anyFinger = "any";

enum Code {
  failed = -1,
  userCancel = -2,
  userFallback = -3,
  systemCancel = -4,
  notAvailable = -6,
  notEnrolled = -7,
  lockout = -8
};

BiometricReply failure(Code code) { return {.success = false, .code = code}; }

// A result of fprintd that ends the check.
struct Verdict {
  std::string_view text;
  BiometricReply reply;
};

constexpr std::string_view wrongFinger = "verify-no-match";

const auto verdicts = std::to_array<Verdict>({
    {"verify-match", {.success = true, .code = std::nullopt}},
    {wrongFinger, failure(failed)},
    {"verify-disconnected", failure(notAvailable)},
    // fprintd also reports this when the reader is unplugged.
    {"verify-unknown-error", failure(notAvailable)},
});

// An error of the bus itself means that fprintd is not running.
BiometricReply failureFrom(const sdbus::Error& error) {
  const std::string& name = error.getName();
  if (name == "net.reactivated.Fprint.Error.NoEnrolledPrints") {
    return failure(notEnrolled);
  }
  const bool unavailable = name == "net.reactivated.Fprint.Error.NoSuchDevice" ||
                           name == "net.reactivated.Fprint.Error.PermissionDenied" ||
                           name.starts_with("org.freedesktop.DBus.Error.");
  return failure(unavailable ? notAvailable : failed);
}

}  // namespace

// The reader, on the bus thread. A check claims the device, verifies and releases it, one call at a time. The
// first outcome counts; the release begins as soon as no call is pending.
class FprintdCheck::Reader final : private BusSession {
 public:
  // Called on the bus thread: with the reason while the reader waits for a finger, else with nullopt.
  using PromptChanged = std::function<void(Prompt)>;

  Reader(const Options& options, PromptChanged promptChanged)
      : options_(options),
        promptChanged_(std::move(promptChanged)),
        thread_(options.busAddress, options.timeout, *this) {}

  // Thread-safe, as are all of these.
  using Told = std::function<void(bool)>;
  void findOut(const Told& told);
  // `number` identifies the check.
  void check(std::uint64_t number, std::string reason, const std::function<void(BiometricReply)>& reply);
  void conclude(std::uint64_t number, BiometricReply outcome);
  void concludeAny(BiometricReply outcome);

 private:
  struct Check {
    std::uint64_t number = 0;
    std::string reason;
    std::function<void(BiometricReply)> reply;
    std::optional<BiometricReply> outcome = std::nullopt;
    bool calling = false;
    bool claimed = false;
    bool verifying = false;
    bool prompting = false;
  };

  void joined(sdbus::IConnection& bus) override;
  void left() override;
  void verifyStatus(sdbus::Message& message);
  void readerGone();

  void askForReader(const Told& told);
  void askForFingers(const std::string& device, const Told& told);
  void begin(Check check);
  void claim(const std::string& device);
  void verify();
  void conclude(BiometricReply outcome);
  void goBack();
  void end();
  bool isOneTooMany();

  // One call of the check. `next` runs if it succeeded and there is no outcome yet.
  template <class... Args>
  void call(const std::string& path, const char* interface, const char* method, BusCalls::Then succeeded,
            std::function<void()> next, const Args&... arguments);
  // One call of the release, which continues even if it fails.
  void callBack(const char* method);

  const Options options_;
  const PromptChanged promptChanged_;

  // Bus thread only from here on.
  BusCalls calls_;
  BusSignals signals_;
  std::optional<Check> check_;
  std::string device_;
  std::string owner_;  // the bus name of the fprintd that granted the claim
  int wrongFingers_ = 0;
  Clock::time_point lockedUntil_;

  BusThread thread_;
};

void FprintdCheck::Reader::findOut(const Told& told) {
  thread_.post([this, told](sdbus::IConnection&) { askForReader(told); },
               [told](const sdbus::Error&) { told(false); });
}

void FprintdCheck::Reader::askForReader(const Told& told) {
  calls_.send(
      {fprint, fprintManagerPath, fprintManager, "GetDefaultDevice"}, options_.startupTimeout,
      [this, told](sdbus::MethodReply& reply) {
        sdbus::ObjectPath device;
        reply >> device;
        askForFingers(device, told);
      },
      [told](const sdbus::Error&) { told(false); });
}

void FprintdCheck::Reader::askForFingers(const std::string& device, const Told& told) {
  calls_.send(
      {fprint, device, fprintDevice, "ListEnrolledFingers"}, options_.startupTimeout,
      [told](sdbus::MethodReply& reply) {
        std::vector<std::string> fingers;
        reply >> fingers;
        told(!fingers.empty());
      },
      [told](const sdbus::Error&) { told(false); }, currentUser);
}

void FprintdCheck::Reader::check(std::uint64_t number, std::string reason,
                                 const std::function<void(BiometricReply)>& reply) {
  thread_.post([this, check = Check{.number = number, .reason = std::move(reason), .reply = reply}](
                   sdbus::IConnection&) { begin(check); },
               [reply](const sdbus::Error& error) { reply(failureFrom(error)); });
}

void FprintdCheck::Reader::conclude(std::uint64_t number, BiometricReply outcome) {
  thread_.postIfJoined([this, number, outcome](sdbus::IConnection&) {
    if (check_ && check_->number == number) {
      conclude(outcome);
    }
  });
}

void FprintdCheck::Reader::concludeAny(BiometricReply outcome) {
  thread_.postIfJoined([this, outcome](sdbus::IConnection&) { conclude(outcome); });
}

void FprintdCheck::Reader::joined(sdbus::IConnection& bus) {
  signals_.joined(bus);
  signals_.watch(
      "sender='" + std::string(fprint) + "',interface='" + fprintDevice + "',member='VerifyStatus'",
      [this](sdbus::Message& message) { verifyStatus(message); });
  signals_.watchOwner(fprint, [this](const std::string&) {
    if (!owner_.empty()) {
      readerGone();
    }
  });
  calls_.joined(bus);
}

void FprintdCheck::Reader::left() {
  readerGone();
  calls_.left();
  signals_.left();
}

// Anyone can send this program a signal, so it counts only from the fprintd that granted the claim.
void FprintdCheck::Reader::verifyStatus(sdbus::Message& message) {
  std::string result;
  message >> result;
  const bool trusted = message.getSender() == owner_ && message.getPath() == device_;
  const auto* const verdict = std::ranges::find(verdicts, result, &Verdict::text);
  if (trusted && verdict != verdicts.end() && check_ && check_->verifying && !check_->outcome) {
    conclude(result == wrongFinger && isOneTooMany() ? failure(lockout) : verdict->reply);
  }
}

// The reader is gone, so there is nothing to release.
void FprintdCheck::Reader::readerGone() {
  owner_.clear();
  if (check_) {
    check_->claimed = false;
    check_->verifying = false;
    conclude(failure(notAvailable));
  }
}

void FprintdCheck::Reader::begin(Check check) {
  if (Clock::now() < lockedUntil_) {
    check.reply(failure(lockout));
    return;
  }
  if (check_) {
    check.reply(failure(systemCancel));
    return;
  }
  check_ = std::move(check);
  const auto device = std::make_shared<sdbus::ObjectPath>();
  call(
      fprintManagerPath, fprintManager, "GetDefaultDevice",
      [device](sdbus::MethodReply& reply) { reply >> *device; }, [this, device] { claim(*device); });
}

void FprintdCheck::Reader::claim(const std::string& device) {
  device_ = device;
  call(
      device_, fprintDevice, "Claim",
      [this](sdbus::MethodReply& reply) {
        check_->claimed = true;
        owner_ = reply.getSender();
      },
      [this] { verify(); }, currentUser);
}

void FprintdCheck::Reader::verify() {
  call(
      device_, fprintDevice, "VerifyStart", [this](sdbus::MethodReply&) { check_->verifying = true; },
      [this] {
        check_->prompting = true;
        promptChanged_(check_->reason);
      },
      anyFinger);
}

void FprintdCheck::Reader::conclude(BiometricReply outcome) {
  if (check_ && !check_->outcome) {
    check_->outcome = outcome;
    if (!check_->calling) {
      goBack();
    }
  }
}

void FprintdCheck::Reader::goBack() {
  if (std::exchange(check_->prompting, false)) {
    promptChanged_(std::nullopt);
  }
  if (std::exchange(check_->verifying, false)) {
    callBack("VerifyStop");
  } else if (std::exchange(check_->claimed, false)) {
    callBack("Release");
  } else {
    end();
  }
}

void FprintdCheck::Reader::end() {
  const Check ended = std::move(*check_);
  check_.reset();
  owner_.clear();
  wrongFingers_ = ended.outcome->success ? 0 : wrongFingers_;
  ended.reply(*ended.outcome);
}

bool FprintdCheck::Reader::isOneTooMany() {
  const bool tooMany = ++wrongFingers_ >= options_.wrongFingers;
  if (tooMany) {
    wrongFingers_ = 0;
    lockedUntil_ = Clock::now() + options_.lockTime;
  }
  return tooMany;
}

template <class... Args>
void FprintdCheck::Reader::call(const std::string& path, const char* interface, const char* method,
                                BusCalls::Then succeeded, std::function<void()> next,
                                const Args&... arguments) {
  check_->calling = true;
  calls_.send(
      {fprint, path, interface, method}, options_.timeout,
      [this, succeeded = std::move(succeeded), next = std::move(next)](sdbus::MethodReply& reply) {
        succeeded(reply);
        check_->calling = false;
        if (check_->outcome) {
          goBack();
        } else {
          next();
        }
      },
      [this](const sdbus::Error& error) {
        check_->calling = false;
        check_->outcome = check_->outcome.value_or(failureFrom(error));
        goBack();
      },
      arguments...);
}

void FprintdCheck::Reader::callBack(const char* method) {
  check_->calling = true;
  const auto goOn = [this] {
    check_->calling = false;
    goBack();
  };
  calls_.send(
      {fprint, device_, fprintDevice, method}, options_.timeout, [goOn](sdbus::MethodReply&) { goOn(); },
      [goOn](const sdbus::Error&) { goOn(); });
}

FprintdCheck::FprintdCheck(Dispatch& dispatch) : FprintdCheck(dispatch, Options()) {}

FprintdCheck::FprintdCheck(Dispatch& dispatch, const Options& options)
    : dispatch_(dispatch),
      fingerTimeout_(options.fingerTimeout),
      prompt_(std::make_shared<PromptSignal>()),
      reader_(std::make_shared<Reader>(
          options, hoppingToMain(dispatch, [known = std::weak_ptr(prompt_)](const Prompt& prompt) {
            if (const auto signal = known.lock()) {
              signal->emit(prompt);
            }
          }))) {}

FprintdCheck::~FprintdCheck() = default;

bool FprintdCheck::canEvaluate() {
  if (!std::exchange(answer_->isAskedFor, true)) {
    reader_->findOut(hoppingToMain(dispatch_, [known = std::weak_ptr(answer_)](bool isUsable) {
      if (const auto answer = known.lock()) {
        answer->isUsable = isUsable;
        answer->given.emit();
      }
    }));
  }
  return answer_->isUsable;
}

Subscription FprintdCheck::observeAnswer(const std::function<void()>& observer) {
  return answer_->given.connect(observer);
}

void FprintdCheck::evaluate(std::string_view reason, std::function<void(BiometricReply)> reply) {
  const auto number = ++lastCheck_;
  reader_->check(number, std::string(reason), reply);
  dispatch_.main().asyncAfter(std::chrono::duration_cast<Duration>(fingerTimeout_),
                              [known = std::weak_ptr(reader_), number] {
                                if (const auto reader = known.lock()) {
                                  reader->conclude(number, failure(systemCancel));
                                }
                              });
}

void FprintdCheck::cancel() { reader_->concludeAny(failure(userCancel)); }

void FprintdCheck::enterPassword() { reader_->concludeAny(failure(userFallback)); }

Subscription FprintdCheck::observePrompt(std::function<void(const Prompt&)> observer) {
  return prompt_->connect(std::move(observer));
}

}  // namespace quillmar
