#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/qr_reader.h"

namespace quillmar {

// Receives a scanner's notifications, synchronously and on the main thread.
class QRScannerDelegate {
 public:
  QRScannerDelegate() = default;
  QRScannerDelegate(const QRScannerDelegate&) = delete;
  QRScannerDelegate& operator=(const QRScannerDelegate&) = delete;
  virtual ~QRScannerDelegate() = default;

  virtual void notify(std::string_view notification, const std::string& object) = 0;
};

// The scanner's camera. It runs while its view is shown and stops at the first QR code. Without a camera it
// does nothing. Owned by std::shared_ptr, because a notification may release it.
class QRScannerViewController : public std::enable_shared_from_this<QRScannerViewController> {
 public:
  static constexpr std::string_view qrCodeScanned = "QRCodeScanned";

  explicit QRScannerViewController(QRReader& reader) : reader_(reader) {}

  std::weak_ptr<QRScannerDelegate> delegate;

  void viewDidLoad();
  void viewWillAppear();
  void viewWillDisappear();

 private:
  void recognised(const RecognisedObjects& objects);

  QRReader& reader_;
  bool hasSession_ = false;
};

}  // namespace quillmar
