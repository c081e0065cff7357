#include "sandbox/store/database.h"

#include <sqlite3.h>

#include "sandbox/store/schema.h"

namespace quillmar::sandbox {

bool Row::isNull(int column) const { return sqlite3_column_type(statement_, column) == SQLITE_NULL; }

std::string Row::text(int column) const {
  const auto* const bytes = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
  return bytes == nullptr ? std::string{}
                          : std::string(bytes, std::size_t(sqlite3_column_bytes(statement_, column)));
}

std::optional<std::string> Row::optionalText(int column) const {
  return isNull(column) ? std::nullopt : std::optional{text(column)};
}

std::int64_t Row::integer(int column) const { return sqlite3_column_int64(statement_, column); }

Outcome<std::unique_ptr<Database>> Database::open(const std::optional<std::filesystem::path>& file) {
  sqlite3* handle = nullptr;
  const auto name = file ? file->string() : std::string{":memory:"};
  // One connection, guarded by a mutex of ours: SQLite's locks are not needed.
  const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
  const int code = sqlite3_open_v2(name.c_str(), &handle, flags, nullptr);
  std::unique_ptr<Database> database{new Database{handle}};
  if (code != SQLITE_OK) {
    return Failure{"The database " + name + " can't be opened: " + sqlite3_errmsg(handle) + "."};
  }
  sqlite3_busy_timeout(handle, 5000);
  // Write-ahead logging survives a kill of the process at any time; more is not promised.
  for (const auto* pragma :
       {"PRAGMA journal_mode=WAL", "PRAGMA synchronous=NORMAL", "PRAGMA foreign_keys=ON"}) {
    database->run(pragma);
  }
  Transaction transaction{*database};
  if (!createTables(*database) || !transaction.commit()) {
    return Failure{"The database " + name + " is not one of this program's, or is of another version."};
  }
  return database;
}

Database::~Database() {
  statements_.clear();
  sqlite3_close(handle_);
}

void Database::Finalize::operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }

sqlite3_stmt* Database::prepare(std::string_view sql) {
  auto [entry, isNew] = statements_.try_emplace(std::string{sql});
  if (isNew) {
    sqlite3_stmt* statement = nullptr;
    check(sqlite3_prepare_v3(handle_, sql.data(), int(sql.size()), SQLITE_PREPARE_PERSISTENT, &statement,
                             nullptr));
    entry->second.reset(statement);
  }
  if (entry->second == nullptr) {
    spoilt_ = true;
  }
  reset(entry->second.get());
  return entry->second.get();
}

void Database::bind(sqlite3_stmt* statement, int index, std::string_view value) {
  const char* const data = value.data() == nullptr ? "" : value.data();
  check(sqlite3_bind_text(statement, index, data, int(value.size()), SQLITE_TRANSIENT));
}

void Database::bind(sqlite3_stmt* statement, int index, std::int64_t value) {
  check(sqlite3_bind_int64(statement, index, value));
}

void Database::bind(sqlite3_stmt* statement, int index, std::nullopt_t) {
  check(sqlite3_bind_null(statement, index));
}

bool Database::step(sqlite3_stmt* statement) {
  if (spoilt_) {
    return false;
  }
  const int code = sqlite3_step(statement);
  if (code == SQLITE_ROW) {
    return true;
  }
  if (code != SQLITE_DONE) {
    spoilt_ = true;
  }
  reset(statement);
  return false;
}

void Database::reset(sqlite3_stmt* statement) { sqlite3_reset(statement); }

int Database::changes() const { return spoilt_ ? 0 : sqlite3_changes(handle_); }

std::int64_t Database::lastRowId() const { return sqlite3_last_insert_rowid(handle_); }

void Database::check(int code) {
  if (code != SQLITE_OK) {
    spoilt_ = true;
  }
}

Transaction::Transaction(Database& database) : database_{database}, lock_{database.mutex_} {
  database_.spoilt_ = false;
  database_.run("BEGIN");
}

Transaction::~Transaction() {
  if (!open_) {
    return;
  }
  database_.spoilt_ = false;
  database_.run("ROLLBACK");
}

bool Transaction::commit() {
  database_.run("COMMIT");
  open_ = database_.spoilt_;
  return !database_.spoilt_;
}

}  // namespace quillmar::sandbox
