#include "app/session/settings_keys.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "app/session/appearance_manager.h"
#include "app/session/role_manager.h"
#include "testing/test_application.h"

namespace quillmar {
namespace {

TEST(SettingsKeys, the_catalogue_holds_every_key_once) {
  std::set<std::string_view> keys;
  for (const auto& entry : settings::catalogue) {
    keys.insert(entry.key);
  }
  EXPECT_EQ(keys,
            (std::set<std::string_view>{"authToken", "parentId", "parentEmail", "parentName", "familyId",
                                        "authTokenTimestamp", "appearanceMode", "com.quillmar.deviceRole",
                                        "com.quillmar.region", "com.quillmar.apiBaseURL", "child_isEnrolled",
                                        "child_deviceID", "child_dohEndpoint", "child_dohBaseUrl"}));
  EXPECT_EQ(keys.size(), settings::catalogue.size());
}

const AuthResponse signedIn{"token", "p1", "ann@example.com", {}, "Ann", {}, {}, {}};

settings::ValueType typeOf(const SettingValue& value) {
  if (std::holds_alternative<bool>(value)) {
    return settings::ValueType::boolean;
  }
  return std::holds_alternative<Date>(value) ? settings::ValueType::date : settings::ValueType::string;
}

TEST(SettingsKeys, what_an_application_writes_stands_in_the_catalogue_with_its_type) {
  TestApplication app(asParent());
  app.environment().authState()->saveLogin(signedIn);
  app.child().saveEnrollment("d", "https://dns.example/d", "https://dns.example", "https://api.example");
  app.environment().appearanceManager()->cycleMode();

  const auto written = app.machine.settings.all();
  EXPECT_EQ(written.size(), settings::catalogue.size() - 1) << "all but familyId, which nothing writes";
  for (const auto& [key, value] : written) {
    const auto known = std::ranges::find(settings::catalogue, key, &settings::Entry::key);
    ASSERT_NE(known, settings::catalogue.end()) << key;
    EXPECT_EQ(known->type, typeOf(value)) << key;
  }
}

TEST(SettingsKeys, a_logout_takes_the_session_and_nothing_else) {
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
