#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/http/message.h"
#include "sandbox/json.h"

namespace quillmar::sandbox {

// Reads the fields of a request's body and collects all errors into one refusal. null counts as absent. After
// an error the returned values are empty: check `refusal` before using them.
class Input {
 public:
  explicit Input(const Json& object) : object_{object} {}

  std::string text(std::string_view key);
  bool flag(std::string_view key);
  std::optional<std::string> optionalText(std::string_view key);
  std::optional<bool> optionalFlag(std::string_view key);
  std::optional<std::int64_t> optionalInteger(std::string_view key);
  std::optional<double> optionalNumber(std::string_view key);

  // Records `otherwise`, a sentence for the parent, unless `holds`.
  void require(bool holds, std::string_view otherwise);

  // 400 for missing keys and wrong types, 422 for invalid values.
  [[nodiscard]] std::optional<Answer> refusal() const;

 private:
  const Json* find(std::string_view key) const;
  const Json* findRequired(std::string_view key);
  void wrongType(std::string_view key, std::string_view expected);

  const Json& object_;
  std::vector<std::string> missing_;
  std::vector<std::string> wrong_;
  std::optional<std::string> broken_;
};

}  // namespace quillmar::sandbox
