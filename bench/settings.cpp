// What a saved setting costs: how often the disk is waited for, and how long it takes beside a bare prepared
// upsert into the same kind of database. Syncs are counted where they leave this program.

#include <dlfcn.h>
#include <sqlite3.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "bench/measure.h"
#include "platform/common/sqlite_settings_store.h"

namespace {

std::atomic<int> syncs = 0;

int passOn(const char* name, int file) {
  ++syncs;
  const auto real = reinterpret_cast<int (*)(int)>(dlsym(RTLD_NEXT, name));
  return real(file);
}

}  // namespace

// Stand in front of the C library's, also for SQLite.
extern "C" int fsync(int file) { return passOn("fsync", file); }
extern "C" int fdatasync(int file) { return passOn("fdatasync", file); }

namespace quillmar::bench {
namespace {

constexpr int writesARound = 100;
constexpr int rounds = 41;

class SilentLog final : public Log {
 public:
  void print(std::string_view line) override {
    std::fprintf(stderr, "%s\n", std::string(line).c_str());
    std::quick_exit(1);
  }
  void system(std::string_view line) override { print(line); }
};

void require(bool done) {
  if (!done) {
    std::fprintf(stderr, "settings: SQLite refused\n");
    std::quick_exit(1);
  }
}

class BareUpsert {
 public:
  explicit BareUpsert(const std::filesystem::path& file) {
    sqlite3* database = nullptr;
    require(sqlite3_open(file.c_str(), &database) == SQLITE_OK);
    database_.reset(database);
    execute("PRAGMA journal_mode=WAL");
    execute("PRAGMA synchronous=NORMAL");
    execute("CREATE TABLE settings(key TEXT PRIMARY KEY, value TEXT NOT NULL) STRICT, WITHOUT ROWID");
    sqlite3_stmt* statement = nullptr;
    require(sqlite3_prepare_v2(database,
                               "INSERT INTO settings VALUES(?1, ?2)"
                               " ON CONFLICT(key) DO UPDATE SET value = excluded.value",
                               -1, &statement, nullptr) == SQLITE_OK);
    upsert_.reset(statement);
  }

  void set(const std::string& key, const std::string& value) {
    sqlite3_bind_text(upsert_.get(), 1, key.data(), static_cast<int>(key.size()), SQLITE_STATIC);
    sqlite3_bind_text(upsert_.get(), 2, value.data(), static_cast<int>(value.size()), SQLITE_STATIC);
    require(sqlite3_step(upsert_.get()) == SQLITE_DONE);
    sqlite3_reset(upsert_.get());
  }

 private:
  void execute(const char* sql) {
    require(sqlite3_exec(database_.get(), sql, nullptr, nullptr, nullptr) == SQLITE_OK);
  }

  std::unique_ptr<sqlite3, decltype(&sqlite3_close)> database_{nullptr, &sqlite3_close};
  std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)> upsert_{nullptr, &sqlite3_finalize};
};

int syncsOf(const std::function<void()>& work) {
  const int before = syncs;
  work();
  return syncs - before;
}

int run() {
  std::string pattern = (std::filesystem::current_path() / "settings-bench-XXXXXX").string();
  require(mkdtemp(pattern.data()) != nullptr);
  const std::filesystem::path directory = pattern;
  {
    SilentLog log;
    SqliteSettingsStore store(directory / "store", log);
    BareUpsert bare(directory / "bare.db");
    int number = 0;
    // A value that is new each time: one that is stored already costs nothing at all.
    const auto nextValue = [&number] { return "secret-token-" + std::to_string(++number); };
    store.set("authToken", nextValue());

    const int syncsOfWrite = syncsOf([&] { store.set("authToken", nextValue()); });
    const int syncsOfSave = syncsOf([&] {
      store.set("authToken", nextValue());
      store.synchronize();
    });
    const auto times = race(rounds, {[&] {
                                       for (int i = 0; i < writesARound; ++i) {
                                         store.set("authToken", nextValue());
                                       }
                                     },
                                     [&] {
                                       for (int i = 0; i < writesARound; ++i) {
                                         bare.set("authToken", nextValue());
                                       }
                                     }});
    std::printf(
        "settings: %d syncs for a write, %d for one that is synchronized; a write is %.2fx a bare "
        "upsert (%.1f µs of processor time against %.1f)\n",
        syncsOfWrite, syncsOfSave, times[0] / times[1], times[0].count() / writesARound * 1e6,
        times[1].count() / writesARound * 1e6);
  }
  std::filesystem::remove_all(directory);
  return 0;
}

}  // namespace
}  // namespace quillmar::bench

int main() { return quillmar::bench::run(); }
