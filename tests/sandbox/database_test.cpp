#include "sandbox/store/database.h"

#include <gtest/gtest.h>

namespace quillmar::sandbox::test {
namespace {

class DatabaseTest : public testing::Test {
 protected:
  DatabaseTest() : opened_{Database::open(std::nullopt)}, database_{**opened_} {}

  void addEnrollment(const std::string& id, const std::string& code = "CODE") {
    database_.run(
        "INSERT INTO enrollments(device_id, enrollment_code, device_name, device_type, completed, "
        "created_at, "
        "expires_at) VALUES (?, ?, '', '', 0, 0, 0)",
        id, id + code);
  }
  std::vector<std::string> enrollments() {
    std::vector<std::string> ids;
    const Transaction reading{database_};
    database_.each("SELECT device_id FROM enrollments ORDER BY rowid",
                   [&](Row row) { ids.push_back(row.text(0)); });
    return ids;
  }

  Outcome<std::unique_ptr<Database>> opened_;
  Database& database_;
};

TEST_F(DatabaseTest, what_is_not_committed_is_undone) {
  {
    Transaction abandoned{database_};
    addEnrollment("a");
  }
  EXPECT_TRUE(enrollments().empty());
}

TEST_F(DatabaseTest, a_failed_statement_undoes_its_transaction_and_no_other) {
  {
    Transaction spoilt{database_};
    addEnrollment("a");
    addEnrollment("a");
    addEnrollment("b");
    EXPECT_FALSE(spoilt.commit());
  }
  EXPECT_TRUE(enrollments().empty());
  {
    Transaction good{database_};
    addEnrollment("c");
    EXPECT_TRUE(good.commit());
  }
  EXPECT_EQ(enrollments(), std::vector<std::string>{"c"});
}

TEST_F(DatabaseTest, invalid_sql_is_a_failure_and_not_a_crash) {
  Transaction spoilt{database_};
  EXPECT_EQ(database_.run("INSERT INTO nothing VALUES (?)", 1), 0);
  EXPECT_FALSE(database_.any("SELECT 1"));
  EXPECT_FALSE(spoilt.commit());
}

TEST_F(DatabaseTest, texts_and_times_are_read_as_written) {
  const Transaction reading{database_};
  const std::string text{"a\0ë", 4};
  const auto found = database_.first(
      "SELECT ?, ?, ?, ?, ?",
      [](Row row) {
        return std::tuple{row.text(0), row.optionalText(1), row.integer(2), row.boolean(3), row.time(4)};
      },
      text, std::optional<std::string>{}, std::int64_t{1} << 62, true, timeOf(1'791'498'660'250));
  EXPECT_EQ(found, (std::tuple{text, std::optional<std::string>{}, std::int64_t{1} << 62, true,
                               timeOf(1'791'498'660'250)}));
}

TEST_F(DatabaseTest, dependent_rows_are_deleted_with_their_owner) {
  Transaction spoilt{database_};
  database_.run("INSERT INTO tokens(hash, parent_id, expires_at) VALUES ('h', 'nobody', 0)");
  EXPECT_FALSE(spoilt.commit()) << "a token of nobody is none";
}

}  // namespace
}  // namespace quillmar::sandbox::test
