#pragma once

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "foundation/raw_enum.h"
#include "foundation/result.h"
#include "foundation/signal.h"
#include "platform/port.h"

namespace quillmar {

// Something machine-readable in a picture: a QR code, or a code of another kind.
struct RecognisedObject {
  bool isQRCode = false;
  // What it says, in UTF-8; none where it is seen but cannot be read. It comes from anybody and is not to be
  // trusted.
  std::optional<std::string> text;
  friend bool operator==(const RecognisedObject&, const RecognisedObject&) = default;
};
using RecognisedObjects = std::vector<RecognisedObject>;

// Why a picture could not be had or read, as a sentence for the person.
struct QRReaderError {
  std::string description;
  std::string localizedDescription() const { return description; }
  friend bool operator==(const QRReaderError&, const QRReaderError&) = default;
};

// absent: there is no camera; refused: there is one, and the person or the system does not let it be used.
enum class CameraState { absent, available, refused };

template <>
inline constexpr std::array rawNames<CameraState> =
    rawCases<CameraState>({{CameraState::absent, "absent"},
                           {CameraState::available, "available"},
                           {CameraState::refused, "refused"}});

// Finds codes: in what the camera sees, or in a picture where there is no camera. Main thread only; nothing
// here keeps its caller waiting.
class QRReader : public Port {
 public:
  using BatchHandler = std::function<void(const RecognisedObjects&)>;
  using Reply = std::function<void(const Result<RecognisedObjects>&)>;

  virtual CameraState camera() const = 0;
  // Runs after a change of that: a camera is plugged in, a permission is refused.
  virtual Subscription observeCamera(std::function<void()> changed) = 0;
  bool canCapture() const { return camera() == CameraState::available; }

  // The camera comes up on a background queue of user-initiated quality. From then on each batch of objects
  // that it recognises at once goes to `handler`, on the main queue; an empty one never does. One session at
  // a time: a start ends the one before. Asking for permission is the adapter's business; where it is
  // refused, the state changes and no batch ever comes.
  virtual void startRunning(BatchHandler handler) = 0;
  // Takes effect at once, even on a camera that is only coming up: no batch comes any more.
  virtual void stopRunning() = 0;

  // The objects in one picture, in no promised order; none is a success. The reply comes once, on the main
  // queue, and never inside the call. A screen is read without the windows of this program that lie over it.
  virtual void readPicture(const std::string& path, Reply reply) = 0;
  virtual void readClipboard(Reply reply) = 0;
  virtual void readScreen(Reply reply) = 0;
};

}  // namespace quillmar
