#pragma once

#include <QImage>
#include <functional>

#include "foundation/signal.h"
#include "platform/qr_reader.h"

namespace quillmar::ui {

// Where the pictures come from. Called on the main thread only, and keeps nobody waiting.
class Camera {
 public:
  // Runs on any thread, one call after another.
  using PictureHandler = std::function<void(const QImage&)>;

  Camera() = default;
  Camera(const Camera&) = delete;
  Camera& operator=(const Camera&) = delete;
  virtual ~Camera() = default;

  virtual CameraState state() const = 0;
  virtual Subscription observe(std::function<void()> changed) = 0;
  // The camera comes up in the background. Where it cannot, the state changes and no picture comes. A start
  // ends what was started before.
  virtual void start(PictureHandler handler) = 0;
  // A picture that is on its way may still come.
  virtual void stop() = 0;
};

}  // namespace quillmar::ui
