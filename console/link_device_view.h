#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "app/session/environment.h"
#include "client/records/device.h"
#include "console/manual_enrollment_view.h"
#include "console/opening_row.h"
#include "console/scanner_view.h"
#include "presentation/confirmation.h"
#include "presentation/error_alert.h"
#include "presentation/key_commands.h"
#include "presentation/list_filter.h"
#include "presentation/screen_model.h"

namespace quillmar {

enum class LinkDeviceContent { loading, list, empty };

template <>
inline constexpr std::array rawNames<LinkDeviceContent> =
    rawCases<LinkDeviceContent>({{LinkDeviceContent::loading, "loading"},
                                 {LinkDeviceContent::list, "list"},
                                 {LinkDeviceContent::empty, "empty"}});

// A device not linked to a child. A tap links it; swiped open, the row shows a delete button.
class UnassignedDeviceRow final : public OpeningRow {
 public:
  using Reaction = std::function<void(const Device&)>;

  UnassignedDeviceRow(Device device, Reaction onLink, Reaction onRemove);

  Published<Device> device;
  Derived<std::string> deviceIconName;
  Derived<std::string> deviceDisplayName;
  Derived<std::string> deviceTypeLabel;

  Text removeTitle{*this, "removeTitle", "Delete"};
  Text removeIcon{*this, "removeIcon", "trash"};

  // Closes an open row; links the device of a closed one.
  Action<> tap{*this, "tap", [this] { isSwiped() ? close() : onLink_(device()); }};
  Action<> link{*this, "link", [this] { onLink_(device()); }};
  // Asks whether to delete the device.
  Action<> remove{*this, "remove", [this] { closeAndRemove(); }};

 private:
  void closeAndRemove();

  const Reaction onLink_;
  const Reaction onRemove_;
};

// Links a device to a child: a new device or one without a child.
class LinkDeviceView final : public ScreenModel {
 public:
  // `onDeviceLinked` runs whenever the family's devices changed.
  LinkDeviceView(Environment& environment, std::string childId, std::function<void()> onDeviceLinked);

  Published<std::vector<Device>> unassignedDevices{*this, "unassignedDevices"};
  Rows<UnassignedDeviceRow> deviceRows{*this, "deviceRows"};
  ListFilter filter{*this};
  FilteredRows shownDevices{
      *this,
      {.rows = "shownDevices", .noMatch = "noDeviceMatch", .searched = "deviceDisplayName"},
      deviceRows,
      filter};
  Published<bool> isLoading{*this, "isLoading", true};
  ErrorAlert errorAlert{*this};
  Confirmation deletionConfirmation{
      *this,
      {.isShown = "showDeleteConfirmation", .confirm = "deleteSelectedDevice", .cancel = "cancelDeletion"},
      [this] { deleteSelected(); }};
  // Overwritten by the next deletion, never cleared.
  Published<std::optional<Device>> deviceToDelete{*this, "deviceToDelete"};
  Sheet<ScannerView> showScanner;
  Sheet<ManualEnrollmentView> showManualEnrollment;

  Derived<LinkDeviceContent> content{*this, "content", [this] { return computeContent(); }};

  Text title{*this, "title", "Link Device"};
  Text cancelTitle{*this, "cancelTitle", "Cancel"};
  Text newSection{*this, "newSection", "Add New Device"};
  Text phoneTitle{*this, "phoneTitle", "Phone or Tablet"};
  Text phoneText{*this, "phoneText", "Scan QR code on child's device"};
  Text phoneIcon{*this, "phoneIcon", "qrcode.viewfinder"};
  Text consoleTitle{*this, "consoleTitle", "Game Console or Smart TV"};
  Text consoleText{*this, "consoleText", "Configure DNS settings manually"};
  Text consoleIcon{*this, "consoleIcon", "gamecontroller.fill"};
  Text existingSection{*this, "existingSection", "Link Existing Device"};
  Text loadingText{*this, "loadingText", "Loading existing devices..."};
  Text emptyText{*this, "emptyText", "No unassigned devices available"};

  Text deletionTitle{*this, "deletionTitle", "Delete Device?"};
  Derived<std::string> deletionText{*this, "deletionText", [this] { return computeDeletionText(); }};
  Text deleteTitle{*this, "deleteTitle", "Delete"};

  Action<> cancel{*this, "cancel", [this] { dismiss(); }};
  Action<> addPhone{*this, "addPhone", [this] { showScanner = true; }};
  Action<> addConsole{*this, "addConsole", [this] { showManualEnrollment = true; }};
  // Asks whether to delete the device at this index, if there is one.
  Action<std::int64_t> deleteAt{*this, "deleteAt", [this](std::int64_t index) { askToDeleteAt(index); }};
  KeyCommands keys{*this, {{Command::find, filter.open}, {Command::back, cancel}}};

  void loadUnassignedDevices();
  void linkSelectedDevice(const Device& device);

 private:
  // A sheet that enrols a new device for this child.
  template <class Screen>
  std::shared_ptr<Screen> makeEnrollment();

  void onAppear() override { loadUnassignedDevices(); }
  LinkDeviceContent computeContent() const;
  std::string computeDeletionText() const;
  void showRows();
  void finish();
  void askToDelete(const Device& device);
  void askToDeleteAt(std::int64_t index);
  void deleteSelected();

  Environment& environment_;
  Dispatch& dispatch_;
  const std::string childId_;
  const std::function<void()> onDeviceLinked_;
  Subscription devicesReaction_;
};

}  // namespace quillmar
