#include "console/manual_enrollment_view.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/console/console_test.h"

namespace quillmar {
namespace {

using namespace std::chrono_literals;
using Names = std::vector<std::string>;

const std::string manualPath = "/enrollment/manual";

ManualEnrollmentResponse answer() {
  return {.message = "done",
          .device = makeDevice("d1"),
          .dnsServer = "203.0.113.9",
          .setupInstructions = {.platform = "PlayStation 5",
                                .dnsServerIP = "203.0.113.5",
                                .steps = {"Open Settings", "Open Network"}},
          .note = "It may take a minute."};
}

struct ManualEnrollment : testing::Test {
  struct Presenter final : ObservableObject {
    Presenter(Environment& environment, std::optional<std::string> childId)
        : ObservableObject("Presenter"), sheet(*this, "sheet", [this, &environment, childId] {
            return std::make_shared<ManualEnrollmentView>(environment, childId,
                                                          [this] { wasUp.push_back(sheet()); });
          }) {}
    Sheet<ManualEnrollmentView> sheet;
    std::vector<bool> wasUp;
  };

  ManualEnrollment() {
    app.machine.http.answerAlways("GET", "/children", 200, "{}");
    app.machine.http.answerAlways("POST", manualPath, 200, jsonOf(answer()));
    app.settle();
    app.machine.http.forgetRequests();
    app.machine.log.clear();
    presenter.sheet = true;
  }

  ManualEnrollmentView& screen() { return *presenter.sheet; }
  std::size_t calls() { return app.machine.http.count("POST", manualPath); }
  std::string lastBody() { return *app.machine.http.requests("POST", manualPath).back().body; }
  void add(const std::string& name = "Console") {
    screen().deviceName = name;
    screen().addDevice();
    app.settle();
  }

  TestApplication app{asSignedInParent()};
  Presenter presenter{app.environment(), "c1"};
};

TEST_F(ManualEnrollment, begins_as_an_empty_form_and_sends_nothing) {
  EXPECT_EQ(screen().deviceName(), "");
  EXPECT_EQ(screen().selectedDeviceType(), ManualDeviceType::playstation);
  EXPECT_EQ(screen().deviceIP(), "");
  EXPECT_FALSE(screen().isLoading());
  EXPECT_FALSE(screen().errorAlert.isShown());
  EXPECT_FALSE(screen().showInstructions());
  EXPECT_EQ(screen().enrollmentResult(), std::nullopt);
  app.advance(1min);
  EXPECT_EQ(calls(), 0U);
}

TEST_F(ManualEnrollment, is_disabled_without_a_name_whatever_the_type) {
  screen().deviceIP = "192.168.1.50";
  for (const auto& [type, name] : rawNames<ManualDeviceType>) {
    screen().selectedDeviceType = type;
    EXPECT_FALSE(screen().addDevice()) << name;
  }
  app.settle();
  EXPECT_EQ(calls(), 0U);
  EXPECT_TRUE(app.machine.log.systemLines().empty());
}

TEST_F(ManualEnrollment, offers_five_types) {
  Names shown;
  for (const auto& choice : screen().deviceTypes()) {
    shown.push_back(choice.id + "|" + choice.label + "|" + choice.icon);
  }
  EXPECT_EQ(shown, (Names{"playstation|PlayStation|gamecontroller.fill", "xbox|Xbox|gamecontroller.fill",
                          "nintendo|Nintendo Switch|gamecontroller.fill", "smarttv|Smart TV|tv.fill",
                          "other|Other Device|desktopcomputer"}));
}

TEST_F(ManualEnrollment, sends_each_type_by_its_raw_value) {
  for (const auto& choice : screen().deviceTypes()) {
    EXPECT_TRUE(screen().selectedDeviceType.input(choice.id));
    app.machine.http.fail("POST", manualPath, TransportError::Kind::timedOut);
    add();
    EXPECT_EQ(lastBody(),
              R"({"device_name":"Console","device_type":")" + choice.id + R"(","child_id":"c1"})");
  }
}

TEST_F(ManualEnrollment, sends_an_address_as_typed_and_none_when_empty) {
  screen().deviceIP = " no address % ";
  add(" Jake's ");
  EXPECT_EQ(
      lastBody(),
      R"({"device_name":" Jake's ","device_type":"playstation","device_ip":" no address % ","child_id":"c1"})");
  screen().back();
  screen().deviceIP = "";
  add("Console");
  EXPECT_EQ(lastBody(), R"({"device_name":"Console","device_type":"playstation","child_id":"c1"})");
}

TEST_F(ManualEnrollment, logs_the_child_it_enrolls_for) {
  add();
  EXPECT_EQ(app.machine.log.systemLines().front(),
            "[ManualEnrollmentView] Enrolling device with childId: c1");
}

TEST_F(ManualEnrollment, without_a_child_the_device_is_unassigned_and_that_is_logged) {
  ManualEnrollmentView alone(app.environment(), std::nullopt);
  alone.deviceName = "Console";
  alone.addDevice();
  app.settle();
  EXPECT_EQ(lastBody(), R"({"device_name":"Console","device_type":"playstation"})");
  EXPECT_EQ(app.machine.log.systemLines().front(),
            "[ManualEnrollmentView] Enrolling device without childId (will be unassigned)");
}

TEST_F(ManualEnrollment, is_disabled_during_the_call) {
  app.machine.http.hold();
  add();
  EXPECT_TRUE(screen().isLoading());
  EXPECT_FALSE(screen().addDevice());
  app.settle();
  EXPECT_EQ(calls(), 1U);
  app.machine.http.releaseAll();
  app.settle();
  EXPECT_FALSE(screen().isLoading());
}

TEST_F(ManualEnrollment, a_failure_keeps_the_form_for_a_retry) {
  app.machine.http.answer("POST", manualPath, 400, R"({"error":"Bad address"})");
  screen().deviceIP = "x";
  add();
  EXPECT_EQ(screen().errorAlert.message(), "Bad address");
  EXPECT_TRUE(screen().errorAlert.isShown());
  EXPECT_FALSE(screen().isLoading());
  EXPECT_FALSE(screen().showInstructions());
  EXPECT_EQ(screen().deviceName(), "Console");
  EXPECT_EQ(screen().deviceIP(), "x");
  screen().errorAlert.dismiss();
  EXPECT_FALSE(screen().errorAlert.isShown());
  EXPECT_TRUE(screen().addDevice.isEnabled());
}

TEST_F(ManualEnrollment, an_answer_that_does_not_decode_is_a_failure) {
  app.machine.http.answer("POST", manualPath, 200, "<html>");
  add();
  EXPECT_EQ(screen().errorAlert.message(),
            "The data couldn’t be read because it isn’t in the correct format.");
  EXPECT_FALSE(screen().showInstructions());
}

TEST_F(ManualEnrollment, shows_the_services_instructions) {
  EXPECT_EQ(screen().title(), "Add Console/TV");
  add();
  EXPECT_EQ(screen().enrollmentResult(), answer());
  EXPECT_EQ(screen().title(), "Setup Instructions");
  EXPECT_EQ(screen().resultHeading(), "Device Added!");
  EXPECT_EQ(screen().resultText(), "Now configure DNS on your PlayStation 5");
  EXPECT_EQ(screen().serverPanel(), "DNS Server");
  EXPECT_EQ(screen().serverLabel(), "IP Address:");
  EXPECT_EQ(screen().dnsServerIP(), "203.0.113.5");
  EXPECT_EQ(screen().stepsTitle(), "Setup Steps for PlayStation 5");
  EXPECT_EQ(screen().steps(), (std::vector<SetupStep>{{1, "Open Settings"}, {2, "Open Network"}}));
  EXPECT_EQ(screen().note(), "It may take a minute.");
}

TEST_F(ManualEnrollment, copies_the_address_of_the_instructions) {
  EXPECT_FALSE(screen().copyIPAddress());
  add();
  screen().copyIPAddress();
  EXPECT_EQ(app.machine.clipboard.string(), "203.0.113.5");
}

TEST_F(ManualEnrollment, has_cancel_on_the_form_and_back_and_done_on_the_instructions) {
  EXPECT_TRUE(screen().cancel.isEnabled());
  EXPECT_FALSE(screen().back());
  EXPECT_FALSE(screen().done());
  add();
  EXPECT_FALSE(screen().cancel());
  EXPECT_TRUE(screen().back.isEnabled());
  EXPECT_TRUE(screen().done.isEnabled());
  EXPECT_TRUE(presenter.sheet());
}

TEST_F(ManualEnrollment, back_keeps_the_device_and_adding_again_registers_a_second_one) {
  add();
  screen().back();
  EXPECT_FALSE(screen().showInstructions());
  EXPECT_EQ(screen().enrollmentResult(), answer());
  EXPECT_EQ(screen().deviceName(), "Console");
  screen().addDevice();
  app.settle();
  EXPECT_EQ(calls(), 2U);
}

TEST_F(ManualEnrollment, done_notifies_and_then_dismisses) {
  add();
  EXPECT_TRUE(presenter.wasUp.empty());
  screen().done();
  EXPECT_EQ(presenter.wasUp, std::vector{true});
  EXPECT_FALSE(presenter.sheet());
}

TEST_F(ManualEnrollment, cancel_dismisses_without_notifying) {
  screen().cancel();
  EXPECT_FALSE(presenter.sheet());
  EXPECT_TRUE(presenter.wasUp.empty());
}

TEST_F(ManualEnrollment, done_without_a_listener_dismisses) {
  ManualEnrollmentView alone(app.environment(), std::nullopt);
  bool gone = false;
  alone.setDismissHandler([&] { gone = true; });
  alone.deviceName = "Console";
  alone.addDevice();
  app.settle();
  alone.done();
  EXPECT_TRUE(gone);
}

TEST_F(ManualEnrollment, an_answer_after_cancelling_is_dropped) {
  app.machine.http.hold();
  add();
  screen().cancel();
  app.machine.http.releaseAll();
  app.settle();
  EXPECT_FALSE(presenter.sheet());
  EXPECT_TRUE(presenter.wasUp.empty());
}

TEST_F(ManualEnrollment, the_texts_are_exact) {
  EXPECT_EQ(screen().heading(), "Add Game Console or Smart TV");
  EXPECT_EQ(screen().explanation(), "Devices that can't run apps use plain DNS filtering");
  EXPECT_EQ(screen().typeSection(), "Device Type");
  EXPECT_EQ(screen().nameSection(), "Device Name");
  EXPECT_EQ(screen().namePlaceholder(), "e.g., Jake's PlayStation");
  EXPECT_EQ(screen().addressSection(), "Device IP (Optional)");
  EXPECT_EQ(screen().addressBadge(), "Advanced");
  EXPECT_EQ(screen().addressPlaceholder(), "e.g., 192.168.1.50");
  EXPECT_EQ(
      screen().addressHint(),
      "Pre-registering the IP helps identify the device immediately. Leave blank to auto-detect on first "
      "connection.");
  EXPECT_EQ(screen().addTitle(), "Add Device");
  EXPECT_EQ(screen().copyTitle(), "Copy IP Address");
  EXPECT_EQ(screen().cancelTitle(), "Cancel");
  EXPECT_EQ(screen().backTitle(), "Back");
  EXPECT_EQ(screen().doneTitle(), "Done");
  EXPECT_EQ(screen().errorAlert.title(), "Error");
  EXPECT_EQ(screen().errorAlert.okTitle(), "OK");
}

}  // namespace
}  // namespace quillmar
