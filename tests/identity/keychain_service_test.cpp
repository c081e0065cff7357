#include "identity/keychain_service.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <string_view>

#include "testing/memory_secure_items.h"

namespace quillmar {
namespace {

using Items = std::map<MemorySecureItems::Name, std::string>;
using Status = SecureItemStatus;

constexpr auto emailKey = KeychainService::emailKey;
constexpr auto passwordKey = KeychainService::passwordKey;

// A store that finds what the test specifies.
class FindingStore final : public SecureItemStore {
 public:
  Found found;

  Status add(std::string_view /*service*/, std::string_view /*account*/,
             std::string_view /*bytes*/) override {
    return Status::success;
  }
  Found copyMatching(std::string_view /*service*/, std::string_view /*account*/) override { return found; }
  Status remove(std::string_view /*service*/, std::string_view /*account*/) override {
    return Status::success;
  }
};

struct Keychain : testing::Test {
  MemorySecureItems items;
  const KeychainService keychain{items};
};

TEST_F(Keychain, items_are_stored_under_their_service_and_accounts) {
  EXPECT_TRUE(keychain.save(emailKey, "ann@example.com"));
  EXPECT_TRUE(keychain.save(passwordKey, "pässwörd 🙂"));
  EXPECT_EQ(items.items(), (Items{{{"live.quillmar.credentials", "savedEmail"}, "ann@example.com"},
                                  {{"live.quillmar.credentials", "savedPassword"}, "pässwörd 🙂"}}));
  EXPECT_EQ(keychain.load(emailKey), "ann@example.com");
  EXPECT_EQ(keychain.load(passwordKey), "pässwörd 🙂");
}

TEST_F(Keychain, saving_again_replaces_the_item) {
  keychain.save(emailKey, "ann@example.com");
  EXPECT_TRUE(keychain.save(emailKey, "bob@example.com"));
  EXPECT_EQ(items.items().size(), 1U);
  EXPECT_EQ(keychain.load(emailKey), "bob@example.com");
}

TEST_F(Keychain, an_empty_text_is_an_item) {
  EXPECT_TRUE(keychain.save(passwordKey, ""));
  EXPECT_EQ(items.items().size(), 1U);
  EXPECT_EQ(keychain.load(passwordKey), "");
}

TEST_F(Keychain, a_value_that_is_not_text_changes_nothing) {
  keychain.save(emailKey, "ann@example.com");
  EXPECT_FALSE(keychain.save(emailKey, "\xff\xfe"));
  EXPECT_EQ(keychain.load(emailKey), "ann@example.com");
}

TEST_F(Keychain, deleting_removes_one_item_and_succeeds_without_one) {
  EXPECT_TRUE(keychain.deleteItem(emailKey));
  keychain.save(emailKey, "ann@example.com");
  keychain.save(passwordKey, "secret");
  EXPECT_TRUE(keychain.deleteItem(emailKey));
  EXPECT_EQ(keychain.load(emailKey), std::nullopt);
  EXPECT_EQ(keychain.load(passwordKey), "secret");
}

TEST_F(Keychain, a_failing_store_looks_empty) {
  keychain.save(emailKey, "ann@example.com");
  for (const auto status : {Status::interactionNotAllowed, Status::failed, static_cast<Status>(-34018)}) {
    items.failWith(status);
    EXPECT_EQ(keychain.load(emailKey), std::nullopt);
    EXPECT_FALSE(keychain.save(emailKey, "bob@example.com"));
    EXPECT_FALSE(keychain.deleteItem(emailKey));
  }
  items.failWith(std::nullopt);
  EXPECT_EQ(keychain.load(emailKey), "ann@example.com");
}

TEST(KeychainReading, only_a_success_with_text_is_a_value) {
  FindingStore store;
  const KeychainService keychain(store);
  store.found = {Status::success, "text"};
  EXPECT_EQ(keychain.load(emailKey), "text");
  store.found = {Status::success, std::nullopt};
  EXPECT_EQ(keychain.load(emailKey), std::nullopt);
  store.found = {Status::success, "\xc3\x28"};
  EXPECT_EQ(keychain.load(emailKey), std::nullopt);
  store.found = {Status::notFound, "text"};
  EXPECT_EQ(keychain.load(emailKey), std::nullopt);
}

}  // namespace
}  // namespace quillmar
