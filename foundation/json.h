#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "foundation/convert.h"
#include "foundation/record.h"
#include "foundation/result.h"
#include "foundation/value.h"

namespace quillmar {

// Why a document or a record was refused. `record` and `keyPath` ("devices[2].id") say where. `offset` is the
// first byte of the refused value, of the object that lacks a key, or of malformed text. A person sees only
// the description; the rest is for logs and tests.
struct CodingError {
  enum class Kind { missing, wrongFormat, unwritable };
  Kind kind = Kind::wrongFormat;
  std::string record;
  std::string keyPath;
  std::size_t offset = 0;

  std::string localizedDescription() const;
  friend bool operator==(const CodingError&, const CodingError&) = default;
};

// For the tools and tests; the client decodes records with `decodeJson`.
Result<Value> parseJson(std::string_view text);

// JSON must be UTF-8: a document with other bytes is refused as unwritable.
Result<std::string> checkedJson(std::string document, std::string_view record);

// The record as it goes on the wire.
template <Record T>
Result<std::string> encodeJson(const T& record) {
  return checkedJson(writeJson(toValue(record)), recordName<T>());
}

// Decodes one record. Validates the whole document and converts nothing; of a duplicate key the first counts.
// Defined in "foundation/json_decode.h" and instantiated once, in the record's own source, so that other
// sources don't include the parser.
template <Record T>
Result<T> decodeJson(std::string_view text);

}  // namespace quillmar
