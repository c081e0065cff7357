#pragma once

#include <functional>
#include <string>
#include <vector>

#include "sandbox/http/message.h"
#include "sandbox/json.h"
#include "sandbox/world.h"

namespace quillmar::sandbox {

// The caller, as far as the route requires.
struct Caller {
  std::string parentId{};
  std::string familyId{};  // empty: none
  bool primary = false;
};

// A request while its route's call handles it, in one transaction.
struct Call {
  const Request& request;
  World& world;
  Database& database;
  Time now;
  std::vector<std::string> path{};  // the decoded segments that matched the route's {}
  std::string query{};              // undecoded
  Json body = Json::object();
  Caller caller{};
  // Runs after the transaction and replaces the answer: for slow work, which would block other calls.
  std::function<Answer()> afterwards{};
};

using CallFunction = Answer (*)(Call&);

[[nodiscard]] Answer json(int status, const Json& body);
[[nodiscard]] Answer nothing();  // 204

[[nodiscard]] Answer notFound(std::string_view what);  // 404: "There is no <what> here."

// The decoded value of a query parameter; undecoded if the escapes are malformed, nullopt if absent.
[[nodiscard]] std::optional<std::string> queryParameter(std::string_view query, std::string_view name);

// nullopt if malformed.
[[nodiscard]] std::optional<std::string> percentDecoded(std::string_view text);

}  // namespace quillmar::sandbox
