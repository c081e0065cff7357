#pragma once

#include <sqlite3.h>

#include <concepts>
#include <memory>
#include <string>
#include <string_view>

// The little of SQLite that the settings need, with its result codes as they are.
namespace quillmar::sqlite {

struct Closer {
  void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Handle = std::unique_ptr<sqlite3, Closer>;

// A prepared statement, run again and again. Bound text must outlive the run.
class Statement {
 public:
  Statement() = default;
  Statement(sqlite3* database, std::string_view sql) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v3(database, sql.data(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT,
                       &statement, nullptr);
    statement_.reset(statement);
  }

  explicit operator bool() const { return statement_ != nullptr; }

  void bind(int index, std::string_view text) {
    sqlite3_bind_text64(statement_.get(), index, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8);
  }
  void bind(int index, sqlite3_int64 number) { sqlite3_bind_int64(statement_.get(), index, number); }

  // SQLITE_ROW, SQLITE_DONE or an error. After anything but a row the statement is ready for its next run.
  int step() {
    const int result = sqlite3_step(statement_.get());
    if (result != SQLITE_ROW) {
      reset();
    }
    return result;
  }
  void reset() {
    sqlite3_reset(statement_.get());
    sqlite3_clear_bindings(statement_.get());
  }

  std::string_view text(int column) const {
    const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement_.get(), column));
    return {bytes, bytes ? static_cast<std::size_t>(sqlite3_column_bytes(statement_.get(), column)) : 0};
  }
  sqlite3_int64 integer(int column) const { return sqlite3_column_int64(statement_.get(), column); }

 private:
  std::unique_ptr<sqlite3_stmt, Closer> statement_;
};

}  // namespace quillmar::sqlite
