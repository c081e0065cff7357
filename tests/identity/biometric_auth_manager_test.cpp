#include "identity/biometric_auth_manager.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "testing/fake_platform.h"
#include "testing/test_application.h"

namespace quillmar {
namespace {

using Case = BiometricError::Case;
using Prompts = std::vector<std::string>;

struct Biometrics : testing::Test {
  Biometrics() {
    keychain.save(KeychainService::emailKey, "ann@example.com");
    keychain.save(KeychainService::passwordKey, "secret");
  }

  std::shared_ptr<BiometricAuthManager> make() {
    return std::make_shared<BiometricAuthManager>(machine.biometrics, machine.dispatch, keychain);
  }
  // Stores the result of `authenticate`, and counts its completions in `completions`.
  void authenticate(BiometricAuthManager& manager) {
    manager.authenticate([this](const Result<SavedCredentials>& result) {
      ++completions;
      onMain = machine.dispatch.isMainThread();
      outcome = result;
    });
  }
  std::optional<Case> failure() const {
    const auto* error = outcome && !outcome->ok() ? outcome->error().as<BiometricError>() : nullptr;
    return error ? std::optional(error->which) : std::nullopt;
  }

  FakePlatform machine;
  const KeychainService keychain{machine.secureItems};
  std::optional<Result<SavedCredentials>> outcome;
  int completions = 0;
  bool onMain = false;
};

TEST_F(Biometrics, maps_the_sensors_number_to_its_type) {
  struct Row {
    int type;
    BiometricType expected;
  };
  for (const auto& row : std::vector<Row>{{1, BiometricType::touchID},
                                          {2, BiometricType::faceID},
                                          {0, BiometricType::none},
                                          {3, BiometricType::none},
                                          {-1, BiometricType::none}}) {
    machine.biometrics.type = row.type;
    const auto manager = make();
    EXPECT_TRUE(manager->isBiometricAvailable());
    EXPECT_EQ(manager->biometricType(), row.expected) << row.type;
  }
}

TEST_F(Biometrics, an_unusable_sensor_counts_as_none) {
  machine.biometrics.available = false;
  machine.biometrics.type = 1;
  const auto manager = make();
  EXPECT_FALSE(manager->isBiometricAvailable());
  EXPECT_EQ(manager->biometricType(), BiometricType::none);
}

TEST_F(Biometrics, availability_is_queried_once_and_again_on_request) {
  machine.biometrics.available = false;
  const auto manager = make();
  machine.biometrics.available = true;
  EXPECT_FALSE(manager->isBiometricAvailable());
  manager->checkBiometricAvailability();
  EXPECT_TRUE(manager->isBiometricAvailable());
  EXPECT_EQ(manager->biometricType(), BiometricType::faceID);
  machine.biometrics.available = false;
  manager->checkBiometricAvailability();
  EXPECT_FALSE(manager->isBiometricAvailable());
  EXPECT_EQ(manager->biometricType(), BiometricType::none);
}

TEST_F(Biometrics, a_delayed_answer_is_published_on_arrival) {
  machine.biometrics.available = false;
  machine.biometrics.type = 1;
  const auto manager = make();
  EXPECT_FALSE(manager->isBiometricAvailable());
  machine.biometrics.answerAvailability(true);
  EXPECT_TRUE(manager->isBiometricAvailable());
  EXPECT_EQ(manager->biometricType(), BiometricType::touchID);
}

TEST_F(Biometrics, an_answer_after_the_manager_is_destroyed_is_dropped) {
  make();
  machine.biometrics.answerAvailability(true);
}

TEST_F(Biometrics, without_both_credentials_there_is_no_prompt) {
  const auto manager = make();
  for (const auto key : {KeychainService::emailKey, KeychainService::passwordKey}) {
    keychain.save(KeychainService::emailKey, "ann@example.com");
    keychain.save(KeychainService::passwordKey, "secret");
    keychain.deleteItem(key);
    outcome.reset();
    authenticate(*manager);
    EXPECT_EQ(failure(), Case::noCredentialsStored) << key << ": at once";
  }
  EXPECT_TRUE(machine.biometrics.prompts.empty());
}

TEST_F(Biometrics, missing_credentials_are_reported_before_a_missing_sensor) {
  const auto manager = make();
  machine.biometrics.available = false;
  authenticate(*manager);
  EXPECT_EQ(failure(), Case::notAvailable) << "at once";
  keychain.deleteItem(KeychainService::emailKey);
  authenticate(*manager);
  EXPECT_EQ(failure(), Case::noCredentialsStored);
  EXPECT_TRUE(machine.biometrics.prompts.empty());
}

TEST_F(Biometrics, a_successful_check_returns_the_credentials_on_the_main_queue) {
  const auto manager = make();
  authenticate(*manager);
  EXPECT_EQ(completions, 0);
  machine.dispatch.settle();
  EXPECT_EQ(machine.biometrics.prompts, Prompts{"Log in to Quillmar"});
  ASSERT_TRUE(outcome && outcome->ok());
  EXPECT_EQ(outcome->value(), (SavedCredentials{"ann@example.com", "secret"}));
  EXPECT_EQ(completions, 1);
  EXPECT_TRUE(onMain);
}

TEST_F(Biometrics, empty_credentials_count_as_credentials) {
  keychain.save(KeychainService::emailKey, "");
  keychain.save(KeychainService::passwordKey, "");
  const auto manager = make();
  authenticate(*manager);
  machine.dispatch.settle();
  ASSERT_TRUE(outcome && outcome->ok());
  EXPECT_EQ(outcome->value(), SavedCredentials());
}

TEST_F(Biometrics, every_code_has_its_error) {
  struct Row {
    std::optional<int> code;
    Case expected;
  };
  const auto manager = make();
  for (const auto& row : std::vector<Row>{{-8, Case::lockout},
                                          {-7, Case::notEnrolled},
                                          {-6, Case::notAvailable},
                                          {-3, Case::userFallback},
                                          {-2, Case::userCancelled},
                                          {-1, Case::failed},
                                          {-4, Case::failed},
                                          {-5, Case::failed},
                                          {0, Case::failed},
                                          {8, Case::failed},
                                          {std::nullopt, Case::failed}}) {
    machine.biometrics.answer = {.success = false, .code = row.code};
    outcome.reset();
    authenticate(*manager);
    machine.dispatch.settle();
    EXPECT_EQ(failure(), row.expected) << row.code.value_or(1);
    EXPECT_TRUE(onMain);
  }
  EXPECT_EQ(machine.secureItems.items().size(), 2U) << "a failed check deletes nothing";
  EXPECT_TRUE(machine.log.printed().empty());
}

TEST_F(Biometrics, credentials_removed_during_the_prompt_are_missing) {
  const auto manager = make();
  machine.biometrics.holding = true;
  authenticate(*manager);
  keychain.deleteItem(KeychainService::passwordKey);
  machine.biometrics.reply({.success = true, .code = std::nullopt});
  machine.dispatch.settle();
  EXPECT_EQ(failure(), Case::noCredentialsStored);
}

TEST_F(Biometrics, credentials_changed_during_the_prompt_are_returned_as_changed) {
  const auto manager = make();
  machine.biometrics.holding = true;
  authenticate(*manager);
  keychain.save(KeychainService::passwordKey, "newer");
  machine.biometrics.reply({.success = true, .code = std::nullopt});
  machine.dispatch.settle();
  ASSERT_TRUE(outcome && outcome->ok());
  EXPECT_EQ(outcome->value().password, "newer");
}

TEST_F(Biometrics, destroying_the_manager_ends_its_prompts_without_a_completion) {
  auto manager = make();
  machine.biometrics.holding = true;
  authenticate(*manager);
  manager.reset();
  machine.biometrics.reply({.success = true, .code = std::nullopt});
  machine.dispatch.settle();
  EXPECT_EQ(completions, 0);
}

TEST(BiometricErrors, each_has_its_message) {
  const std::vector<std::pair<Case, std::string>> sentences{
      {Case::notAvailable, "Biometric authentication is not available on this device"},
      {Case::notEnrolled, "No biometric data is enrolled. Please set up Face ID or Touch ID in Settings."},
      {Case::userCancelled, "Authentication was cancelled"},
      {Case::userFallback, "Please enter your password"},
      {Case::lockout, "Biometric authentication is locked. Please try again later or use your password."},
      {Case::failed, "Authentication failed"},
      {Case::noCredentialsStored, "No saved credentials found"}};
  for (const auto& [which, sentence] : sentences) {
    EXPECT_EQ(BiometricError{which}.localizedDescription(), sentence);
  }
}

TEST(BiometricsOfAnApplication, are_created_once_on_first_use) {
  TestApplication app;
  const auto isMade = [&] {
    return std::ranges::count(app.environment().madeObjects(), "BiometricAuthManager",
                              [](const auto& object) { return object->typeName(); }) == 1;
  };
  EXPECT_FALSE(isMade());
  const auto manager = app.environment().biometricAuthManager();
  EXPECT_TRUE(isMade());
  EXPECT_EQ(manager, app.environment().biometricAuthManager());
  EXPECT_EQ(app.environment().keychainService(), app.environment().keychainService());
}

}  // namespace
}  // namespace quillmar
