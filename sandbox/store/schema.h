#pragma once

namespace quillmar::sandbox {

class Database;

// Makes the tables of a new database; false for one that holds anything else than what this version makes.
[[nodiscard]] bool createTables(Database& database);

}  // namespace quillmar::sandbox
