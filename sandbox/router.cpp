#include "sandbox/router.h"

#include <algorithm>

#include "sandbox/secrets.h"

namespace quillmar::sandbox {
namespace {

struct Target {
  std::vector<std::string> segments;
  std::string query;
};

std::vector<std::string_view> split(std::string_view path) {
  std::vector<std::string_view> segments;
  while (!path.empty()) {
    path.remove_prefix(1);
    segments.push_back(path.substr(0, path.find('/')));
    path.remove_prefix(segments.back().size());
  }
  return segments;
}

std::optional<Target> parse(std::string_view target) {
  if (!target.starts_with('/')) {
    return std::nullopt;
  }
  Target parsed;
  const auto path = target.substr(0, target.find('?'));
  if (path.size() < target.size()) {
    parsed.query = target.substr(path.size() + 1);
  }
  for (const auto segment : split(path)) {
    auto decoded = percentDecoded(segment);
    if (!decoded) {
      return std::nullopt;
    }
    parsed.segments.push_back(std::move(*decoded));
  }
  return parsed;
}

bool matches(const Route& route, const Target& target) {
  return std::ranges::equal(split(route.pattern), target.segments, [](auto wanted, const auto& given) {
    return wanted == "{}" ? !given.empty() : wanted == given;
  });
}

std::vector<std::string> captured(const Route& route, Target& target) {
  std::vector<std::string> found;
  const auto wanted = split(route.pattern);
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    if (wanted[i] == "{}") {
      found.push_back(std::move(target.segments[i]));
    }
  }
  return found;
}

std::string_view bearerToken(const Request& request) {
  static constexpr std::string_view scheme = "Bearer ";
  const auto authorization = header(request.headers, "authorization");
  return authorization.starts_with(scheme) ? authorization.substr(scheme.size()) : std::string_view{};
}

struct Membership {
  std::string familyId;
  bool primary;
  bool active;
  bool devices;
  bool policies;
};

bool allows(const Membership& membership, Access access) {
  switch (access) {
    case Access::devices:
      return membership.active && membership.devices;
    case Access::policies:
      return membership.active && membership.policies;
    case Access::primary:
      return membership.active && membership.primary;
    case Access::member:
      return membership.active;
    default:
      return true;
  }
}

// Sets the call's caller, or returns the refusal.
std::optional<Answer> judge(Call& call, Access access) {
  if (access == Access::anyone) {
    return std::nullopt;
  }
  const auto oldest = access == Access::refresher ? call.now - tokenGrace : call.now;
  const auto parentId = call.database.first(
      "SELECT parent_id FROM tokens WHERE hash = ? AND expires_at > ?", [](Row row) { return row.text(0); },
      fingerprint(bearerToken(call.request)), oldest);
  if (!parentId) {
    return refusal(401, "Your session has ended. Please log in again.");
  }
  call.caller.parentId = *parentId;

  const auto membership = call.database.first(
      "SELECT family_id, role = 'primary', is_active, can_manage_devices, can_manage_policies FROM members "
      "WHERE parent_id = ?",
      [](Row row) {
        return Membership{row.text(0), row.boolean(1), row.boolean(2), row.boolean(3), row.boolean(4)};
      },
      *parentId);
  if (!membership) {
    return std::nullopt;
  }
  call.caller.familyId = membership->familyId;
  call.caller.primary = membership->primary;
  if (allows(*membership, access)) {
    return std::nullopt;
  }
  return refusal(403, membership->active
                          ? "Your account may not do this. Ask the primary parent of your family."
                          : "Your access was disabled by the primary parent of your family.");
}

std::optional<Answer> readBody(Call& call, Payload payload) {
  if (payload != Payload::body) {
    return std::nullopt;
  }
  call.body = Json::parse(call.request.body, nullptr, false);
  if (call.body.is_discarded()) {
    return refusal(400, "The request's body is not valid JSON.");
  }
  if (!call.body.is_object()) {
    return refusal(400, "The request's body has to be a JSON object.");
  }
  return std::nullopt;
}

Answer carryOutWholly(const Route& route, Call& call) {
  Transaction transaction{call.database};
  if (auto refused = judge(call, route.access)) {
    return *refused;
  }
  if (auto refused = readBody(call, route.payload)) {
    return *refused;
  }
  auto answer = route.call(call);
  if (answer.status < 400 && !transaction.commit()) {
    return refusal(500, "The change could not be saved. Please try again.");
  }
  return answer;
}

Answer carryOut(const Route& route, const Request& request, Target target, World& world) {
  Call call{.request = request, .world = world, .database = world.database, .now = world.now()};
  call.query = target.query;
  call.path = captured(route, target);
  auto answer = carryOutWholly(route, call);
  return call.afterwards && answer.status < 400 ? call.afterwards() : answer;
}

}  // namespace

Answer answerTo(const Request& request, World& world) {
  auto target = parse(request.target);
  if (!target) {
    return refusalOfMalformedRequest();
  }
  std::string allowed;
  for (const auto& route : routes()) {
    if (!matches(route, *target)) {
      continue;
    }
    if (route.method == request.method) {
      return carryOut(route, request, std::move(*target), world);
    }
    if (!allowed.empty()) {
      allowed += ", ";
    }
    allowed += route.method;
  }
  if (allowed.empty()) {
    return refusal(404, "There is nothing at this address.");
  }
  auto answer = refusal(405, "This address does not take " + request.method + " requests.");
  answer.headers.emplace_back("Allow", allowed);
  return answer;
}

}  // namespace quillmar::sandbox
