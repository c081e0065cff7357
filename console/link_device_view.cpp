#include "console/link_device_view.h"

#include <utility>

#include "console/keyed_rows.h"
#include "platform/hop.h"
#include "presentation/device_texts.h"

namespace quillmar {

UnassignedDeviceRow::UnassignedDeviceRow(Device device, Reaction onLink, Reaction onRemove)
    : OpeningRow("UnassignedDeviceRow"),
      device(*this, "device", std::move(device)),
      deviceIconName(*this, "deviceIconName",
                     [this] { return std::string(quillmar::deviceIconName(this->device())); }),
      deviceDisplayName(*this, "deviceDisplayName",
                        [this] { return quillmar::deviceDisplayName(this->device()); }),
      deviceTypeLabel(*this, "deviceTypeLabel", [this] { return quillmar::deviceTypeLabel(this->device()); }),
      onLink_(std::move(onLink)),
      onRemove_(std::move(onRemove)) {}

void UnassignedDeviceRow::closeAndRemove() {
  close();
  onRemove_(device());
}

template <class Screen>
std::shared_ptr<Screen> LinkDeviceView::makeEnrollment() {
  return std::make_shared<Screen>(environment_, childId_, weakly([this] { finish(); }));
}

LinkDeviceView::LinkDeviceView(Environment& environment, std::string childId,
                               std::function<void()> onDeviceLinked)
    : ScreenModel("LinkDeviceView"),
      showScanner(
          *this, "showScanner", [this] { return makeEnrollment<ScannerView>(); },
          [this] { loadUnassignedDevices(); }),
      showManualEnrollment(
          *this, "showManualEnrollment", [this] { return makeEnrollment<ManualEnrollmentView>(); },
          [this] { loadUnassignedDevices(); }),
      environment_(environment),
      dispatch_(environment.platform().dispatch),
      childId_(std::move(childId)),
      onDeviceLinked_(std::move(onDeviceLinked)) {
  devicesReaction_ = unassignedDevices.onChange([this] { showRows(); });
}

LinkDeviceContent LinkDeviceView::computeContent() const {
  if (isLoading()) {
    return LinkDeviceContent::loading;
  }
  return unassignedDevices().empty() ? LinkDeviceContent::empty : LinkDeviceContent::list;
}

std::string LinkDeviceView::computeDeletionText() const {
  const auto& device = deviceToDelete();
  return "This will permanently delete " + (device ? deviceDisplayName(*device) : "this device") +
         " and unregister it from Quillmar. This cannot be undone.";
}

void LinkDeviceView::showRows() {
  showInRows(
      deviceRows, unassignedDevices(), [](const Device& device) { return device.id; },
      [this](const Device& device) {
        return std::make_shared<UnassignedDeviceRow>(
            device, weakly([this](const Device& chosen) { linkSelectedDevice(chosen); }),
            weakly([this](const Device& chosen) { askToDelete(chosen); }));
      },
      [](UnassignedDeviceRow& row, const Device& device) { setIfChanged(row.device, device); });
}

void LinkDeviceView::loadUnassignedDevices() {
  isLoading = true;
  environment_.networkService()->getChildren(
      hoppingToMain(dispatch_, weakly([this](const Result<ChildrenResponse>& result) {
                      isLoading = false;
                      if (result.ok()) {
                        unassignedDevices = result.value().unassignedDevices;
                      } else {
                        errorAlert.show(result.error());
                      }
                    })));
}

void LinkDeviceView::linkSelectedDevice(const Device& device) {
  environment_.networkService()->linkDevice(
      childId_, device.id, hoppingToMain(dispatch_, weakly([this](const Result<void>& result) {
                                           if (result.ok()) {
                                             finish();
                                           } else {
                                             errorAlert.show(result.error());
                                           }
                                         })));
}

void LinkDeviceView::finish() {
  onDeviceLinked_();
  dismiss();
}

void LinkDeviceView::askToDelete(const Device& device) {
  deviceToDelete = device;
  deletionConfirmation.ask();
}

void LinkDeviceView::askToDeleteAt(std::int64_t index) {
  if (index >= 0 && std::cmp_less(index, unassignedDevices().size())) {
    askToDelete(unassignedDevices()[static_cast<std::size_t>(index)]);
  }
}

void LinkDeviceView::deleteSelected() {
  if (!deviceToDelete()) {
    return;
  }
  const std::string id = deviceToDelete()->id;
  environment_.networkService()->deleteDevice(
      id, hoppingToMain(dispatch_, weakly([this, id](const Result<void>& result) {
                          if (!result.ok()) {
                            errorAlert.show(result.error());
                            return;
                          }
                          auto remaining = unassignedDevices();
                          std::erase_if(remaining, [&](const Device& device) { return device.id == id; });
                          unassignedDevices = std::move(remaining);
                          onDeviceLinked_();
                        })));
}

}  // namespace quillmar
