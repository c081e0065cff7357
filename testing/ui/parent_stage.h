#pragma once

#include <string>

#include "console/child_activity_view.h"
#include "console/child_detail_view.h"
#include "console/device_list_view.h"
#include "console/manual_enrollment_view.h"
#include "console/scanner_view.h"
#include "console/settings_view.h"
#include "family/family_members_view.h"
#include "family/home_network_view.h"
#include "family/join_family_view.h"
#include "foundation/date.h"
#include "identity/login_view.h"
#include "identity/register_view.h"
#include "testing/test_application.h"
#include "testing/ui/ui_stage.h"

// The content of a parent's windows in tests and pictures: a family of three children. Mia has five devices,
// a policy and activity.
namespace quillmar {

StoredSettings signedInParent();
std::string deviceJson(const std::string& id, const std::string& name, const std::string& type, bool isOnline,
                       const std::string& lastSeen = "2026-01-01T00:00:00Z");
std::string childJson(const std::string& id, const std::string& name, const std::string& devices,
                      const std::string& more = {});
std::string miaJson();
std::string familyJson();
std::string logJson(int id, const std::string& domain, bool wasBlocked, Date time);
std::string logsJson(Date now);
void answerFamily(ui::UiStage& stage, const std::string& body);
DeviceListView& dashboard(ui::UiStage& stage);
void showFamily(ui::UiStage& stage);
ChildDetailView& openChild(ui::UiStage& stage);
// A week of a device's requests: many of the phone, "d1", and few of any other.
std::string weekJson(Date now, const std::string& device);
// Mia's phone and tablet have a week of requests, her other devices none.
void answerWeek(ui::UiStage& stage);
ChildActivityView& openActivity(ui::UiStage& stage);
ScannerView& openScanner(ui::UiStage& stage, CameraState camera);
ManualEnrollmentView& openManual(ui::UiStage& stage);
std::string invitationJson();
std::string parentsJson(Date now);
FamilyMembersView& openFamily(ui::UiStage& stage);
std::string homeNetworkJson(const std::string& currentIP, bool matches);
HomeNetworkView& openHomeNetwork(ui::UiStage& stage, const std::string& answer);
JoinFamilyView& openJoining(ui::UiStage& stage);
RegisterView& openRegistration(ui::UiStage& stage);
SettingsView& openSettings(ui::UiStage& stage);

}  // namespace quillmar
