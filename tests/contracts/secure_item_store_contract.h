#pragma once

// What every SecureItemStore promises:
//   INSTANTIATE_TEST_SUITE_P(Libsecret, SecureItemStoreContract,
//   testing::Values(factory<SecureItemStoreHarness, LibsecretHarness>("Libsecret")));

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>

#include "platform/secure_item_store.h"
#include "tests/contracts/factory.h"

namespace quillmar {

// A new, empty store that can be locked.
class SecureItemStoreHarness : public Harness {
 public:
  virtual SecureItemStore& store() = 0;
  virtual void setLocked(bool locked) = 0;
};

class SecureItemStoreContract : public testing::TestWithParam<Factory<SecureItemStoreHarness>> {
 protected:
  using Status = SecureItemStatus;

  SecureItemStore& store() { return harness_->store(); }
  void setLocked(bool locked) { harness_->setLocked(locked); }
  std::optional<std::string> read(std::string_view service, std::string_view account) {
    return store().copyMatching(service, account).bytes;
  }

 private:
  std::unique_ptr<SecureItemStoreHarness> harness_ = GetParam()();
};

TEST_P(SecureItemStoreContract, an_item_comes_back_byte_for_byte) {
  using namespace std::string_literals;
  for (const std::string& bytes :
       {"pass word"s, "zwölf"s, ""s, "a\0b"s, "\xff\xfe"s, std::string(10000, 'x')}) {
    EXPECT_EQ(store().add("service", "account", bytes), Status::success);
    const auto found = store().copyMatching("service", "account");
    EXPECT_EQ(found.status, Status::success);
    EXPECT_EQ(found.bytes, bytes);
    EXPECT_EQ(store().remove("service", "account"), Status::success);
  }
}

TEST_P(SecureItemStoreContract, an_item_that_was_never_added_is_not_found) {
  const auto found = store().copyMatching("service", "account");
  EXPECT_EQ(found.status, Status::notFound);
  EXPECT_EQ(found.bytes, std::nullopt);
  EXPECT_EQ(store().remove("service", "account"), Status::notFound);
}

TEST_P(SecureItemStoreContract, a_second_item_of_the_same_name_is_refused_and_the_first_stays) {
  store().add("service", "account", "first");
  EXPECT_EQ(store().add("service", "account", "second"), Status::duplicate);
  EXPECT_EQ(read("service", "account"), "first");
}

TEST_P(SecureItemStoreContract, service_and_account_together_name_an_item) {
  store().add("service", "email", "a");
  store().add("service", "password", "b");
  store().add("other", "email", "c");
  EXPECT_EQ(store().remove("service", "email"), Status::success);
  EXPECT_EQ(read("service", "email"), std::nullopt);
  EXPECT_EQ(read("service", "password"), "b");
  EXPECT_EQ(read("other", "email"), "c");
}

TEST_P(SecureItemStoreContract, a_locked_store_refuses_everything_and_loses_nothing) {
  store().add("service", "account", "secret");
  setLocked(true);
  const auto found = store().copyMatching("service", "account");
  EXPECT_EQ(found.status, Status::interactionNotAllowed);
  EXPECT_EQ(found.bytes, std::nullopt);
  EXPECT_EQ(store().add("service", "other", "x"), Status::interactionNotAllowed);
  setLocked(false);
  EXPECT_EQ(read("service", "account"), "secret");
  EXPECT_EQ(read("service", "other"), std::nullopt);
}

}  // namespace quillmar
