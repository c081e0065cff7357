#pragma once

// What every SettingsStore promises, beside its durability:
//   INSTANTIATE_TEST_SUITE_P(Sqlite, SettingsStoreContract, testing::Values(factory<SettingsStoreHarness,
//   SqliteHarness>("Sqlite")));

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/settings_store.h"
#include "tests/contracts/factory.h"

namespace quillmar {

// A new, empty store and its environment.
class SettingsStoreHarness : public Harness {
 public:
  virtual SettingsStore& store() = 0;
};

class SettingsStoreContract : public testing::TestWithParam<Factory<SettingsStoreHarness>> {
 protected:
  SettingsStore& store() { return harness_->store(); }

 private:
  std::unique_ptr<SettingsStoreHarness> harness_ = GetParam()();
};

TEST_P(SettingsStoreContract, a_missing_key_has_no_value_of_any_type) {
  EXPECT_EQ(store().object("key"), std::nullopt);
  EXPECT_EQ(store().string("key"), std::nullopt);
  EXPECT_EQ(store().integer("key"), std::nullopt);
  EXPECT_EQ(store().date("key"), std::nullopt);
  EXPECT_FALSE(store().boolean("key"));
  EXPECT_TRUE(store().all().empty());
}

TEST_P(SettingsStoreContract, every_value_comes_back_as_it_was_written) {
  using namespace std::string_literals;
  const std::vector<SettingValue> values = {
      "text"s,
      ""s,
      "zwölf 👨‍👩‍👧"s,
      "a\0b"s,
      "\xff\xfe"s,
      "line\nbreak"s,
      true,
      false,
      std::int64_t{0},
      std::numeric_limits<std::int64_t>::max(),
      std::numeric_limits<std::int64_t>::min(),
      Date{},
      Date{Duration{1475965860123}},
      Date{Duration{-1}},
  };
  for (const SettingValue& value : values) {
    store().set("key", value);
    EXPECT_EQ(store().object("key"), value);
    EXPECT_EQ(store().all(), (std::map<std::string, SettingValue>{{"key", value}}));
  }
}

TEST_P(SettingsStoreContract, reading_another_type_than_the_stored_one_gives_nullopt) {
  store().set("text", std::string("1"));
  store().set("truth", true);
  store().set("number", std::int64_t{1});
  store().set("date", Date{Duration{1}});
  EXPECT_EQ(store().integer("text"), std::nullopt);
  EXPECT_FALSE(store().boolean("text"));
  EXPECT_EQ(store().integer("truth"), std::nullopt);
  EXPECT_FALSE(store().boolean("number"));
  EXPECT_EQ(store().date("number"), std::nullopt);
  EXPECT_EQ(store().integer("date"), std::nullopt);
  EXPECT_EQ(store().string("date"), std::nullopt);
}

TEST_P(SettingsStoreContract, a_later_write_replaces_value_and_type) {
  store().set("key", std::string("text"));
  store().set("key", std::int64_t{5});
  EXPECT_EQ(store().string("key"), std::nullopt);
  EXPECT_EQ(store().integer("key"), 5);
}

TEST_P(SettingsStoreContract, an_empty_text_is_not_a_missing_key) {
  store().set("key", std::string());
  EXPECT_EQ(store().string("key"), "");
  store().remove("key");
  EXPECT_EQ(store().string("key"), std::nullopt);
}

TEST_P(SettingsStoreContract, keys_differ_in_every_byte) {
  using namespace std::string_literals;
  store().set("com.quillmar.region", "a"s);
  store().set("com.quillmar.Region", "b"s);
  store().set("", "c"s);
  store().set("com.quillmar.region\0"s, "d"s);
  EXPECT_EQ(store().string("com.quillmar.region"), "a");
  EXPECT_EQ(store().string("com.quillmar.Region"), "b");
  EXPECT_EQ(store().string(""), "c");
  EXPECT_EQ(store().string("com.quillmar.region\0"s), "d");
  EXPECT_EQ(store().all().size(), 4U);
}

TEST_P(SettingsStoreContract, removing_removes_one_key_and_ignores_a_missing_one) {
  store().set("one", true);
  store().set("other", true);
  store().remove("one");
  store().remove("one");
  store().remove("never");
  EXPECT_THAT(store().all(), testing::ElementsAre(testing::Key("other")));
  store().set("one", std::string("again"));
  EXPECT_EQ(store().string("one"), "again");
}

TEST_P(SettingsStoreContract, a_write_is_seen_by_the_next_read_on_any_thread) {
  store().set("key", std::string("main"));
  std::thread([&] {
    EXPECT_EQ(store().string("key"), "main");
    store().set("key", std::string("thread"));
  }).join();
  EXPECT_EQ(store().string("key"), "thread");
}

TEST_P(SettingsStoreContract, writers_on_many_threads_lose_nothing) {
  constexpr int each = 50;
  std::vector<std::thread> writers;
  for (int writer = 0; writer < 4; ++writer) {
    writers.emplace_back([this, writer] {
      for (int i = 0; i < each; ++i) {
        const std::string key = std::to_string(writer) + '/' + std::to_string(i);
        store().set(key, std::int64_t{i});
        EXPECT_EQ(store().integer(key), i);
      }
    });
  }
  for (std::thread& writer : writers) {
    writer.join();
  }
  EXPECT_EQ(store().all().size(), 4U * each);
}

TEST_P(SettingsStoreContract, values_written_together_are_visible_at_once_and_kept) {
  store().set("goes", std::string("old"));
  store().writeTogether([this] {
    store().set("first", true);
    store().remove("goes");
    EXPECT_TRUE(store().boolean("first"));
    EXPECT_EQ(store().object("goes"), std::nullopt);
    store().writeTogether([this] { store().set("second", std::int64_t{2}); });
  });
  EXPECT_TRUE(store().boolean("first"));
  EXPECT_EQ(store().integer("second"), 2);
  EXPECT_EQ(store().object("goes"), std::nullopt);
}

TEST_P(SettingsStoreContract, synchronizing_and_scrubbing_change_no_value) {
  store().synchronize();
  store().scrub();
  store().set("key", true);
  store().synchronize();
  store().scrub();
  EXPECT_TRUE(store().boolean("key"));
}

}  // namespace quillmar
