#pragma once

#include <functional>
#include <string>
#include <utility>

#include "presentation/key_commands.h"
#include "presentation/screen_model.h"

namespace quillmar {

// The scanner for an invitation's code. The panel is only a picture for now: no camera is opened and nothing
// calls `onScan`.
class QRScannerView final : public ScreenModel {
 public:
  using OnScan = std::function<void(const std::string& text)>;

  explicit QRScannerView(OnScan scanned) : ScreenModel("QRScannerView"), onScan(std::move(scanned)) {}

  // Takes the scanned text unchanged and dismisses this screen.
  const OnScan onScan;

  Text title{*this, "title", "Scan QR Code"};
  Text cancelTitle{*this, "cancelTitle", "Cancel"};
  Text panelIcon{*this, "panelIcon", "qrcode.viewfinder"};
  Text panelTitle{*this, "panelTitle", "QR Scanner"};
  Text panelText{*this, "panelText", "Point your camera at the QR code from the primary parent"};
  Text manualText{*this, "manualText", "Or enter the code manually"};

  Action<> cancel{*this, "cancel", [this] { dismiss(); }};
  KeyCommands keys{*this, {{Command::back, cancel}}};
};

}  // namespace quillmar
