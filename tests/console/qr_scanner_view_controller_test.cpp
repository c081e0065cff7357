#include "console/qr_scanner_view_controller.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "testing/fake_platform.h"

namespace quillmar {
namespace {

using Names = std::vector<std::string>;

struct Receiver final : QRScannerDelegate {
  void notify(std::string_view notification, const std::string& object) override {
    received.push_back(std::string(notification) + " " + object);
  }
  Names received;
};

struct Scanner : testing::Test {
  Scanner() { controller->delegate = receiver; }
  void open() {
    controller->viewDidLoad();
    controller->viewWillAppear();
    machine.dispatch.settle();
  }
  void show(const RecognisedObjects& objects) {
    reader.show(objects);
    machine.dispatch.settle();
  }

  FakePlatform machine;
  FakeQRReader& reader = machine.qrReader;
  std::shared_ptr<Receiver> receiver = std::make_shared<Receiver>();
  std::shared_ptr<QRScannerViewController> controller = std::make_shared<QRScannerViewController>(reader);
};

TEST_F(Scanner, runs_from_appearing_to_disappearing) {
  controller->viewDidLoad();
  EXPECT_TRUE(reader.calls.empty());
  controller->viewWillAppear();
  EXPECT_FALSE(reader.isRunning()) << "the camera comes up in the background";
  machine.dispatch.settle();
  EXPECT_TRUE(reader.isRunning());
  controller->viewWillDisappear();
  EXPECT_FALSE(reader.isRunning());
  EXPECT_EQ(reader.calls, (Names{"start", "stop"}));
}

TEST_F(Scanner, that_disappears_before_the_camera_starts_leaves_it_off) {
  controller->viewDidLoad();
  controller->viewWillAppear();
  controller->viewWillDisappear();
  machine.dispatch.settle();
  EXPECT_FALSE(reader.isRunning());
}

TEST_F(Scanner, without_a_camera_does_nothing) {
  for (const auto state : {CameraState::absent, CameraState::refused}) {
    reader.setCamera(state);
    open();
    controller->viewWillDisappear();
  }
  EXPECT_TRUE(reader.calls.empty());
}

TEST_F(Scanner, stops_at_the_first_code_and_then_notifies) {
  open();
  reader.showCode("one");
  reader.showCode("two");
  machine.dispatch.settle();
  EXPECT_EQ(receiver->received, Names{"QRCodeScanned one"});
  EXPECT_EQ(reader.calls, (Names{"start", "stop"}));
}

TEST_F(Scanner, reads_only_the_first_object_of_a_batch) {
  open();
  show({{.isQRCode = false, .text = "4006381333931"}, {.isQRCode = true, .text = "hidden"}});
  show({{.isQRCode = true, .text = std::nullopt}, {.isQRCode = true, .text = "hidden"}});
  EXPECT_TRUE(receiver->received.empty());
  EXPECT_TRUE(reader.isRunning());
  show({{.isQRCode = true, .text = "first"}, {.isQRCode = true, .text = "second"}});
  EXPECT_EQ(receiver->received, Names{"QRCodeScanned first"});
}

TEST_F(Scanner, stops_at_a_code_even_without_a_delegate) {
  receiver.reset();
  open();
  show({{.isQRCode = true, .text = "one"}});
  EXPECT_FALSE(reader.isRunning());
}

TEST_F(Scanner, accepts_an_empty_code) {
  open();
  show({{.isQRCode = true, .text = ""}});
  EXPECT_EQ(receiver->received, Names{"QRCodeScanned "});
}

TEST_F(Scanner, gets_no_notification_after_its_destruction) {
  open();
  reader.showCode("late");
  controller.reset();
  machine.dispatch.settle();
  EXPECT_TRUE(receiver->received.empty());
}

TEST_F(Scanner, runs_again_after_it_has_stopped) {
  open();
  show({{.isQRCode = true, .text = "one"}});
  open();
  show({{.isQRCode = true, .text = "two"}});
  EXPECT_EQ(receiver->received, (Names{"QRCodeScanned one", "QRCodeScanned two"}));
}

}  // namespace
}  // namespace quillmar
