#pragma once

#include <QImage>
#include <functional>

#include "foundation/signal.h"
#include "platform/qr_reader.h"

namespace quillmar::ui {

// A source of camera pictures. Its functions are called on the main thread only, and none of them blocks.
class Camera {
 public:
  // Called on any thread, one call at a time.
  using PictureHandler = std::function<void(const QImage&)>;

  Camera() = default;
  Camera(const Camera&) = delete;
  Camera& operator=(const Camera&) = delete;
  virtual ~Camera() = default;

  virtual CameraState state() const = 0;
  virtual Subscription observe(std::function<void()> changed) = 0;
  // Starts the camera in the background and ends an earlier start. If it fails, the state changes and no
  // picture comes.
  virtual void start(PictureHandler handler) = 0;
  // A picture already in flight may still arrive.
  virtual void stop() = 0;
};

}  // namespace quillmar::ui
