#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/dispatch.h"
#include "platform/qr_reader.h"

namespace quillmar {

// A machine with a camera, unless told otherwise, before which a test holds codes.
class FakeQRReader final : public QRReader {
 public:
  explicit FakeQRReader(Dispatch& dispatch) : dispatch_(dispatch) {}

  // What each of the still sources gives.
  Result<RecognisedObjects> picture = RecognisedObjects();
  Result<RecognisedObjects> clipboard = RecognisedObjects();
  Result<RecognisedObjects> screen = RecognisedObjects();
  // What was asked for, in order: "start", "stop", "picture /a.png", "clipboard", "screen".
  std::vector<std::string> calls;

  void setCamera(CameraState state) {
    state_ = state;
    changed_.emit();
  }
  // The camera is up and delivers.
  bool isRunning() const { return session_ && session_->isUp; }

  // Holds objects before the camera, all of them at once.
  void show(RecognisedObjects objects) {
    dispatch_.main().async([weak = std::weak_ptr(session_), objects = std::move(objects)] {
      if (const auto session = weak.lock(); session && session->isUp && !objects.empty()) {
        session->handler(objects);
      }
    });
  }
  void showCode(std::string text) { show({{.isQRCode = true, .text = std::move(text)}}); }

  CameraState camera() const override { return state_; }
  Subscription observeCamera(std::function<void()> changed) override {
    return changed_.connect(std::move(changed));
  }
  void startRunning(BatchHandler handler) override {
    calls.emplace_back("start");
    session_ = std::make_shared<Session>(Session{std::move(handler)});
    auto up = [this, weak = std::weak_ptr(session_)] {
      if (const auto session = weak.lock()) {
        session->isUp = canCapture();
      }
    };
    dispatch_.global(QualityOfService::userInitiated).async(std::move(up));
  }
  void stopRunning() override {
    calls.emplace_back("stop");
    session_.reset();
  }

  void readPicture(const std::string& path, Reply reply) override {
    calls.push_back("picture " + path);
    answer(std::move(reply), picture);
  }
  void readClipboard(Reply reply) override {
    calls.emplace_back("clipboard");
    answer(std::move(reply), clipboard);
  }
  void readScreen(Reply reply) override {
    calls.emplace_back("screen");
    answer(std::move(reply), screen);
  }

 private:
  struct Session {
    BatchHandler handler;
    bool isUp = false;
  };

  void answer(Reply reply, Result<RecognisedObjects> objects) {
    dispatch_.main().async([reply = std::move(reply), objects = std::move(objects)] { reply(objects); });
  }

  Dispatch& dispatch_;
  CameraState state_ = CameraState::available;
  Signal<> changed_;
  std::shared_ptr<Session> session_;
};

}  // namespace quillmar
