#pragma once

#include <functional>
#include <string>
#include <vector>

#include "sandbox/http/message.h"
#include "sandbox/json.h"
#include "sandbox/world.h"

namespace quillmar::sandbox {

// Who asks, as far as the call's route demands to know.
struct Caller {
  std::string parentId{};
  std::string familyId{};  // empty: belongs to no family
  bool primary = false;
};

// One request on its way through the call that its route names, within a transaction of its own.
struct Call {
  const Request& request;
  World& world;
  Database& database;
  Time now;
  std::vector<std::string> path{};  // what stands in the place of each {} of the route, decoded
  std::string query{};              // undecoded
  Json body = Json::object();
  Caller caller{};
  // Gives the answer once the transaction is over, for what would hold up others within it.
  std::function<Answer()> afterwards{};
};

using CallFunction = Answer (*)(Call&);

[[nodiscard]] Answer json(int status, const Json& body);
[[nodiscard]] Answer nothing();  // 204

[[nodiscard]] Answer notFound(std::string_view what);  // 404: "There is no <what> here."

// The value of a parameter of the query, decoded (as it stands where that fails); nothing if absent.
[[nodiscard]] std::optional<std::string> queryParameter(std::string_view query, std::string_view name);

// Undoes percent-encoding; nothing if it is malformed.
[[nodiscard]] std::optional<std::string> percentDecoded(std::string_view text);

}  // namespace quillmar::sandbox
