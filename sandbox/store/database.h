#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "sandbox/outcome.h"
#include "sandbox/time.h"

struct sqlite3;
struct sqlite3_stmt;

namespace quillmar::sandbox {

// The current row of a query; columns count from 0.
class Row {
 public:
  explicit Row(sqlite3_stmt* statement) : statement_{statement} {}

  [[nodiscard]] bool isNull(int column) const;
  [[nodiscard]] std::string text(int column) const;
  [[nodiscard]] std::optional<std::string> optionalText(int column) const;
  [[nodiscard]] std::int64_t integer(int column) const;
  [[nodiscard]] bool boolean(int column) const { return integer(column) != 0; }
  [[nodiscard]] Time time(int column) const { return timeOf(integer(column)); }

 private:
  sqlite3_stmt* statement_;
};

// The tables, used by one thread at a time, in a Transaction. After a failed statement the rest of its
// transaction does nothing and can't be committed, so callers needn't check each step.
class Database {
 public:
  // In memory if there is no file.
  static Outcome<std::unique_ptr<Database>> open(const std::optional<std::filesystem::path>& file);
  ~Database();

  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  // Returns the number of changed rows.
  template <class... Arguments>
  int run(std::string_view sql, const Arguments&... arguments) {
    auto* const statement = prepared(sql, arguments...);
    while (step(statement)) {
    }
    return changes();
  }

  template <class Visit, class... Arguments>
  void each(std::string_view sql, Visit visit, const Arguments&... arguments) {
    auto* const statement = prepared(sql, arguments...);
    while (step(statement)) {
      visit(Row{statement});
    }
  }

  // `map` of the first row, or nullopt.
  template <class Map, class... Arguments>
  auto first(std::string_view sql, Map map, const Arguments&... arguments) {
    std::optional<decltype(map(Row{nullptr}))> found;
    auto* const statement = prepared(sql, arguments...);
    if (step(statement)) {
      found = map(Row{statement});
    }
    reset(statement);
    return found;
  }

  template <class... Arguments>
  bool any(std::string_view sql, const Arguments&... arguments) {
    return first(
               sql, [](Row) { return true; }, arguments...)
        .has_value();
  }

  [[nodiscard]] std::int64_t lastRowId() const;

 private:
  friend class Transaction;
  explicit Database(sqlite3* handle) : handle_{handle} {}

  template <class... Arguments>
  sqlite3_stmt* prepared(std::string_view sql, const Arguments&... arguments) {
    auto* const statement = prepare(sql);
    int index = 0;
    (bind(statement, ++index, arguments), ...);
    return statement;
  }

  sqlite3_stmt* prepare(std::string_view sql);
  void bind(sqlite3_stmt* statement, int index, std::string_view value);
  void bind(sqlite3_stmt* statement, int index, std::int64_t value);
  void bind(sqlite3_stmt* statement, int index, std::nullopt_t);
  void bind(sqlite3_stmt* statement, int index, int value) { bind(statement, index, std::int64_t{value}); }
  void bind(sqlite3_stmt* statement, int index, bool value) { bind(statement, index, std::int64_t{value}); }
  void bind(sqlite3_stmt* statement, int index, Time value) { bind(statement, index, milliseconds(value)); }
  void bind(sqlite3_stmt* statement, int index, const char* value) {
    bind(statement, index, std::string_view{value});
  }
  template <class T>
  void bind(sqlite3_stmt* statement, int index, const std::optional<T>& value) {
    if (value) {
      bind(statement, index, *value);
    } else {
      bind(statement, index, std::nullopt);
    }
  }

  bool step(sqlite3_stmt* statement);
  void reset(sqlite3_stmt* statement);
  int changes() const;
  void check(int code);

  struct Finalize {
    void operator()(sqlite3_stmt* statement) const;
  };

  sqlite3* handle_;
  std::unordered_map<std::string, std::unique_ptr<sqlite3_stmt, Finalize>> statements_;
  std::mutex mutex_;
  bool spoilt_ = false;
};

// Undone unless it is committed. Locks the database for its lifetime.
class Transaction {
 public:
  explicit Transaction(Database& database);
  ~Transaction();

  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;

  // False if anything in the transaction failed; it is undone then.
  [[nodiscard]] bool commit();

 private:
  Database& database_;
  std::unique_lock<std::mutex> lock_;
  bool open_ = true;
};

}  // namespace quillmar::sandbox
