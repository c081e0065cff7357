#pragma once

#include <span>
#include <string>
#include <string_view>

#include "sandbox/json.h"
#include "sandbox/store/database.h"

namespace quillmar::sandbox {

enum class Kind { text, integer, boolean, time };

// A field of a wire record: its key, its type, and its column if that differs from the key.
struct Field {
  const char* key;
  Kind kind = Kind::text;
  const char* column = nullptr;
};

using Fields = std::span<const Field>;

// The columns for a SELECT whose rows `record` converts to JSON. All fields are written, an absent value as
// null.
[[nodiscard]] std::string columns(Fields fields);
[[nodiscard]] Json record(Row row, Fields fields);

// The records of the rows of a SELECT, whose text after the columns is `rest`.
template <class... Arguments>
[[nodiscard]] Json records(Database& database, Fields fields, std::string_view rest,
                           const Arguments&... arguments) {
  auto found = Json::array();
  database.each(
      "SELECT " + columns(fields) + ' ' + std::string{rest},
      [&](Row row) { found.push_back(record(row, fields)); }, arguments...);
  return found;
}

extern const Fields deviceFields;  // ?1: base URL of the endpoints; ?2: devices seen since then are online
extern const Fields devicePolicyFields;
extern const Fields childPolicyFields;
extern const Fields homeNetworkPolicyFields;
extern const Fields logFields;
extern const Fields childFields;
extern const Fields familyFields;
extern const Fields memberFields;
extern const Fields invitationFields;
extern const Fields homeNetworkFields;

}  // namespace quillmar::sandbox
