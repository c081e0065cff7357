#include "platform/settings.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <tuple>

#include "app/session/appearance_manager.h"
#include "app/session/role_manager.h"
#include "client/network_service.h"
#include "client/records/account.h"
#include "testing/test_application.h"

namespace quillmar {
namespace {

TEST(Settings, the_catalogue_holds_every_key_once) {
  std::set<std::string_view> keys;
  settings::forEach([&](const auto& setting) { keys.insert(setting.key); });
  EXPECT_EQ(keys,
            (std::set<std::string_view>{"authToken", "parentId", "parentEmail", "parentName", "familyId",
                                        "authTokenTimestamp", "appearanceMode", "com.quillmar.deviceRole",
                                        "com.quillmar.region", "com.quillmar.apiBaseURL", "child_isEnrolled",
                                        "child_deviceID", "child_dohEndpoint", "child_dohBaseUrl"}));
  EXPECT_EQ(keys.size(), std::tuple_size_v<decltype(settings::catalogue)>);
}

const AuthResponse signedIn{"token", "p1", "ann@example.com", {}, "Ann", {}, {}, {}};

// Whether the catalogue has the key with the value's type.
bool isKnown(const std::string& key, const SettingValue& value) {
  bool isKnown = false;
  settings::forEach([&]<class T>(const Setting<T>& setting) {
    isKnown = isKnown || (setting.key == key && std::holds_alternative<T>(value));
  });
  return isKnown;
}

TEST(Settings, every_written_setting_is_in_the_catalogue_with_its_type) {
  TestApplication app(asParent());
  app.environment().authState()->saveLogin(signedIn);
  app.child().saveEnrollment("d", "https://dns.example/d", "https://dns.example", "https://api.example");
  app.environment().appearanceManager()->cycleMode();

  const auto written = app.machine.settings.all();
  EXPECT_EQ(written.size(), std::tuple_size_v<decltype(settings::catalogue)> - 1)
      << "all but familyId, which nothing writes";
  for (const auto& [key, value] : written) {
    EXPECT_TRUE(isKnown(key, value)) << key;
  }
}

TEST(Settings, a_logout_removes_only_the_session) {
  TestApplication app(asParent());
  app.environment().authState()->saveLogin(signedIn);
  app.environment().appearanceManager()->cycleMode();
  app.environment().authState()->logout();

  std::set<std::string> left;
  for (const auto& [key, value] : app.machine.settings.all()) {
    left.insert(key);
  }
  EXPECT_EQ(left, (std::set<std::string>{"authTokenTimestamp", "com.quillmar.region",
                                         "com.quillmar.deviceRole", "appearanceMode"}));
}

}  // namespace
}  // namespace quillmar
