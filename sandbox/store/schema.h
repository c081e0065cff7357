#pragma once

namespace quillmar::sandbox {

class Database;

// Creates the tables of a new database. False if the database has other content.
[[nodiscard]] bool createTables(Database& database);

}  // namespace quillmar::sandbox
