#include "console/add_device_sheet.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "console/device_list_view.h"
#include "tests/console/console_test.h"

namespace quillmar {
namespace {

using Names = std::vector<std::string>;

struct AddDevice : testing::Test {
  AddDevice() {
    app.machine.http.answerAlways("GET", "/children", 200, childrenAnswer({makeChild("c1", "Mia")}));
    app.machine.http.answerAlways(
        "POST", "/enrollment/complete", 200,
        jsonOf(CompleteEnrollmentResponse{
            .message = "done", .device = makeDevice("d1"), .dohEndpoint = "https://dns.example/d1"}));
    app.machine.http.answerAlways("POST", "/enrollment/manual", 200,
                                  jsonOf(ManualEnrollmentResponse{.message = "done",
                                                                  .device = makeDevice("d2"),
                                                                  .dnsServer = "203.0.113.5",
                                                                  .setupInstructions = {},
                                                                  .note = "note"}));
    app.settle();
    app.screen<DeviceListView>().cards[0].addDevice();
    app.settle();
    app.machine.http.forgetRequests();
  }

  AddDeviceSheet& screen() { return app.screen<AddDeviceSheet>(); }
  void scan() {
    screen().addPhone();
    app.screen<ScannerView>().handleScannedCode(
        R"({"enrollment_code":"ABC","device_id":"d1","device_name":"Phone","device_type":"ios"})");
    app.screen<ScannerView>().completeEnrollment();
    app.settle();
  }
  void enrollByHand() {
    screen().addConsole();
    app.screen<ManualEnrollmentView>().deviceName = "Console";
    app.screen<ManualEnrollmentView>().addDevice();
    app.settle();
  }

  TestApplication app{asSignedInParent()};
};

TEST_F(AddDevice, offers_two_ways) {
  EXPECT_EQ(screen().title(), "Add Device");
  EXPECT_EQ(screen().cancelTitle(), "Cancel");
  EXPECT_EQ(screen().heading(), "Add Device for Mia");
  EXPECT_EQ(screen().explanation(), "Choose how you want to add a device");
  EXPECT_EQ(screen().phoneTitle(), "Phone or Tablet");
  EXPECT_EQ(screen().phoneText(), "Scan QR code on the child's device");
  EXPECT_EQ(screen().phoneIcon(), "qrcode.viewfinder");
  EXPECT_EQ(screen().consoleTitle(), "Game Console or Smart TV");
  EXPECT_EQ(screen().consoleText(), "Configure DNS settings manually");
  EXPECT_EQ(screen().consoleIcon(), "gamecontroller.fill");
  EXPECT_FALSE(screen().showScanner());
  EXPECT_FALSE(screen().showManualEnrollment());
}

TEST_F(AddDevice, cancel_returns_to_the_dashboard) {
  screen().cancel();
  EXPECT_EQ(app.screenNames(), Names{"DeviceListView"});
}

TEST_F(AddDevice, cancelling_either_way_returns_here) {
  screen().addPhone();
  EXPECT_EQ(app.screenNames(), (Names{"DeviceListView", "AddDeviceSheet", "ScannerView"}));
  app.screen<ScannerView>().cancel();
  screen().addConsole();
  EXPECT_EQ(app.screenNames(), (Names{"DeviceListView", "AddDeviceSheet", "ManualEnrollmentView"}));
  app.screen<ManualEnrollmentView>().cancel();
  EXPECT_EQ(app.screenNames(), (Names{"DeviceListView", "AddDeviceSheet"}));
  app.settle();
  EXPECT_TRUE(app.machine.http.requests().empty());
}

TEST_F(AddDevice, both_ways_are_for_this_child) {
  scan();
  EXPECT_EQ(*app.machine.http.requests("POST", "/enrollment/complete").front().body,
            R"({"enrollment_code":"ABC","device_name":"Phone","child_id":"c1"})");
  app.screen<ScannerView>().cancel();
  enrollByHand();
  EXPECT_EQ(*app.machine.http.requests("POST", "/enrollment/manual").front().body,
            R"({"device_name":"Console","device_type":"playstation","child_id":"c1"})");
}

TEST_F(AddDevice, a_finished_scan_dismisses_all_sheets_and_reloads_the_dashboard) {
  scan();
  EXPECT_EQ(app.screenNames(), (Names{"DeviceListView", "AddDeviceSheet", "ScannerView"}));
  app.screen<ScannerView>().done();
  EXPECT_EQ(app.screenNames(), Names{"DeviceListView"});
  app.settle();
  EXPECT_EQ(app.machine.http.count("GET", "/children"), 2U) << "coming back loads, and so does the news";
}

TEST_F(AddDevice, a_finished_manual_enrollment_dismisses_all_sheets) {
  enrollByHand();
  app.screen<ManualEnrollmentView>().done();
  EXPECT_EQ(app.screenNames(), Names{"DeviceListView"});
}

TEST_F(AddDevice, is_dismissed_before_on_complete_runs) {
  struct Presenter final : ObservableObject {
    explicit Presenter(Environment& environment)
        : ObservableObject("Presenter"), sheet(*this, "sheet", [this, &environment] {
            return std::make_shared<AddDeviceSheet>(environment, makeChild("c1", "Mia"),
                                                    [this] { wasUp.push_back(sheet()); });
          }) {}
    Sheet<AddDeviceSheet> sheet;
    std::vector<bool> wasUp;
  };
  Presenter presenter(app.environment());
  presenter.sheet = true;
  presenter.sheet->addConsole();
  auto& manual = *presenter.sheet->showManualEnrollment;
  manual.deviceName = "Console";
  manual.addDevice();
  app.settle();
  EXPECT_TRUE(presenter.wasUp.empty()) << "an answer alone is no completion";
  manual.done();
  EXPECT_EQ(presenter.wasUp, std::vector{false});
}

}  // namespace
}  // namespace quillmar
