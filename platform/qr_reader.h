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

// A QR code or a code of another kind.
struct RecognisedObject {
  bool isQRCode = false;
  // UTF-8; nullopt if the code was seen but can't be read. Anyone may have made it: don't trust it.
  std::optional<std::string> text;
  friend bool operator==(const RecognisedObject&, const RecognisedObject&) = default;
};
using RecognisedObjects = std::vector<RecognisedObject>;

// Why a picture could not be obtained or read, as a sentence for the person.
struct QRReaderError {
  std::string description;
  std::string localizedDescription() const { return description; }
  friend bool operator==(const QRReaderError&, const QRReaderError&) = default;
};

// absent: no camera; refused: the person or the system denies its use.
enum class CameraState { absent, available, refused };

template <>
inline constexpr std::array rawNames<CameraState> =
    rawCases<CameraState>({{CameraState::absent, "absent"},
                           {CameraState::available, "available"},
                           {CameraState::refused, "refused"}});

// Finds codes in the camera's picture, or in a still picture if there is no camera. Main thread only; nothing
// blocks.
class QRReader : public Port {
 public:
  using BatchHandler = std::function<void(const RecognisedObjects&)>;
  using Reply = std::function<void(const Result<RecognisedObjects>&)>;

  virtual CameraState camera() const = 0;
  // Called when that changes: a camera was plugged in, or a permission was refused.
  virtual Subscription observeCamera(std::function<void()> changed) = 0;
  bool canCapture() const { return camera() == CameraState::available; }

  // The camera starts on a background queue of user-initiated priority. Then each batch of objects recognised
  // together goes to `handler` on the main queue; batches are never empty. A second start ends the first. The
  // adapter asks for permission; if it is refused, the state changes and no batch comes.
  virtual void startRunning(BatchHandler handler) = 0;
  // Takes effect at once, even while the camera is starting: no batch comes afterwards.
  virtual void stopRunning() = 0;

  // The objects in one picture, unordered; no object is a success. The reply comes once, on the main queue,
  // never inside the call. A screen is captured without this program's own windows.
  virtual void readPicture(const std::string& path, Reply reply) = 0;
  virtual void readClipboard(Reply reply) = 0;
  virtual void readScreen(Reply reply) = 0;
};

}  // namespace quillmar
