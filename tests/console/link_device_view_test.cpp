#include "console/link_device_view.h"

#include "tests/console/child_detail_fixture.h"

namespace quillmar {
namespace {

using namespace std::chrono_literals;
using Names = std::vector<std::string>;

struct LinkDevice : testing::Test {
  LinkDevice() {
    app.machine.settings.set(settings::authToken, std::string("token"));
    app.settle();
    answerWith({makeDevice("d1"), makeDevice("d2")});
    sheet = std::make_shared<LinkDeviceView>(app.environment(), "c1", [this] { order += "linked "; });
    sheet->setDismissHandler([this] { order += "dismissed "; });
  }

  void answerWith(std::vector<Device> devices) {
    http().answerAlways("GET", "/children", 200,
                        jsonOf(ChildrenResponse{.children = {makeChild("c9", "Other", {makeDevice("d9")})},
                                                .unassignedDevices = std::move(devices)}));
  }
  void open() {
    sheet->appear();
    app.settle();
  }
  ScriptedHttpSession& http() { return app.machine.http; }
  Names names() {
    Names all;
    for (std::size_t i = 0; i < sheet->deviceRows.size(); ++i) {
      all.push_back(sheet->deviceRows[i].deviceDisplayName());
    }
    return all;
  }

  TestApplication app{asParent()};
  std::string order;
  std::shared_ptr<LinkDeviceView> sheet;
};

TEST_F(LinkDevice, loads_the_unassigned_devices_and_ignores_the_children) {
  EXPECT_EQ(sheet->content(), LinkDeviceContent::loading);
  sheet->appear();
  EXPECT_TRUE(sheet->isLoading());
  app.settle();
  EXPECT_FALSE(sheet->isLoading());
  EXPECT_EQ(http().calls(), Names{"GET /children"});
  EXPECT_EQ(names(), (Names{"Device d1", "Device d2"}));
  EXPECT_EQ(sheet->content(), LinkDeviceContent::list);
}

TEST_F(LinkDevice, shows_a_text_if_there_is_no_such_device) {
  answerWith({});
  open();
  EXPECT_EQ(sheet->content(), LinkDeviceContent::empty);
}

TEST_F(LinkDevice, a_row_shows_the_type_of_its_device) {
  auto device = makeDevice("d1");
  device.friendlyName = "Mia's Mac";
  device.deviceType = "mac";
  answerWith({device});
  open();
  EXPECT_EQ(sheet->deviceRows[0].deviceDisplayName(), "Mia's Mac");
  EXPECT_EQ(sheet->deviceRows[0].deviceTypeLabel(), "Mac");
  EXPECT_EQ(sheet->deviceRows[0].deviceIconName(), "laptopcomputer");
}

TEST_F(LinkDevice, a_failed_load_is_reported_and_keeps_the_list) {
  open();
  http().failAlways("GET", "/children", TransportError::Kind::timedOut);
  sheet->loadUnassignedDevices();
  EXPECT_EQ(sheet->content(), LinkDeviceContent::loading);
  app.settle();
  EXPECT_TRUE(sheet->errorAlert.isShown());
  EXPECT_EQ(sheet->errorAlert.message(), "The request timed out.");
  EXPECT_EQ(names(), (Names{"Device d1", "Device d2"}));
  EXPECT_TRUE(sheet->errorAlert.dismiss());
  EXPECT_FALSE(sheet->errorAlert.isShown());
}

TEST_F(LinkDevice, a_tap_links_the_device_then_notifies_then_dismisses) {
  http().answer("POST", "/children/c1/devices", 204);
  open();
  EXPECT_TRUE(sheet->deviceRows[1].link());
  EXPECT_EQ(order, "") << "not before the service has answered";
  app.settle();
  EXPECT_EQ(http().requests("POST", "/children/c1/devices").at(0).body, R"({"device_id":"d2"})");
  EXPECT_EQ(order, "linked dismissed ");
}

TEST_F(LinkDevice, a_failed_link_is_reported_and_the_sheet_stays) {
  http().answer("POST", "/children/c1/devices", 403);
  open();
  sheet->deviceRows[0].link();
  app.settle();
  EXPECT_EQ(sheet->errorAlert.message(), "Access denied");
  EXPECT_TRUE(sheet->errorAlert.isShown());
  EXPECT_EQ(order, "");
  EXPECT_EQ(names().size(), 2U);
}

TEST_F(LinkDevice, a_swipe_opens_a_row_whose_button_asks_to_delete) {
  open();
  http().forgetRequests();
  auto& row = sheet->deviceRows[1];
  row.dragChanged(-200, 0);
  EXPECT_EQ(row.offset(), -200);
  row.dragEnded(-81, 0);
  EXPECT_EQ(row.offset(), -80);
  EXPECT_TRUE(row.isSwiped());
  EXPECT_FALSE(sheet->deletionConfirmation.isShown()) << "the swipe alone does nothing";
  row.remove();
  EXPECT_FALSE(row.isSwiped());
  EXPECT_EQ(row.offset(), 0);
  EXPECT_TRUE(sheet->deletionConfirmation.isShown());
  EXPECT_EQ(sheet->deviceToDelete()->id, "d2");
  EXPECT_EQ(http().calls(), Names());
}

TEST_F(LinkDevice, a_tap_closes_an_open_row_and_links_the_device_of_a_closed_one) {
  open();
  http().forgetRequests();
  auto& row = sheet->deviceRows[0];
  row.dragEnded(-81, 0);
  row.tap();
  app.settle();
  EXPECT_FALSE(row.isSwiped());
  EXPECT_EQ(http().calls(), Names());
  row.tap();
  app.settle();
  EXPECT_EQ(http().calls(), Names{"POST /children/c1/devices"});
}

TEST_F(LinkDevice, a_row_that_was_not_dragged_far_enough_closes) {
  open();
  auto& row = sheet->deviceRows[0];
  row.dragChanged(-80, 0);
  row.dragEnded(-80, 0);
  EXPECT_FALSE(row.isSwiped());
  EXPECT_EQ(row.offset(), 0);
}

TEST_F(LinkDevice, cancel_dismisses_without_notifying) {
  open();
  http().forgetRequests();
  sheet->cancel();
  app.settle();
  EXPECT_EQ(order, "dismissed ");
  EXPECT_TRUE(http().requests().empty());
}

TEST_F(LinkDevice, deleting_asks_first_and_cancel_deletes_nothing) {
  open();
  EXPECT_FALSE(sheet->deletionConfirmation.confirm());
  sheet->deleteAt(1);
  EXPECT_TRUE(sheet->deletionConfirmation.isShown());
  EXPECT_EQ(sheet->deviceToDelete()->id, "d2");
  EXPECT_EQ(sheet->deletionText(),
            "This will permanently delete Device d2 and unregister it from Quillmar. This cannot be undone.");
  EXPECT_TRUE(sheet->deletionConfirmation.cancel());
  app.settle();
  EXPECT_EQ(http().count("DELETE", "/devices/d2"), 0U);
  EXPECT_EQ(sheet->deviceToDelete()->id, "d2") << "kept until the next use";
}

TEST_F(LinkDevice, an_index_outside_the_list_asks_nothing) {
  open();
  for (const std::int64_t index : {-1, 2, 1000}) {
    sheet->deleteAt(index);
    EXPECT_FALSE(sheet->deletionConfirmation.isShown());
    EXPECT_EQ(sheet->deviceToDelete(), std::nullopt);
  }
  EXPECT_EQ(
      sheet->deletionText(),
      "This will permanently delete this device and unregister it from Quillmar. This cannot be undone.");
}

TEST_F(LinkDevice, a_device_can_be_deleted_without_swiping) {
  open();
  sheet->deviceRows[0].remove();
  EXPECT_TRUE(sheet->deletionConfirmation.isShown());
  EXPECT_EQ(sheet->deviceToDelete()->id, "d1");
}

TEST_F(LinkDevice, a_deleted_device_leaves_the_list_and_the_sheet_stays) {
  http().answer("DELETE", "/devices/d1", 200, "ignored");
  open();
  sheet->deleteAt(0);
  EXPECT_TRUE(sheet->deletionConfirmation.confirm());
  EXPECT_FALSE(sheet->deletionConfirmation.isShown());
  EXPECT_EQ(names().size(), 2U) << "not before the service has answered";
  app.settle();
  EXPECT_EQ(names(), Names{"Device d2"});
  EXPECT_EQ(order, "linked ") << "the caller is to load again";
}

TEST_F(LinkDevice, a_failed_deletion_is_reported_and_the_device_stays) {
  http().answer("DELETE", "/devices/d1", 500, R"({"error":"Not now"})");
  open();
  sheet->deleteAt(0);
  sheet->deletionConfirmation.confirm();
  app.settle();
  EXPECT_EQ(sheet->errorAlert.message(), "Not now");
  EXPECT_EQ(names().size(), 2U);
  EXPECT_EQ(order, "");
}

TEST_F(LinkDevice, without_a_device_nothing_is_deleted) {
  open();
  http().forgetRequests();
  sheet->deletionConfirmation.isShown = true;
  sheet->deletionConfirmation.confirm();
  app.settle();
  EXPECT_TRUE(http().requests().empty());
}

TEST_F(LinkDevice, a_load_that_answers_after_a_deletion_replaces_the_whole_list) {
  http().answer("DELETE", "/devices/d1", 204);
  open();
  http().hold("GET", "/children");
  sheet->loadUnassignedDevices();
  app.settle();
  sheet->deleteAt(0);
  sheet->deletionConfirmation.confirm();
  app.settle();
  EXPECT_EQ(names(), Names{"Device d2"});
  answerWith({makeDevice("d2"), makeDevice("d3")});
  http().releaseAll();
  app.settle();
  EXPECT_EQ(names(), (Names{"Device d2", "Device d3"}));
}

TEST_F(LinkDevice, each_way_to_add_a_new_device_is_a_sheet) {
  open();
  sheet->addPhone();
  EXPECT_TRUE(sheet->showScanner());
  EXPECT_FALSE(sheet->showManualEnrollment());
  sheet->showScanner = false;
  sheet->addConsole();
  EXPECT_TRUE(sheet->showManualEnrollment());
}

TEST_F(LinkDevice, returning_from_a_sheet_reloads) {
  open();
  sheet->addPhone();
  http().forgetRequests();
  sheet->showScanner->cancel();
  app.settle();
  EXPECT_EQ(http().calls(), Names{"GET /children"});
  sheet->addConsole();
  http().forgetRequests();
  sheet->showManualEnrollment->cancel();
  app.settle();
  EXPECT_EQ(http().calls(), Names{"GET /children"});
}

TEST_F(LinkDevice, enrolling_a_new_device_for_the_child_notifies_and_dismisses_like_a_link) {
  http().answer("POST", "/enrollment/manual", 200,
                R"({"message":"done","device":)" + jsonOf(makeDevice("d3")) +
                    R"(,"dns_server":"192.0.2.1","setup_instructions":{"platform":"tv",)"
                    R"("dns_server_ip":"192.0.2.1","steps":[]},"note":"n"})");
  open();
  sheet->addConsole();
  auto& manual = *sheet->showManualEnrollment;
  manual.deviceName = std::string("TV");
  manual.addDevice();
  app.settle();
  EXPECT_NE(http().requests("POST", "/enrollment/manual").at(0).body->find(R"("child_id":"c1")"),
            std::string::npos);
  manual.done();
  EXPECT_TRUE(order.starts_with("linked dismissed ")) << order;
}

TEST_F(LinkDevice, the_texts_are_exact) {
  EXPECT_EQ(sheet->title(), "Link Device");
  EXPECT_EQ(sheet->cancelTitle(), "Cancel");
  EXPECT_EQ(sheet->newSection(), "Add New Device");
  EXPECT_EQ(sheet->phoneTitle(), "Phone or Tablet");
  EXPECT_EQ(sheet->phoneText(), "Scan QR code on child's device");
  EXPECT_EQ(sheet->consoleTitle(), "Game Console or Smart TV");
  EXPECT_EQ(sheet->consoleText(), "Configure DNS settings manually");
  EXPECT_EQ(sheet->existingSection(), "Link Existing Device");
  EXPECT_EQ(sheet->loadingText(), "Loading existing devices...");
  EXPECT_EQ(sheet->emptyText(), "No unassigned devices available");
  EXPECT_EQ(sheet->deletionTitle(), "Delete Device?");
  EXPECT_EQ(sheet->deleteTitle(), "Delete");
  EXPECT_EQ(sheet->errorAlert.title(), "Error");
  EXPECT_EQ(sheet->errorAlert.okTitle(), "OK");
}

}  // namespace
}  // namespace quillmar
