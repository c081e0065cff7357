#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/common/file_descriptor.h"
#include "platform/common/save_retry.h"
#include "platform/common/sqlite_settings_store.h"
#include "testing/memory_settings_store.h"
#include "testing/recording_log.h"
#include "testing/temporary_directory.h"
#include "testing/virtual_dispatch.h"
#include "tests/contracts/settings_store_contract.h"
#include "tests/platform/steerable_vfs.h"

namespace quillmar {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

class MemoryHarness final : public SettingsStoreHarness {
 public:
  SettingsStore& store() override { return store_; }

 private:
  MemorySettingsStore store_;
};

class SqliteHarness final : public SettingsStoreHarness {
 public:
  SettingsStore& store() override { return store_; }

 private:
  TemporaryDirectory directory_;
  RecordingLog log_;
  SqliteSettingsStore store_{directory_.path(), log_};
};

// Without a disk the store keeps its values in memory, and passes the same suite.
class DisklessHarness final : public SettingsStoreHarness {
 public:
  SettingsStore& store() override { return store_; }

 private:
  RecordingLog log_;
  SqliteSettingsStore store_{"/dev/null/quillmar", log_};
};

INSTANTIATE_TEST_SUITE_P(Memory, SettingsStoreContract,
                         testing::Values(factory<SettingsStoreHarness, MemoryHarness>("memory")));
INSTANTIATE_TEST_SUITE_P(Sqlite, SettingsStoreContract,
                         testing::Values(factory<SettingsStoreHarness, SqliteHarness>("SQLite")));
INSTANTIATE_TEST_SUITE_P(
    Diskless, SettingsStoreContract,
    testing::Values(factory<SettingsStoreHarness, DisklessHarness>("SQLite without a disk")));

// A child process that runs `work` until it returns or is killed.
class Child {
 public:
  explicit Child(const std::function<void()>& work) : pid_(fork()) {
    if (pid_ == 0) {
      work();
      _exit(0);
    }
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
  ~Child() { wait(); }

  void kill() const { ::kill(pid_, SIGKILL); }
  // The exit status, or nullopt if a signal ended it.
  std::optional<int> wait() {
    if (pid_ > 0) {
      waitpid(pid_, &status_, 0);
      pid_ = -1;
    }
    return WIFEXITED(status_) ? std::optional(WEXITSTATUS(status_)) : std::nullopt;
  }

 private:
  pid_t pid_;
  int status_ = 0;
};

class SqliteSettingsStoreTest : public testing::Test {
 protected:
  fs::path file(std::string_view suffix = "") const {
    return directory.path() / std::string(SqliteSettingsStore::fileName).append(suffix);
  }
  SqliteSettingsStore open() { return {directory.path(), log}; }
  std::vector<std::string> filesSetAside() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(directory.path())) {
      if (entry.path().filename().string().starts_with("settings.db.damaged-")) {
        names.push_back(entry.path().filename().string());
      }
    }
    std::ranges::sort(names);
    return names;
  }
  void fill() { open().set("key", std::string("value")); }
  void overwrite(std::streamoff at, const std::string& bytes) const {
    std::fstream stream(file(), std::ios::in | std::ios::out | std::ios::binary);
    stream.seekp(at);
    stream << bytes;
  }
  static std::string contents(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }
  // The content of all files.
  std::string everything() const {
    std::string bytes;
    for (const auto& entry : fs::directory_iterator(directory.path())) {
      bytes += contents(entry.path());
    }
    return bytes;
  }
  void expectSetAside(const std::string& damaged) {
    SqliteSettingsStore store(directory.path(), log);
    EXPECT_THAT(store.all(), IsEmpty());
    EXPECT_THAT(log.printed(), ElementsAre(AllOf(StartsWith("[SettingsStore] "), HasSubstr("damaged-20"))));
    ASSERT_THAT(filesSetAside(), Not(IsEmpty()));
    EXPECT_EQ(contents(directory.path() / filesSetAside()[0]), damaged);
    store.set("fresh", true);
    SqliteSettingsStore again(directory.path(), log);
    EXPECT_TRUE(again.boolean("fresh"));
    EXPECT_THAT(log.printed(), SizeIs(1));
  }

  TemporaryDirectory directory;
  RecordingLog log;
};

TEST_F(SqliteSettingsStoreTest, values_of_every_type_survive_a_reopening) {
  using namespace std::string_literals;
  const std::map<std::string, SettingValue> values = {
      {"bool", true},   {"date", Date{Duration{1475965860123}}},
      {"empty", ""s},   {"int", std::int64_t{-7}},
      {"nul", "a\0b"s}, {"text", "zwölf"s}};
  {
    SqliteSettingsStore store(directory.path(), log);
    for (const auto& [key, value] : values) {
      store.set(key, value);
    }
    store.set("removed", true);
    store.remove("removed");
  }
  EXPECT_EQ(open().all(), values);
  EXPECT_THAT(log.printed(), IsEmpty());
}

TEST_F(SqliteSettingsStoreTest, only_its_user_may_read_the_files) {
  const fs::path made = directory.path() / "made" / "deeper";
  const mode_t before = umask(0);
  {
    SqliteSettingsStore store(made, log);
    store.set("key", true);
    struct stat found {};
    ASSERT_EQ(stat(made.c_str(), &found), 0);
    EXPECT_EQ(found.st_mode & 0777U, 0700U);
    for (const char* name : {"settings.db", "settings.db-wal", "settings.db-shm"}) {
      ASSERT_EQ(stat((made / name).c_str(), &found), 0) << name;
      EXPECT_EQ(found.st_mode & 0777U, 0600U) << name;
    }
  }
  umask(before);
}

TEST_F(SqliteSettingsStoreTest, a_file_that_others_could_read_is_made_private) {
  fill();
  ASSERT_EQ(chmod(file().c_str(), 0644), 0);
  SqliteSettingsStore store(directory.path(), log);
  struct stat found {};
  ASSERT_EQ(stat(file().c_str(), &found), 0);
  EXPECT_EQ(found.st_mode & 0777U, 0600U);
}

TEST_F(SqliteSettingsStoreTest, a_saved_setting_costs_no_sync_and_synchronizing_one) {
  const SteerableVfs disk;
  SqliteSettingsStore store(directory.path(), log);
  const int opened = disk.syncs();
  store.set("authToken", std::string("token"));
  store.set("authTokenTimestamp", Date{Duration{1}});
  store.remove("authToken");
  EXPECT_EQ(disk.syncs(), opened);
  EXPECT_GT(disk.writes(), 0);
  store.synchronize();
  EXPECT_EQ(disk.syncs(), opened + 1);
}

TEST_F(SqliteSettingsStoreTest, many_saved_settings_cost_less_than_a_sync_each) {
  const SteerableVfs disk;
  SqliteSettingsStore store(directory.path(), log);
  const int opened = disk.syncs();
  constexpr int writes = 3000;
  for (int i = 0; i < writes; ++i) {
    store.set("key", std::int64_t{i});
  }
  EXPECT_LT(disk.syncs() - opened, writes / 10);
  EXPECT_GT(disk.syncs(), opened);  // moving content from the log to the file syncs
  EXPECT_LT(fs::file_size(file("-wal")), 8U * 1024 * 1024);
}

TEST_F(SqliteSettingsStoreTest, reading_and_writing_the_same_value_again_touch_no_disk) {
  const SteerableVfs disk;
  SqliteSettingsStore store(directory.path(), log);
  store.set("key", std::string("value"));
  const int written = disk.writes();
  store.set("key", std::string("value"));
  store.remove("other");
  EXPECT_EQ(store.string("key"), "value");
  EXPECT_EQ(disk.writes(), written);
}

TEST_F(SqliteSettingsStoreTest, a_write_survives_a_kill_once_it_has_returned) {
  fill();
  for (const int lines : {1, 7, 40, 200}) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    FileDescriptor input(ends[0]);
    FileDescriptor output(ends[1]);
    Child writer([&] {
      SqliteSettingsStore store(directory.path(), log);
      for (std::int32_t i = 1; true; ++i) {
        store.set("count", std::int64_t{i});
        if (write(output.get(), &i, sizeof i) != sizeof i) {
          _exit(1);
        }
      }
    });
    std::int32_t written = 0;
    while (written < lines) {
      ASSERT_EQ(read(input.get(), &written, sizeof written), static_cast<ssize_t>(sizeof written));
    }
    writer.kill();
    EXPECT_EQ(writer.wait(), std::nullopt);
    output = FileDescriptor();
    while (read(input.get(), &written, sizeof written) > 0) {
    }
    SqliteSettingsStore store(directory.path(), log);
    EXPECT_GE(store.integer("count").value_or(0), written);
    EXPECT_EQ(store.string("key"), "value");
  }
  EXPECT_THAT(log.printed(), IsEmpty());
}

TEST_F(SqliteSettingsStoreTest, a_kill_leaves_all_or_none_of_the_values_written_together) {
  fill();
  Child writer([&] {
    SqliteSettingsStore store(directory.path(), log);
    store.writeTogether([&] {
      store.set("key", std::string("changed"));
      store.set("other", true);
      raise(SIGKILL);
    });
  });
  EXPECT_EQ(writer.wait(), std::nullopt);
  SqliteSettingsStore store(directory.path(), log);
  EXPECT_EQ(store.string("key"), "value");
  EXPECT_EQ(store.object("other"), std::nullopt);

  store.writeTogether([&] {
    store.set("key", std::string("changed"));
    store.set("other", true);
  });
  SqliteSettingsStore reopened(directory.path(), log);
  EXPECT_EQ(reopened.string("key"), "changed");
  EXPECT_TRUE(reopened.boolean("other"));
}

TEST_F(SqliteSettingsStoreTest, a_file_that_is_not_a_database_is_set_aside) {
  const std::string damaged(5000, 'x');
  std::ofstream(file()) << damaged;
  expectSetAside(damaged);
}

TEST_F(SqliteSettingsStoreTest, a_file_cut_short_is_set_aside) {
  fill();
  fs::resize_file(file(), 5000);
  expectSetAside(contents(file()));
}

TEST_F(SqliteSettingsStoreTest, a_file_with_a_broken_page_is_set_aside) {
  fill();
  overwrite(4096, std::string(4096, '\xee'));
  expectSetAside(contents(file()));
}

TEST_F(SqliteSettingsStoreTest, a_database_of_something_else_is_set_aside) {
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(file().c_str(), &other), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(other, "CREATE TABLE settings(a); INSERT INTO settings VALUES(1)", nullptr, nullptr,
                         nullptr),
            SQLITE_OK);
  sqlite3_close(other);
  const std::string found = contents(file());
  SqliteSettingsStore store(directory.path(), log);
  store.set("fresh", true);
  EXPECT_THAT(filesSetAside(), SizeIs(1));
  EXPECT_TRUE(open().boolean("fresh"));
}

TEST_F(SqliteSettingsStoreTest, setting_a_file_aside_replaces_no_earlier_one) {
  for (int i = 0; i < 3; ++i) {
    std::ofstream(file(), std::ios::trunc) << std::string(100, static_cast<char>('a' + i));
    fs::remove(file("-wal"));
    open();
  }
  EXPECT_THAT(filesSetAside(), SizeIs(3));
}

TEST_F(SqliteSettingsStoreTest, an_emptied_file_is_set_aside) {
  fill();
  fs::resize_file(file(), 0);
  expectSetAside("");
}

// An unfinished first start leaves no settings file.
TEST_F(SqliteSettingsStoreTest, a_first_start_on_a_full_disk_leaves_no_damaged_file) {
  SteerableVfs disk;
  disk.setFull(true);
  SqliteSettingsStore store(directory.path(), log);
  store.set("key", true);
  EXPECT_FALSE(fs::exists(file()));
  EXPECT_THAT(log.printed(), SizeIs(1));
  disk.setFull(false);
  store.set("other", true);
  EXPECT_THAT(open().all(), SizeIs(2));
  EXPECT_THAT(filesSetAside(), IsEmpty());
  EXPECT_THAT(log.printed(),
              ElementsAre(HasSubstr("can't be saved"), "[SettingsStore] Settings are saved again."));
}

TEST_F(SqliteSettingsStoreTest, a_first_start_with_one_failing_write_leaves_no_damaged_file) {
  SteerableVfs disk;
  bool hasFailed = true;
  for (int writes = 0; hasFailed; ++writes) {
    const fs::path folder = directory.path() / std::to_string(writes);
    const int before = disk.writes();
    disk.failAfter(writes);
    {
      SqliteSettingsStore store(folder, log);
      store.set("key", true);
      store.set("other", true);
    }
    hasFailed = disk.writes() > before + writes;
    EXPECT_EQ(SqliteSettingsStore(folder, log).all().size(), 2U) << writes;
    for (const auto& entry : fs::directory_iterator(folder)) {
      EXPECT_EQ(entry.path().filename().string().rfind("settings.db.", 0), std::string::npos) << entry.path();
    }
  }
}

TEST_F(SqliteSettingsStoreTest, a_first_start_that_was_killed_is_repeated) {
  std::ofstream(file(".new")) << "half";
  open().set("key", true);
  EXPECT_TRUE(open().boolean("key"));
  EXPECT_THAT(filesSetAside(), IsEmpty());
  EXPECT_FALSE(fs::exists(file(".new")));
  EXPECT_THAT(log.printed(), IsEmpty());
}

// A parent who signed in, and a child who was enrolled, with the programs of 0.1.0 and a stand-in service.
TEST_F(SqliteSettingsStoreTest, what_the_first_release_wrote_is_read_and_kept) {
  const auto settingsOf = [&](const std::string& role) {
    fs::copy_file(fs::path(QUILLMAR_PLATFORM_DATA) / ("settings-0.1.0-" + role + ".db"), file(),
                  fs::copy_options::overwrite_existing);
    open().set("later", true);
    return open().all();
  };
  const auto text = [](const char* value) { return SettingValue(std::string(value)); };
  EXPECT_EQ(settingsOf("parent"),
            (std::map<std::string, SettingValue>{
                {"authToken", text("3c84fb971cc6758a39e094eba5317a2926d995795ff3339f34c926c36067bc60")},
                {"authTokenTimestamp", Date{Duration{1795344296700}}},
                {"com.quillmar.deviceRole", text("parent")},
                {"com.quillmar.region", text("singapore")},
                {"later", true},
                {"parentEmail", text("ann@example.com")},
                {"parentId", text("46187763-0224-422e-bf6f-163f5a902c55")},
                {"parentName", text("Ann Fielding")}}));
  EXPECT_EQ(
      settingsOf("child"),
      (std::map<std::string, SettingValue>{
          {"child_deviceID", text("3dfb1b8a-920f-4ca2-bddb-a0cd4d5b244f")},
          {"child_dohBaseUrl", text("https://127.0.0.1:40717/dns-query")},
          {"child_dohEndpoint", text("https://127.0.0.1:40717/dns-query/"
                                     "c3602c44e44895a2bcd2fb767050327f0f6524f0cee6e9b61edeefdbe8560b79")},
          {"child_isEnrolled", true},
          {"com.quillmar.apiBaseURL", text("https://127.0.0.1:40717")},
          {"com.quillmar.deviceRole", text("child")},
          {"later", true}}));
  EXPECT_THAT(filesSetAside(), IsEmpty());
}

TEST_F(SqliteSettingsStoreTest, a_value_of_an_unknown_kind_is_skipped) {
  fill();
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(file().c_str(), &other), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(other, "INSERT INTO settings VALUES('new', 'map', 'x')", nullptr, nullptr, nullptr),
            SQLITE_OK);
  sqlite3_close(other);
  EXPECT_THAT(open().all(), ElementsAre(testing::Key("key")));
}

TEST_F(SqliteSettingsStoreTest,
       a_disk_that_fills_keeps_values_in_memory_says_so_once_and_saves_all_when_it_can) {
  SteerableVfs disk;
  SqliteSettingsStore store(directory.path(), log);
  store.set("before", true);
  store.set("removed", true);
  disk.setFull(true);
  store.set("during", std::string("full"));
  store.set("also", std::int64_t{1});
  store.remove("removed");
  store.synchronize();
  EXPECT_EQ(store.string("during"), "full");
  EXPECT_EQ(store.integer("also"), 1);
  EXPECT_FALSE(store.boolean("removed"));
  EXPECT_THAT(log.printed(), ElementsAre("[SettingsStore] Settings can't be saved: the disk is full"));
  {
    disk.setFull(false);
    SqliteSettingsStore onDisk(directory.path(), log);
    EXPECT_THAT(onDisk.all(), ElementsAre(testing::Key("before"), testing::Key("removed")));
  }
  store.set("after", true);
  EXPECT_THAT(open().all(), ElementsAre(testing::Key("after"), testing::Key("also"), testing::Key("before"),
                                        testing::Key("during")));
  EXPECT_THAT(log.printed(),
              ElementsAre(HasSubstr("can't be saved"), "[SettingsStore] Settings are saved again."));
}

TEST_F(SqliteSettingsStoreTest, unsaved_values_are_saved_by_the_next_read_when_the_disk_has_space) {
  SteerableVfs disk;
  SqliteSettingsStore store(directory.path(), log);
  disk.setFull(true);
  store.set("during", true);
  EXPECT_TRUE(store.boolean("during"));
  EXPECT_THAT(open().all(), IsEmpty());
  disk.setFull(false);
  EXPECT_FALSE(store.boolean("other"));
  EXPECT_TRUE(open().boolean("during"));
}

TEST_F(SqliteSettingsStoreTest, unsaved_values_are_saved_at_the_end_when_the_disk_has_space) {
  SteerableVfs disk;
  {
    SqliteSettingsStore store(directory.path(), log);
    store.set("removed", true);
    disk.setFull(true);
    store.set("during", true);
    store.remove("removed");
    disk.setFull(false);
  }
  EXPECT_THAT(open().all(), ElementsAre(testing::Key("during")));
}

TEST_F(SqliteSettingsStoreTest, a_retry_saves_without_a_read_soon_after_the_disk_has_space_and_no_more) {
  SteerableVfs disk;
  VirtualDispatch dispatch;
  SqliteSettingsStore store(directory.path(), log);
  auto retry = std::make_unique<SaveRetry>(store, dispatch);
  disk.setFull(true);
  store.set("during", true);
  dispatch.advance(2 * SaveRetry::period);
  EXPECT_TRUE(store.hasUnsaved());
  disk.setFull(false);
  dispatch.advance(SaveRetry::period);
  EXPECT_FALSE(store.hasUnsaved());
  EXPECT_TRUE(open().boolean("during"));

  const int syncs = disk.syncs();
  dispatch.advance(2 * SaveRetry::period);
  EXPECT_EQ(disk.syncs(), syncs) << "there is nothing left to do";

  disk.setFull(true);
  store.set("after", true);
  retry.reset();
  disk.setFull(false);
  dispatch.advance(2 * SaveRetry::period);
  EXPECT_TRUE(store.hasUnsaved());
}

TEST_F(SqliteSettingsStoreTest, no_file_holds_a_removed_or_replaced_value_after_scrubbing) {
  const SteerableVfs disk;
  SqliteSettingsStore store(directory.path(), log);
  store.set("authToken", std::string("first-secret"));
  for (const std::size_t size : {10U, 100U, 700U, 3000U, 40U}) {
    store.set("authToken", std::string("longer-secret").append(size, 'x'));
    store.set("beside" + std::to_string(size), std::string(size, 'y'));
  }
  store.synchronize();
  EXPECT_THAT(everything(), HasSubstr("secret"));
  store.remove("authToken");
  store.scrub();
  EXPECT_THAT(everything(), Not(HasSubstr("secret")));
  EXPECT_THAT(everything(), HasSubstr("beside"));
}

TEST_F(SqliteSettingsStoreTest, scrubbing_is_repeated_when_the_disk_has_space) {
  SteerableVfs disk;
  SqliteSettingsStore store(directory.path(), log);
  store.set("authToken", std::string("secret"));
  disk.setFull(true);
  store.remove("authToken");
  store.scrub();
  EXPECT_THAT(everything(), HasSubstr("secret"));
  disk.setFull(false);
  EXPECT_EQ(store.string("authToken"), std::nullopt);
  EXPECT_THAT(everything(), Not(HasSubstr("secret")));
}

TEST_F(SqliteSettingsStoreTest, saved_values_are_read_on_a_full_disk) {
  SteerableVfs disk;
  {
    Child killed([&] {
      SqliteSettingsStore store(directory.path(), log);
      store.set("role", std::string("child"));
      raise(SIGKILL);
    });
  }
  ASSERT_GT(fs::file_size(file("-wal")), 0U);
  disk.setFull(true);
  SqliteSettingsStore store(directory.path(), log);
  EXPECT_EQ(store.string("role"), "child");
  store.set("other", true);
  EXPECT_THAT(log.printed(), SizeIs(1));
  disk.setFull(false);
  store.set("another", true);
  EXPECT_THAT(open().all(),
              ElementsAre(testing::Key("another"), testing::Key("other"), testing::Key("role")));
  EXPECT_THAT(filesSetAside(), IsEmpty());
}

TEST_F(SqliteSettingsStoreTest, a_real_limit_of_file_size_neither_kills_nor_loses_what_was_saved) {
  fill();
  Child limited([&] {
    signal(SIGXFSZ, SIG_IGN);
    SqliteSettingsStore store(directory.path(), log);
    store.set("first", true);
    const rlimit limit{fs::file_size(file("-wal")), RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &limit);
    store.set("second", std::string(100000, 'x'));
    _exit(store.string("second")->size() == 100000 && log.printed().size() == 1 ? 0 : 1);
  });
  EXPECT_EQ(limited.wait(), 0);
  EXPECT_THAT(open().all(), ElementsAre(testing::Key("first"), testing::Key("key")));
}

// SQLite itself takes such a log for one that another process is writing, and fails after ten seconds.
TEST_F(SqliteSettingsStoreTest, a_log_without_a_frame_keeps_no_value_from_being_read_on_a_read_only_disk) {
  const fs::path disk = directory.path() / "disk";
  fs::create_directory(disk);
  if (::mount("tmpfs", disk.c_str(), "tmpfs", 0, "mode=0700") != 0) {
    GTEST_SKIP() << "only root can have a disk of its own";
  }
  SqliteSettingsStore(disk, log).set("key", true);
  {
    Child killed([&] {
      signal(SIGXFSZ, SIG_IGN);
      SqliteSettingsStore store(disk, log);
      const rlimit header{32, RLIM_INFINITY};
      setrlimit(RLIMIT_FSIZE, &header);
      store.set("unsaved", true);
      raise(SIGKILL);
    });
  }
  EXPECT_EQ(fs::file_size(disk / "settings.db-wal"), 32U);
  ::mount(nullptr, disk.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr);
  {
    SqliteSettingsStore store(disk, log);
    EXPECT_TRUE(store.boolean("key"));
    store.set("other", true);
    EXPECT_THAT(log.printed(), ElementsAre("[SettingsStore] Settings can't be saved: the disk is read-only"));
  }
  ::umount2(disk.c_str(), MNT_DETACH);
}

TEST_F(SqliteSettingsStoreTest, without_a_directory_values_stay_in_memory) {
  std::ofstream(directory.path() / "file") << "no directory";
  SqliteSettingsStore store(directory.path() / "file", log);
  store.set("key", true);
  store.set("other", true);
  store.synchronize();
  EXPECT_THAT(store.all(), SizeIs(2));
  EXPECT_THAT(log.printed(), SizeIs(1));
}

TEST_F(SqliteSettingsStoreTest, without_an_openable_file_values_stay_in_memory) {
  fs::create_directory(file());
  SqliteSettingsStore store(directory.path(), log);
  store.set("key", true);
  EXPECT_TRUE(store.boolean("key"));
  EXPECT_THAT(log.printed(), SizeIs(1));
  EXPECT_THAT(filesSetAside(), IsEmpty());
}

TEST_F(SqliteSettingsStoreTest, the_next_read_sees_what_another_process_wrote) {
  SqliteSettingsStore store(directory.path(), log);
  store.set("mine", std::int64_t{1});
  store.set("shared", std::string("old"));
  Child other([&] {
    SqliteSettingsStore theirs(directory.path(), log);
    theirs.set("theirs", std::int64_t{2});
    theirs.set("shared", std::string("new"));
    theirs.remove("mine");
  });
  EXPECT_EQ(other.wait(), 0);
  EXPECT_EQ(store.string("shared"), "new");
  EXPECT_EQ(store.integer("theirs"), 2);
  EXPECT_EQ(store.integer("mine"), std::nullopt);
}

TEST_F(SqliteSettingsStoreTest, two_processes_that_write_at_once_lose_nothing) {
  constexpr int each = 200;
  const auto writer = [this](const std::string& name) {
    return [this, name] {
      SqliteSettingsStore store(directory.path(), log);
      for (int i = 0; i < each; ++i) {
        store.set(name + std::to_string(i), std::int64_t{i});
      }
      _exit(log.printed().empty() ? 0 : 1);
    };
  };
  Child one(writer("one"));
  Child other(writer("other"));
  EXPECT_EQ(one.wait(), 0);
  EXPECT_EQ(other.wait(), 0);
  EXPECT_THAT(open().all(), SizeIs(2 * each));
}

TEST_F(SqliteSettingsStoreTest, two_processes_set_a_damaged_file_aside_once) {
  for (std::size_t round = 1; round <= 10; ++round) {
    fs::remove(file());
    std::ofstream(file()) << std::string(5000, 'x');
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    const FileDescriptor gate(ends[0]);
    FileDescriptor closed(ends[1]);
    const auto starter = [&](const std::string& name) {
      return [&, name] {
        closed = FileDescriptor();
        char none = 0;
        static_cast<void>(read(gate.get(), &none, 1));
        SqliteSettingsStore(directory.path(), log).set(name, true);
      };
    };
    {
      const Child one(starter("one"));
      const Child other(starter("other"));
      closed = FileDescriptor();
    }
    EXPECT_THAT(filesSetAside(), SizeIs(round));
    EXPECT_THAT(open().all(), ElementsAre(testing::Key("one"), testing::Key("other")));
  }
}

}  // namespace
}  // namespace quillmar
