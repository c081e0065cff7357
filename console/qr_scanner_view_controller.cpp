#include "console/qr_scanner_view_controller.h"

namespace quillmar {

void QRScannerViewController::viewDidLoad() { hasSession_ = reader_.canCapture(); }

void QRScannerViewController::viewWillAppear() {
  if (hasSession_) {
    reader_.startRunning([weak = weak_from_this()](const RecognisedObjects& objects) {
      if (const auto self = weak.lock()) {
        self->recognised(objects);
      }
    });
  }
}

void QRScannerViewController::viewWillDisappear() {
  if (hasSession_) {
    reader_.stopRunning();
  }
}

void QRScannerViewController::recognised(const RecognisedObjects& objects) {
  if (objects.empty() || !objects.front().isQRCode || !objects.front().text) {
    return;
  }
  reader_.stopRunning();
  if (const auto receiver = delegate.lock()) {
    receiver->notify(qrCodeScanned, *objects.front().text);
  }
}

}  // namespace quillmar
