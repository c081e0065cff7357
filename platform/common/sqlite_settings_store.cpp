#include "platform/common/sqlite_settings_store.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <functional>
#include <mutex>
#include <set>
#include <system_error>
#include <utility>

#include "foundation/date_format.h"
#include "foundation/wipe.h"
#include "platform/common/file_descriptor.h"
#include "platform/common/private_directory.h"
#include "platform/common/sqlite.h"

namespace quillmar {
namespace {

namespace fs = std::filesystem;
using Values = std::map<std::string, SettingValue, std::less<>>;

constexpr int busyTimeout = 2000;  // milliseconds
constexpr auto companions = std::to_array<std::string_view>({"", "-wal", "-shm"});

constexpr std::string_view writeAhead = "PRAGMA journal_mode=WAL";
constexpr std::string_view schema =
    "CREATE TABLE IF NOT EXISTS settings(key TEXT PRIMARY KEY, kind TEXT NOT NULL, value ANY NOT NULL)"
    " STRICT, WITHOUT ROWID";
constexpr std::string_view upsert =
    "INSERT INTO settings VALUES(?1, ?2, ?3)"
    " ON CONFLICT(key) DO UPDATE SET kind = excluded.kind, value = excluded.value";

// The type's name in a row, in the order of SettingValue.
constexpr auto kinds = std::to_array<std::string_view>({"string", "bool", "integer", "date"});
static_assert(kinds.size() == std::variant_size_v<SettingValue>);

void bindValue(sqlite::Statement& statement, const SettingValue& value) {
  statement.bind(2, kinds.at(value.index()));
  std::visit(
      [&](const auto& typed) {
        using Type = std::remove_cvref_t<decltype(typed)>;
        if constexpr (std::same_as<Type, std::string>) {
          statement.bind(3, typed);
        } else if constexpr (std::same_as<Type, Date>) {
          statement.bind(3, typed.time_since_epoch().count());
        } else {
          statement.bind(3, static_cast<sqlite3_int64>(typed));
        }
      },
      value);
}

// nullopt for a kind that a later version wrote.
std::optional<SettingValue> valueOfRow(const sqlite::Statement& row) {
  const auto kind = std::ranges::find(kinds, row.text(1)) - kinds.begin();
  switch (kind) {
    case 0:
      return std::string(row.text(2));
    case 1:
      return row.integer(2) != 0;
    case 2:
      return row.integer(2);
    case 3:
      return Date(Duration(row.integer(2)));
    default:
      return std::nullopt;
  }
}

// One of the values is a token.
void wipeValue(SettingValue& value) {
  if (auto* text = std::get_if<std::string>(&value)) {
    wipe(*text);
  }
}

struct Read {
  int result = SQLITE_OK;
  Values values;
};

Read readValues(sqlite3* database) {
  sqlite::Statement select(database, "SELECT key, kind, value FROM settings");
  if (!select) {
    return {sqlite3_errcode(database), {}};
  }
  Read read;
  while ((read.result = select.step()) == SQLITE_ROW) {
    if (auto value = valueOfRow(select)) {
      read.values.insert_or_assign(std::string(select.text(0)), std::move(*value));
    }
  }
  read.result = read.result == SQLITE_DONE ? SQLITE_OK : read.result;
  return read;
}

int execute(sqlite3* database, std::string_view sql) {
  sqlite::Statement statement(database, sql);
  if (!statement) {
    return sqlite3_errcode(database);
  }
  const int result = statement.step();
  return result == SQLITE_ROW || result == SQLITE_DONE ? SQLITE_OK : result;
}

// Runs `PRAGMA quick_check` on the whole file.
int check(sqlite3* database) {
  sqlite::Statement statement(database, "PRAGMA quick_check(1)");
  if (!statement) {
    return sqlite3_errcode(database);
  }
  const int result = statement.step();
  if (result != SQLITE_ROW) {
    return result;
  }
  return statement.text(0) == "ok" ? SQLITE_OK : SQLITE_CORRUPT;
}

// A table with another schema counts as damage too.
bool isDamage(int result) {
  return result == SQLITE_ERROR || (result & 0xff) == SQLITE_CORRUPT || (result & 0xff) == SQLITE_NOTADB;
}

// On a full or read-only disk SQLite's code depends on the file that it could not make.
std::string causeOf(int result, const fs::path& directory) {
  const int kind = result & 0xff;
  if (kind == SQLITE_FULL) {
    return "the disk is full";
  }
  const bool mayBeDisk = kind == SQLITE_IOERR || kind == SQLITE_CANTOPEN || kind == SQLITE_READONLY;
  return (mayBeDisk ? stateOfDisk(directory) : std::nullopt).value_or(sqlite3_errstr(result));
}

sqlite::Handle openDatabase(const std::string& name, int flags) {
  sqlite3* database = nullptr;
  sqlite3_open_v2(name.c_str(), &database, flags | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, nullptr);
  sqlite3_busy_timeout(database, busyTimeout);
  return sqlite::Handle(database);
}

std::string uriOf(const fs::path& file) {
  std::string uri = "file:";
  for (const char c : file.string()) {
    if (c == '%' || c == '?' || c == '#') {
      constexpr std::string_view digits = "0123456789ABCDEF";
      const auto byte = static_cast<unsigned char>(c);
      uri += {'%', digits[byte >> 4U], digits[byte & 0xFU]};
    } else {
      uri += c;
    }
  }
  return uri;
}

}  // namespace

class SqliteSettingsStore::Impl {
 public:
  Impl(fs::path directory, Log& log)
      : directory_(std::move(directory)), file_(directory_ / fileName), log_(log) {
    if (!open()) {
      auto values = belongsToAnother(directory_) ? std::nullopt : readWithoutWriting();
      isReadable_ = values || isAbsentFrom(directory_);
      cached_ = std::move(values).value_or(Values());
    }
  }

  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;
  ~Impl() {
    saveUnsaved();
    wipeCached();
  }

  bool isReadable() const { return isReadable_; }

  bool hasUnsaved() {
    const std::scoped_lock lock(mutex_);
    return !unsaved_.empty();
  }

  void whenUnsaved(std::function<void()> observer) {
    const std::scoped_lock lock(mutex_);
    whenUnsaved_ = std::move(observer);
  }

  std::optional<SettingValue> object(std::string_view key) {
    const std::scoped_lock lock(mutex_);
    saveUnsaved();
    refresh();
    const auto found = cached_.find(key);
    return found == cached_.end() ? std::nullopt : std::optional(found->second);
  }

  Values all() {
    const std::scoped_lock lock(mutex_);
    saveUnsaved();
    refresh();
    return cached_;
  }

  void set(std::string_view key, SettingValue value) {
    const std::scoped_lock lock(mutex_);
    refresh();
    const auto known = cached_.find(key);
    if (known != cached_.end() && known->second == value && !isUnsaved(key)) {
      wipeValue(value);
      return;
    }
    if (known != cached_.end()) {
      wipeValue(known->second);
    }
    cached_.insert_or_assign(std::string(key), std::move(value));
    unsaved_.emplace(key);
    save();
  }

  void remove(std::string_view key) {
    const std::scoped_lock lock(mutex_);
    refresh();
    const auto known = cached_.find(key);
    if (known == cached_.end() && !isUnsaved(key)) {
      return;
    }
    if (known != cached_.end()) {
      wipeValue(known->second);
      cached_.erase(known);
    }
    unsaved_.emplace(key);
    save();
  }

  void writeTogether(const std::function<void()>& writes) {
    hold();
    writes();
    release();
  }

  void synchronize() {
    const std::scoped_lock lock(mutex_);
    saveUnsaved();
    if (const int result = syncLog(); result != SQLITE_OK) {
      report(result);
    }
  }

  void scrub() {
    const std::scoped_lock lock(mutex_);
    isScrubDue_ = true;
    if (unsaved_.empty() && database_) {
      emptyLog();
    } else {
      saveUnsaved();
    }
  }

 private:
  bool isUnsaved(std::string_view key) const { return unsaved_.find(key) != unsaved_.end(); }

  void hold() {
    const std::scoped_lock lock(mutex_);
    ++holds_;
  }

  void release() {
    const std::scoped_lock lock(mutex_);
    if (--holds_ == 0 && !unsaved_.empty()) {
      save();
    }
  }

  void wipeCached() {
    std::ranges::for_each(cached_, [](auto& known) { wipeValue(known.second); });
  }

  // Retried, because a full disk may have space again.
  void saveUnsaved() {
    if (!unsaved_.empty()) {
      save();
    }
  }

  // Deleted content is overwritten in the file, but stays in the log until a checkpoint.
  void emptyLog() {
    sqlite::Statement checkpoint(database_.get(), "PRAGMA wal_checkpoint(TRUNCATE)");
    const int result = checkpoint ? checkpoint.step() : sqlite3_errcode(database_.get());
    const bool isDone = result == SQLITE_ROW && checkpoint.integer(0) == 0;
    isScrubDue_ = !isDone;
    if (result != SQLITE_ROW) {
      report(result);
    }
  }

  // Reads what another process wrote.
  void refresh() {
    if (const auto version = dataVersion(); version != seenVersion_) {
      load(version);
    }
  }

  sqlite3_int64 dataVersion() {
    if (!version_ || version_.step() != SQLITE_ROW) {
      return seenVersion_;
    }
    const auto version = version_.integer(0);
    version_.reset();
    return version;
  }

  int load(sqlite3_int64 version) {
    Read read = readValues(database_.get());
    if (read.result != SQLITE_OK) {
      report(read.result);
      return read.result;
    }
    for (const auto& key : unsaved_) {
      read.values.erase(key);
      if (const auto own = cached_.find(key); own != cached_.end()) {
        read.values.insert(*own);
      }
    }
    wipeCached();
    cached_ = std::move(read.values);
    seenVersion_ = version;
    return SQLITE_OK;
  }

  void save() {
    if (holds_ > 0) {
      return;
    }
    if (database_ || open()) {
      writeUnsaved();
    }
    if (!unsaved_.empty() && whenUnsaved_) {
      whenUnsaved_();
    }
  }

  void writeUnsaved() {
    int result = execute(database_.get(), "BEGIN IMMEDIATE");
    for (auto key = unsaved_.begin(); key != unsaved_.end() && result == SQLITE_OK; ++key) {
      result = write(*key);
    }
    if (result == SQLITE_OK) {
      result = execute(database_.get(), "COMMIT");
    }
    if (result == SQLITE_OK) {
      unsaved_.clear();
      if (!reported_.empty()) {
        reported_.clear();
        log_.print("[SettingsStore] Settings are saved again.");
      }
      if (isScrubDue_) {
        emptyLog();
      }
    } else {
      report(result);
      execute(database_.get(), "ROLLBACK");
    }
  }

  int write(const std::string& key) {
    const auto known = cached_.find(key);
    auto& statement = known == cached_.end() ? erase_ : upsert_;
    statement.bind(1, key);
    if (known != cached_.end()) {
      bindValue(statement, known->second);
    }
    const int result = statement.step();
    return result == SQLITE_DONE ? SQLITE_OK : result;
  }

  // All writes go through the write-ahead log, so syncing the log is enough.
  int syncLog() {
    sqlite3_file* log = nullptr;
    if (!database_ ||
        sqlite3_file_control(database_.get(), "main", SQLITE_FCNTL_JOURNAL_POINTER, &log) != SQLITE_OK ||
        !log || !log->pMethods) {
      return SQLITE_OK;
    }
    return log->pMethods->xSync(log, SQLITE_SYNC_NORMAL);
  }

  // Locked, so that two processes that start together don't both set a damaged file aside.
  bool open() {
    if (!createPrivateDirectory(directory_)) {
      report(stateOfDisk(directory_).value_or("the directory can't be made"));
      return false;
    }
    const FileDescriptor lock(::open(directory_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    flock(lock.get(), LOCK_EX);
    int result = openFile();
    if (isDamage(result)) {
      setAside();
      result = openFile();
    }
    if (result != SQLITE_OK) {
      close();
      report(result);
    }
    return result == SQLITE_OK;
  }

  // Created under another name and then renamed: a kill in between leaves no file that looks damaged.
  int create() const {
    const fs::path draft = file_.string() + ".new";
    removeDraft(draft);
    const FileDescriptor made(
        ::open(draft.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    int result = made ? execute(openDatabase(draft.string(), SQLITE_OPEN_READWRITE).get(), writeAhead)
                      : SQLITE_CANTOPEN;
    if (result == SQLITE_OK) {
      result = isWhole(draft) && ::rename(draft.c_str(), file_.c_str()) == 0 ? SQLITE_OK : SQLITE_CANTOPEN;
    }
    removeDraft(draft);
    return result;
  }

  static fs::path journalOf(const fs::path& draft) { return draft.string() + "-journal"; }

  static void removeDraft(const fs::path& draft) {
    std::error_code error;
    fs::remove(draft, error);
    fs::remove(journalOf(draft), error);
  }

  // SQLite reports no error if it could not change the mode: then the file is empty, or a journal would take
  // back what it holds.
  static bool isWhole(const fs::path& draft) {
    std::error_code error;
    return fs::file_size(draft, error) > 0 && !error && !fs::exists(journalOf(draft), error);
  }

  // SQLite takes a truncated file for a new database.
  bool isEmptied() const {
    std::error_code error;
    return fs::is_regular_file(file_, error) && fs::file_size(file_, error) == 0;
  }

  // SQLite does not open a log without a frame that it can't write: it tries for ten seconds.
  bool hasEmptyLogForGood() const {
    constexpr std::uintmax_t header = 32;
    std::error_code error;
    return ::access(file_.c_str(), W_OK) != 0 && fs::file_size(file_.string() + "-wal", error) == header;
  }

  int openFile() {
    if (std::error_code error; fs::symlink_status(file_, error).type() == fs::file_type::not_found) {
      if (const int result = create(); result != SQLITE_OK) {
        return result;
      }
    }
    if (isEmptied()) {
      return SQLITE_NOTADB;
    }
    if (hasEmptyLogForGood()) {
      return SQLITE_READONLY;
    }
    // SQLite's companion files inherit the mode of this one.
    ::chmod(file_.c_str(), S_IRUSR | S_IWUSR);
    database_ = openDatabase(file_.string(), SQLITE_OPEN_READWRITE);
    int result = sqlite3_errcode(database_.get());
    for (const auto& step : {writeAhead, std::string_view("PRAGMA synchronous=NORMAL"),
                             std::string_view("PRAGMA secure_delete=ON"), schema}) {
      result = result == SQLITE_OK ? execute(database_.get(), step) : result;
    }
    result = result == SQLITE_OK ? check(database_.get()) : result;
    return result == SQLITE_OK ? prepare() : result;
  }

  int prepare() {
    sqlite3* database = database_.get();
    version_ = {database, "PRAGMA data_version"};
    upsert_ = {database, upsert};
    erase_ = {database, "DELETE FROM settings WHERE key = ?1"};
    if (!version_ || !upsert_ || !erase_) {
      return sqlite3_errcode(database);
    }
    return load(dataVersion());
  }

  void close() {
    version_ = {};
    upsert_ = {};
    erase_ = {};
    database_.reset();
  }

  void setAside() {
    close();
    const auto now = std::chrono::floor<Duration>(std::chrono::system_clock::now());
    const std::string base = file_.string() + ".damaged-" + formatISO8601(now);
    std::string target = base;
    for (int count = 2; fs::exists(target); ++count) {
      target = base + '-' + std::to_string(count);
    }
    std::error_code error;
    for (const std::string_view companion : companions) {
      fs::rename(file_.string().append(companion), std::string(target).append(companion), error);
    }
    log_.print("[SettingsStore] The settings were damaged and have been set aside as " + target);
  }

  // For a disk that is full or read-only. First with a lock that needs no file beside the log, then as an
  // immutable file.
  std::optional<Values> readWithoutWriting() const {
    for (const auto& [options, pragma] :
         {std::pair("", "PRAGMA locking_mode=EXCLUSIVE"), std::pair("?immutable=1", "PRAGMA query_only=1")}) {
      const auto database = openDatabase(uriOf(file_) + options, SQLITE_OPEN_READWRITE | SQLITE_OPEN_URI);
      sqlite3_db_config(database.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
      execute(database.get(), pragma);
      if (Read read = readValues(database.get()); read.result == SQLITE_OK) {
        return std::move(read.values);
      }
    }
    return std::nullopt;
  }

  void report(int result) { report(causeOf(result, directory_)); }

  void report(const std::string& cause) {
    if (reported_.insert(cause).second) {
      log_.print("[SettingsStore] Settings can't be saved: " + cause);
    }
  }

  std::mutex mutex_;
  const fs::path directory_;
  const fs::path file_;
  Log& log_;
  sqlite::Handle database_;
  sqlite::Statement version_;
  sqlite::Statement upsert_;
  sqlite::Statement erase_;
  sqlite3_int64 seenVersion_ = 0;
  Values cached_;
  std::set<std::string, std::less<>> unsaved_;
  std::set<std::string> reported_;
  std::function<void()> whenUnsaved_;
  bool isReadable_ = true;
  bool isScrubDue_ = false;
  int holds_ = 0;  // while above 0, values are collected for one write
};

SqliteSettingsStore::SqliteSettingsStore(fs::path directory, Log& log)
    : impl_(std::make_unique<Impl>(std::move(directory), log)) {}

SqliteSettingsStore::~SqliteSettingsStore() = default;

bool SqliteSettingsStore::isAbsentFrom(const fs::path& directory) {
  return ::access((directory / fileName).c_str(), F_OK) != 0 && errno == ENOENT;
}

std::optional<SettingValue> SqliteSettingsStore::object(std::string_view key) const {
  return impl_->object(key);
}

void SqliteSettingsStore::set(std::string_view key, SettingValue value) { impl_->set(key, std::move(value)); }

void SqliteSettingsStore::remove(std::string_view key) { impl_->remove(key); }

void SqliteSettingsStore::writeTogether(const std::function<void()>& writes) { impl_->writeTogether(writes); }

bool SqliteSettingsStore::hasUnsaved() const { return impl_->hasUnsaved(); }

void SqliteSettingsStore::whenUnsaved(std::function<void()> observer) {
  impl_->whenUnsaved(std::move(observer));
}

bool SqliteSettingsStore::isReadable() const { return impl_->isReadable(); }

void SqliteSettingsStore::synchronize() { impl_->synchronize(); }

void SqliteSettingsStore::scrub() { impl_->scrub(); }

std::map<std::string, SettingValue> SqliteSettingsStore::all() const {
  const Values values = impl_->all();
  return {values.begin(), values.end()};
}

}  // namespace quillmar
