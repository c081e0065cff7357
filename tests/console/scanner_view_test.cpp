#include "console/scanner_view.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "client/records/enrollment.h"
#include "tests/console/console_test.h"

namespace quillmar {
namespace {

using namespace std::chrono_literals;
using Names = std::vector<std::string>;

const std::string completePath = "/enrollment/complete";
const std::string invitation = R"({"type":"family_invite","invite_code":"AB12CD"})";

std::string code(const std::string& deviceName = "Mia's iPhone",
                 const std::string& enrollmentCode = "ABC123") {
  return jsonOf(QRCodeData{.enrollmentCode = enrollmentCode,
                           .deviceId = "device-1",
                           .deviceName = deviceName,
                           .deviceType = "ios"});
}

struct Scanning : testing::Test {
  struct Presenter final : ObservableObject {
    Presenter(Environment& environment, std::optional<std::string> childId)
        : ObservableObject("Presenter"), sheet(*this, "sheet", [this, &environment, childId] {
            return std::make_shared<ScannerView>(environment, childId, [this] { wasUp.push_back(sheet()); });
          }) {}
    Sheet<ScannerView> sheet;
    std::vector<bool> wasUp;
  };

  Scanning() {
    app.machine.http.answerAlways("GET", "/children", 200, "{}");
    app.machine.http.answerAlways(
        "POST", completePath, 200,
        jsonOf(CompleteEnrollmentResponse{
            .message = "done", .device = makeDevice("d1"), .dohEndpoint = "https://dns.example/d1"}));
    app.settle();
    app.machine.http.forgetRequests();
    app.machine.log.clear();
  }

  void open() {
    presenter.sheet = true;
    app.settle();
  }
  ScannerView& screen() { return *presenter.sheet; }
  FakeQRReader& reader() { return app.machine.qrReader; }
  void scan(const std::string& text) {
    reader().showCode(text);
    app.settle();
  }
  void complete() {
    screen().completeEnrollment();
    app.settle();
  }
  std::size_t calls() { return app.machine.http.count("POST", completePath); }
  std::string lastBody() { return *app.machine.http.requests("POST", completePath).back().body; }

  TestApplication app{asSignedInParent()};
  Presenter presenter{app.environment(), "c1"};
};

using Completing = Scanning;
using WithoutACamera = Scanning;

struct Typing : Scanning {
  void type(const std::string& typed, const std::string& name = {}) {
    screen().enterCode();
    screen().typedCode.input(typed);
    screen().deviceName.input(name);
    screen().useTypedCode();
    app.settle();
  }
};

TEST_F(Scanning, begins_with_the_camera_and_sends_nothing) {
  open();
  EXPECT_TRUE(screen().isScanning());
  EXPECT_EQ(screen().stage(), ScannerStage::scanning);
  EXPECT_EQ(screen().scannedCode(), "");
  EXPECT_EQ(screen().deviceName(), "");
  EXPECT_FALSE(screen().isProcessing());
  EXPECT_FALSE(screen().errorAlert.isShown());
  EXPECT_FALSE(screen().enrollmentSuccess());
  EXPECT_TRUE(screen().hasCamera());
  EXPECT_EQ(screen().cameraNotice(), std::nullopt);
  EXPECT_TRUE(reader().isRunning());
  EXPECT_FALSE(screen().completeEnrollment());
  EXPECT_FALSE(screen().scanAgain());
  EXPECT_FALSE(screen().done());
  app.advance(1min);
  EXPECT_TRUE(app.machine.http.requests("POST", completePath).empty());
}

TEST_F(Scanning, a_code_shows_the_review_with_the_devices_own_name) {
  open();
  scan(code());
  EXPECT_EQ(screen().stage(), ScannerStage::review);
  EXPECT_EQ(screen().scannedCode(), code());
  EXPECT_EQ(screen().deviceName(), "Mia's iPhone");
  EXPECT_FALSE(screen().errorAlert.isShown());
  EXPECT_FALSE(reader().isRunning());
  EXPECT_EQ(calls(), 0U);
}

TEST_F(Scanning, ignores_objects_that_are_not_qr_codes) {
  open();
  reader().show({{.isQRCode = false, .text = code()}});
  app.settle();
  EXPECT_TRUE(screen().isScanning());
  scan(code());
  EXPECT_EQ(screen().stage(), ScannerStage::review);
}

TEST_F(Scanning, an_empty_code_is_ignored) {
  open();
  scan("");
  EXPECT_TRUE(screen().isScanning());
  EXPECT_EQ(screen().scannedCode(), "");
}

TEST_F(Scanning, a_code_that_is_no_enrollment_is_an_invalid_format_and_can_be_rescanned) {
  std::string garbage(3000, '\0');
  for (std::size_t i = 0; i < garbage.size(); ++i) {
    garbage[i] = static_cast<char>(i * 7 + 1);
  }
  for (const auto& text :
       Names{invitation, garbage, std::string(1'000'000, 'x'), std::string(1'000'000, '['), "AB12CD", "{}",
             "[]", "null", "\xFF\xFE", R"({"enrollment_code":"A","device_id":"d","device_name":"n"})",
             R"({"enrollment_code":7,"device_id":"d","device_name":"n","device_type":"ios"})",
             R"({"enrollment_code":"A","device_id":"d","device_name":null,"device_type":"ios"})",
             code() + "x"}) {
    open();
    scan(text);
    EXPECT_EQ(screen().errorAlert.message(), "Invalid QR code format") << text.substr(0, 80);
    EXPECT_TRUE(screen().errorAlert.isShown());
    EXPECT_EQ(screen().stage(), ScannerStage::review);
    EXPECT_EQ(screen().deviceName(), "");
    screen().errorAlert.dismiss();
    screen().scanAgain();
    EXPECT_TRUE(screen().isScanning());
    presenter.sheet = false;
  }
  EXPECT_EQ(calls(), 0U);
}

TEST_F(Scanning, an_invalid_code_cannot_be_completed) {
  open();
  scan(invitation);
  screen().errorAlert.dismiss();
  complete();
  EXPECT_EQ(screen().errorAlert.message(), "Invalid QR code data");
  EXPECT_TRUE(screen().errorAlert.isShown());
  EXPECT_FALSE(screen().isProcessing());
  EXPECT_EQ(calls(), 0U);
  EXPECT_TRUE(app.machine.log.systemLines().empty());
}

TEST_F(Scanning, a_code_without_a_name_keeps_the_field) {
  open();
  scan(code(""));
  EXPECT_EQ(screen().deviceName(), "");
  complete();
  EXPECT_EQ(lastBody(), R"({"enrollment_code":"ABC123","device_name":"","child_id":"c1"})");
}

TEST_F(Scanning, scanning_again_keeps_the_typed_name_until_the_next_code_has_one) {
  open();
  scan(code());
  screen().deviceName = "typed";
  screen().scanAgain();
  EXPECT_EQ(screen().scannedCode(), "");
  EXPECT_EQ(screen().deviceName(), "typed");
  app.settle();
  EXPECT_TRUE(reader().isRunning());
  scan(code(""));
  EXPECT_EQ(screen().deviceName(), "typed");
  screen().scanAgain();
  app.settle();
  scan(code("Tablet"));
  EXPECT_EQ(screen().deviceName(), "Tablet");
}

TEST_F(Scanning, the_camera_runs_only_while_waiting_for_a_code) {
  EXPECT_TRUE(reader().calls.empty());
  open();
  scan(code());
  screen().scanAgain();
  app.settle();
  screen().cancel();
  EXPECT_FALSE(reader().isRunning());
  // The scanner stops the camera at a code, and its view stops it again when it disappears.
  EXPECT_EQ(reader().calls, (Names{"start", "stop", "stop", "start", "stop"}));
}

TEST_F(Scanning, a_screen_that_was_never_shown_does_not_start_the_camera) {
  {
    ScannerView unseen(app.environment(), std::nullopt, [] {});
  }
  EXPECT_TRUE(reader().calls.empty());
}

TEST_F(Scanning, cancel_dismisses_in_any_state_without_notifying) {
  open();
  screen().cancel();
  EXPECT_FALSE(presenter.sheet());
  open();
  scan(code());
  screen().cancel();
  EXPECT_FALSE(presenter.sheet());
  open();
  scan(code());
  app.machine.http.hold();
  complete();
  screen().cancel();
  EXPECT_FALSE(presenter.sheet());
  app.machine.http.releaseAll();
  app.settle();
  open();
  scan(code());
  complete();
  screen().cancel();
  EXPECT_FALSE(presenter.sheet());
  EXPECT_TRUE(presenter.wasUp.empty());
}

TEST_F(Completing, sends_only_the_code_the_name_and_the_child) {
  open();
  scan(code());
  screen().deviceName = " My name ";
  complete();
  EXPECT_EQ(lastBody(), R"({"enrollment_code":"ABC123","device_name":" My name ","child_id":"c1"})");
  EXPECT_EQ(header(app.machine.http.requests("POST", completePath).front(), "Authorization"), "Bearer token");
  EXPECT_EQ(app.machine.log.systemLines().front(), "[ScannerView] Enrolling device with childId: c1");
}

TEST_F(Completing, a_cleared_name_becomes_the_devices_own) {
  open();
  scan(code());
  screen().deviceName = "";
  complete();
  EXPECT_EQ(lastBody(), R"({"enrollment_code":"ABC123","device_name":"Mia's iPhone","child_id":"c1"})");
}

TEST_F(Completing, without_a_child_the_device_is_unassigned_and_that_is_logged) {
  ScannerView alone(app.environment(), std::nullopt, [] {});
  alone.handleScannedCode(code());
  alone.completeEnrollment();
  app.settle();
  EXPECT_EQ(lastBody(), R"({"enrollment_code":"ABC123","device_name":"Mia's iPhone"})");
  EXPECT_EQ(app.machine.log.systemLines().front(),
            "[ScannerView] Enrolling device without childId (will be unassigned)");
}

TEST_F(Completing, is_disabled_during_the_call) {
  open();
  scan(code());
  app.machine.http.hold();
  complete();
  EXPECT_TRUE(screen().isProcessing());
  EXPECT_FALSE(screen().completeEnrollment());
  EXPECT_TRUE(screen().scanAgain.isEnabled());
  app.settle();
  EXPECT_EQ(calls(), 1U);
  app.machine.http.releaseAll();
  app.settle();
  EXPECT_FALSE(screen().isProcessing());
}

TEST_F(Completing, ends_on_the_success_page_whose_done_notifies_and_then_dismisses) {
  open();
  scan(code());
  complete();
  EXPECT_TRUE(screen().enrollmentSuccess());
  EXPECT_EQ(screen().stage(), ScannerStage::success);
  EXPECT_FALSE(screen().completeEnrollment());
  EXPECT_TRUE(presenter.wasUp.empty());
  screen().done();
  EXPECT_EQ(presenter.wasUp, std::vector{true});
  EXPECT_FALSE(presenter.sheet());
}

TEST_F(Completing, a_success_while_scanning_again_keeps_the_camera) {
  open();
  scan(code());
  app.machine.http.hold();
  complete();
  screen().scanAgain();
  app.machine.http.releaseAll();
  app.settle();
  EXPECT_TRUE(screen().enrollmentSuccess());
  EXPECT_EQ(screen().stage(), ScannerStage::scanning);
}

TEST_F(Completing, a_failure_shows_the_calls_error_followed_by_two_flags) {
  open();
  scan(code());
  app.machine.http.answer("POST", completePath, 400, R"({"error":"Enrollment code has expired"})");
  complete();
  EXPECT_EQ(screen().errorAlert.message(), "Enrollment code has expired\n\n[Debug: Token: Yes, Region: Yes]");
  EXPECT_TRUE(screen().errorAlert.isShown());
  EXPECT_FALSE(screen().isProcessing());
  EXPECT_EQ(screen().stage(), ScannerStage::review);
  EXPECT_EQ(screen().scannedCode(), code());
  screen().errorAlert.dismiss();
  complete();
  EXPECT_TRUE(screen().enrollmentSuccess());
}

TEST_F(Completing, the_flags_show_whether_the_keys_exist_at_the_time_of_the_call) {
  struct Row {
    std::optional<std::string> token;
    std::optional<std::string> region;
    std::string tail;
  };
  open();
  scan(code());
  const auto store = [&](std::string_view key, const std::optional<std::string>& value) {
    if (value) {
      app.machine.settings.set(key, *value);
    } else {
      app.machine.settings.remove(key);
    }
  };
  for (const auto& row : std::vector<Row>{{"t", "australia", "[Debug: Token: Yes, Region: Yes]"},
                                          {"", "", "[Debug: Token: Yes, Region: Yes]"},
                                          {std::nullopt, "australia", "[Debug: Token: No, Region: Yes]"},
                                          {"t", std::nullopt, "[Debug: Token: Yes, Region: No]"},
                                          {std::nullopt, std::nullopt, "[Debug: Token: No, Region: No]"}}) {
    store(settings::authToken, row.token);
    store(settings::region, row.region);
    app.machine.http.fail("POST", completePath, TransportError::Kind::timedOut);
    screen().completeEnrollment();
    app.machine.settings.set(settings::authToken, std::string("later"));
    app.machine.settings.set(settings::region, std::string("australia"));
    app.settle();
    EXPECT_TRUE(screen().errorAlert.isShown());
    EXPECT_EQ(screen().errorAlert.message().substr(screen().errorAlert.message().find("\n\n") + 2), row.tail);
    screen().errorAlert.dismiss();
  }
}

TEST_F(Completing, a_stored_value_of_another_type_counts_as_existing) {
  open();
  scan(code());
  app.machine.settings.set(settings::region, std::int64_t{7});
  complete();
  EXPECT_NE(screen().errorAlert.message().find("Region: Yes"), std::string::npos)
      << screen().errorAlert.message();
}

TEST_F(WithoutACamera, says_so_and_starts_no_camera) {
  reader().setCamera(CameraState::absent);
  open();
  EXPECT_FALSE(screen().hasCamera());
  EXPECT_EQ(screen().cameraNotice(), "No camera was found. Use a picture of the code instead.");
  EXPECT_TRUE(screen().isScanning());
  EXPECT_FALSE(screen().errorAlert.isShown());
  EXPECT_TRUE(reader().calls.empty());
}

TEST_F(WithoutACamera, a_denied_camera_shows_what_to_do_and_starts_once_allowed) {
  open();
  reader().setCamera(CameraState::refused);
  EXPECT_FALSE(screen().hasCamera());
  EXPECT_EQ(screen().cameraNotice(),
            "The camera may not be used. Allow it in the system's settings, or use a picture of the code.");
  EXPECT_FALSE(reader().isRunning());
  reader().setCamera(CameraState::available);
  app.settle();
  EXPECT_TRUE(screen().hasCamera());
  EXPECT_TRUE(reader().isRunning());
  scan(code());
  EXPECT_EQ(screen().stage(), ScannerStage::review);
  reader().setCamera(CameraState::absent);
  EXPECT_EQ(screen().stage(), ScannerStage::review);
}

TEST_F(WithoutACamera, reads_the_code_in_a_picture) {
  open();
  reader().picture = RecognisedObjects{{.isQRCode = true, .text = code()}};
  screen().choosePicture("/tmp/a picture.png");
  EXPECT_TRUE(screen().isReading());
  EXPECT_FALSE(screen().choosePicture("/tmp/other.png"));
  EXPECT_FALSE(screen().pasteCode());
  EXPECT_FALSE(screen().readScreen());
  app.settle();
  EXPECT_FALSE(screen().isReading());
  EXPECT_EQ(screen().stage(), ScannerStage::review);
  EXPECT_EQ(screen().deviceName(), "Mia's iPhone");
  EXPECT_EQ(reader().calls, (Names{"start", "picture /tmp/a picture.png", "stop"}));
}

TEST_F(WithoutACamera, takes_the_first_readable_qr_code_of_several_objects) {
  open();
  reader().screen = RecognisedObjects{{.isQRCode = false, .text = "4006381333931"},
                                      {.isQRCode = true, .text = std::nullopt},
                                      {.isQRCode = true, .text = ""},
                                      {.isQRCode = true, .text = code("first")},
                                      {.isQRCode = true, .text = code("second")}};
  screen().readScreen();
  app.settle();
  EXPECT_EQ(screen().deviceName(), "first");
}

TEST_F(WithoutACamera, text_on_the_clipboard_is_used_as_the_code) {
  open();
  app.machine.clipboard.setString(code());
  screen().pasteCode();
  EXPECT_EQ(screen().stage(), ScannerStage::review);
  EXPECT_EQ(screen().deviceName(), "Mia's iPhone");
  EXPECT_EQ(reader().calls, (Names{"start", "stop"}));
}

TEST_F(WithoutACamera, without_text_the_clipboards_picture_is_scanned) {
  open();
  reader().clipboard = RecognisedObjects{{.isQRCode = true, .text = code()}};
  screen().pasteCode();
  app.settle();
  EXPECT_EQ(screen().stage(), ScannerStage::review);
  EXPECT_EQ(reader().calls, (Names{"start", "clipboard", "stop"}));
}

TEST_F(WithoutACamera, other_text_on_the_clipboard_is_an_invalid_format) {
  open();
  app.machine.clipboard.setString("a shopping list");
  screen().pasteCode();
  EXPECT_EQ(screen().errorAlert.message(), "Invalid QR code format");
  EXPECT_TRUE(screen().errorAlert.isShown());
}

TEST_F(WithoutACamera, a_picture_without_a_code_is_reported_and_scanning_continues) {
  open();
  reader().picture = RecognisedObjects{{.isQRCode = false, .text = "4006381333931"}};
  screen().choosePicture("/tmp/dog.jpg");
  app.settle();
  EXPECT_EQ(screen().errorAlert.message(), "No QR code was found in this picture.");
  EXPECT_TRUE(screen().errorAlert.isShown());
  EXPECT_TRUE(screen().isScanning());
  EXPECT_EQ(screen().scannedCode(), "");
  EXPECT_TRUE(reader().isRunning());
  screen().pasteCode();
  app.settle();
  EXPECT_EQ(screen().errorAlert.message(), "No QR code was found on the clipboard.");
  screen().readScreen();
  app.settle();
  EXPECT_EQ(screen().errorAlert.message(), "No QR code was found on the screen.");
  EXPECT_TRUE(screen().isScanning());
}

TEST_F(WithoutACamera, an_unreadable_picture_shows_the_readers_error) {
  open();
  reader().picture = Error(QRReaderError{"The file is no picture."});
  screen().choosePicture("/etc/passwd");
  app.settle();
  EXPECT_EQ(screen().errorAlert.message(), "The file is no picture.");
  EXPECT_TRUE(screen().errorAlert.isShown());
  EXPECT_TRUE(screen().isScanning());
  EXPECT_TRUE(screen().choosePicture.isEnabled());
}

TEST_F(WithoutACamera, a_picture_read_after_the_camera_found_a_code_is_ignored) {
  open();
  reader().picture = RecognisedObjects{{.isQRCode = true, .text = code("picture")}};
  reader().showCode(code("camera"));
  screen().choosePicture("/tmp/a.png");
  app.settle();
  EXPECT_EQ(screen().deviceName(), "camera");
  EXPECT_FALSE(screen().isReading());
  EXPECT_FALSE(screen().choosePicture("/tmp/b.png")) << "there is a code to review";
}

TEST_F(WithoutACamera, a_picture_read_after_the_screen_is_destroyed_is_dropped) {
  open();
  reader().picture = RecognisedObjects{{.isQRCode = true, .text = code()}};
  screen().choosePicture("/tmp/a.png");
  screen().cancel();
  app.settle();
  EXPECT_FALSE(presenter.sheet());
}

TEST_F(Scanning, the_texts_are_exact) {
  open();
  EXPECT_EQ(screen().title(), "Add Device");
  EXPECT_EQ(screen().cancelTitle(), "Cancel");
  EXPECT_EQ(screen().scanLine(), "Point camera at QR code on child's device");
  EXPECT_EQ(screen().reviewHeading(), "QR Code Scanned");
  EXPECT_EQ(screen().enterCodeTitle(), "Enter Code");
  EXPECT_EQ(screen().codeLabel(), "Enrollment Code");
  EXPECT_EQ(screen().typingText(), "Type the code that stands under the QR code on the child's device.");
  EXPECT_EQ(screen().continueTitle(), "Continue");
  EXPECT_EQ(screen().nameLabel(), "Device Name (optional)");
  EXPECT_EQ(screen().namePlaceholder(), "e.g., John's iPhone");
  EXPECT_EQ(screen().completeTitle(), "Complete Enrollment");
  EXPECT_EQ(screen().scanAgainTitle(), "Scan Again");
  EXPECT_EQ(screen().successHeading(), "Device Enrolled!");
  EXPECT_EQ(screen().successText(), "The device has been successfully added to your account.");
  EXPECT_EQ(screen().doneTitle(), "Done");
  EXPECT_EQ(screen().errorAlert.title(), "Error");
  EXPECT_EQ(screen().errorAlert.okTitle(), "OK");
}

TEST_F(Typing, stops_the_camera_and_sends_nothing) {
  open();
  EXPECT_FALSE(screen().useTypedCode());
  EXPECT_TRUE(screen().enterCode());
  app.settle();
  EXPECT_EQ(screen().stage(), ScannerStage::typing);
  EXPECT_FALSE(reader().isRunning());
  EXPECT_FALSE(screen().enterCode());
  EXPECT_FALSE(screen().pasteCode());
  EXPECT_FALSE(screen().completeEnrollment());
  EXPECT_EQ(calls(), 0U);
}

TEST_F(Typing, an_empty_code_cannot_be_used) {
  open();
  screen().enterCode();
  EXPECT_FALSE(screen().useTypedCode());
  screen().typedCode.input(std::string("A"));
  EXPECT_TRUE(screen().useTypedCode.isEnabled());
  screen().typedCode.input(std::string());
  EXPECT_FALSE(screen().useTypedCode());
  EXPECT_EQ(screen().stage(), ScannerStage::typing);
}

TEST_F(Typing, leads_to_the_same_review_and_the_same_call) {
  open();
  type("ABC123", "Mia's laptop");
  EXPECT_EQ(screen().stage(), ScannerStage::review);
  EXPECT_EQ(screen().reviewHeading(), "Code Entered");
  EXPECT_EQ(screen().deviceName(), "Mia's laptop");
  EXPECT_EQ(screen().scannedCode(),
            R"({"enrollment_code":"ABC123","device_id":"","device_name":"Mia's laptop","device_type":""})");
  EXPECT_FALSE(screen().errorAlert.isShown());
  EXPECT_EQ(calls(), 0U);
  complete();
  EXPECT_EQ(lastBody(), R"({"enrollment_code":"ABC123","device_name":"Mia's laptop","child_id":"c1"})");
  EXPECT_EQ(screen().stage(), ScannerStage::success);
}

TEST_F(Typing, without_a_name_sends_an_empty_one) {
  open();
  type("ABC123");
  complete();
  EXPECT_EQ(lastBody(), R"({"enrollment_code":"ABC123","device_name":"","child_id":"c1"})");
}

TEST_F(Typing, sends_any_code_and_name_as_typed) {
  for (const auto& typed :
       Names{" ABC123 ", "\tabc 123\n", "   ", std::string(1'000'000, 'x'), "\u05D0\u05D1\u05D2",
             "\u202Eevil\u202C", R"(","device_id":"d9","x":")", R"({"enrollment_code":"Z"})",
             std::string("a\0b", 3), "\\\"\x01\x7F", "\U0001F468\u200D\U0001F469"}) {
    open();
    type(typed, typed);
    ASSERT_EQ(screen().stage(), ScannerStage::review) << typed.substr(0, 40);
    EXPECT_EQ(screen().deviceName(), typed);
    complete();
    EXPECT_EQ(lastBody(), jsonOf(CompleteEnrollmentRequest{
                              .enrollmentCode = typed, .deviceName = typed, .childId = "c1"}));
    presenter.sheet = false;
  }
}

TEST_F(Typing, a_text_that_is_no_text_is_reported) {
  open();
  screen().enterCode();
  screen().typedCode.input(std::string("\xFF\xFE"));
  screen().useTypedCode();
  app.settle();
  EXPECT_TRUE(screen().errorAlert.isShown());
  EXPECT_EQ(screen().stage(), ScannerStage::typing);
}

TEST_F(Typing, a_wrong_code_can_be_corrected) {
  open();
  type("ABC12", "Laptop");
  app.machine.http.answer("POST", completePath, 400, R"({"error":"No such code"})");
  complete();
  EXPECT_EQ(screen().errorAlert.message(), "No such code\n\n[Debug: Token: Yes, Region: Yes]");
  EXPECT_EQ(screen().stage(), ScannerStage::review);
  screen().errorAlert.dismiss();
  screen().scanAgain();
  app.settle();
  EXPECT_TRUE(reader().isRunning());
  screen().enterCode();
  EXPECT_EQ(screen().typedCode(), "ABC12");
  EXPECT_EQ(screen().deviceName(), "Laptop");
}

TEST_F(Typing, scanning_again_is_the_way_back_to_the_camera) {
  open();
  screen().enterCode();
  EXPECT_TRUE(screen().scanAgain());
  app.settle();
  EXPECT_EQ(screen().stage(), ScannerStage::scanning);
  EXPECT_TRUE(reader().isRunning());
  scan(code());
  EXPECT_EQ(screen().reviewHeading(), "QR Code Scanned");
}

TEST_F(Typing, is_not_begun_while_a_picture_is_read) {
  open();
  reader().picture = RecognisedObjects{{.isQRCode = true, .text = code()}};
  screen().choosePicture("/tmp/a picture.png");
  EXPECT_FALSE(screen().enterCode());
}

TEST_F(Typing, cancel_dismisses_without_notifying) {
  open();
  screen().enterCode();
  screen().cancel();
  EXPECT_FALSE(presenter.sheet());
  EXPECT_TRUE(presenter.wasUp.empty());
}

}  // namespace
}  // namespace quillmar
