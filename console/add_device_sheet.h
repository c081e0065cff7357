#pragma once

#include <functional>
#include <memory>
#include <string>

#include "client/records/child.h"
#include "console/manual_enrollment_view.h"
#include "console/scanner_view.h"
#include "presentation/key_commands.h"
#include "presentation/screen_model.h"

namespace quillmar {

// The ways to add a device to a child.
class AddDeviceSheet final : public ScreenModel {
 public:
  // `onComplete` runs after a device was added and this sheet was dismissed.
  AddDeviceSheet(Environment& environment, ChildProfileWithDevices child, std::function<void()> onComplete);

  Sheet<ScannerView> showScanner;
  Sheet<ManualEnrollmentView> showManualEnrollment;

  Text title{*this, "title", "Add Device"};
  Text cancelTitle{*this, "cancelTitle", "Cancel"};
  Derived<std::string> heading{*this, "heading", [this] { return "Add Device for " + child_.name; }};
  Text explanation{*this, "explanation", "Choose how you want to add a device"};
  Text phoneTitle{*this, "phoneTitle", "Phone or Tablet"};
  Text phoneText{*this, "phoneText", "Scan QR code on the child's device"};
  Text phoneIcon{*this, "phoneIcon", "qrcode.viewfinder"};
  Text consoleTitle{*this, "consoleTitle", "Game Console or Smart TV"};
  Text consoleText{*this, "consoleText", "Configure DNS settings manually"};
  Text consoleIcon{*this, "consoleIcon", "gamecontroller.fill"};

  Action<> cancel{*this, "cancel", [this] { dismiss(); }};
  Action<> addPhone{*this, "addPhone", [this] { showScanner = true; }};
  Action<> addConsole{*this, "addConsole", [this] { showManualEnrollment = true; }};
  KeyCommands keys{*this, {{Command::back, cancel}}};

 private:
  // A sheet of either kind, for this child.
  template <class Screen>
  std::shared_ptr<Screen> make();
  void finish();

  Environment& environment_;
  const ChildProfileWithDevices child_;
  const std::function<void()> onComplete_;
};

}  // namespace quillmar
