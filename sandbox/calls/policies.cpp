#include <algorithm>

#include "sandbox/calls/calls.h"
#include "sandbox/calls/common.h"
#include "sandbox/input.h"

namespace quillmar::sandbox::calls {
namespace {

bool owns(Call& call, Owner owner, std::string_view id) {
  return owner == Owner::child ? childExists(call, id) : findDevice(call, id).has_value();
}

Answer noSuchOwner(Owner owner) {
  return notFound(owner == Owner::child ? "child with this id" : "device with this id");
}

Answer policy(Call& call, Owner owner) {
  return json(200, orNull(policyOf(call.database, owner, call.path[0])));
}

// A change of a child's list returns the new policy, a device's nothing.
Answer changed(Call& call, Owner owner) { return owner == Owner::child ? policy(call, owner) : nothing(); }

bool isLabelCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '_';
}

bool isLabel(std::string_view label) {
  return !label.empty() && label.size() <= 63 && label.front() != '-' && label.back() != '-' &&
         std::ranges::all_of(label, isLabelCharacter);
}

bool isDomain(std::string_view text) {
  if (text.empty() || text.size() > 253) {
    return false;
  }
  while (true) {
    const auto dot = text.find('.');
    if (!isLabel(text.substr(0, dot))) {
      return false;
    }
    if (dot == std::string_view::npos) {
      return true;
    }
    text.remove_prefix(dot + 1);
  }
}

// Lower case, without the trailing dot.
std::string normalised(std::string domain) {
  domain = lowerCase(std::move(domain));
  if (domain.ends_with('.')) {
    domain.pop_back();
  }
  return domain;
}

// Refuses an invalid body and an unknown owner; otherwise the answer of `change`.
template <class Change>
Answer changing(Call& call, Owner owner, const Input& input, Change change) {
  if (auto refused = input.refusal()) {
    return *refused;
  }
  return owns(call, owner, call.path[0]) ? change() : noSuchOwner(owner);
}

}  // namespace

template <Owner owner>
Answer showPolicy(Call& call) {
  return owns(call, owner, call.path[0]) ? policy(call, owner) : noSuchOwner(owner);
}

template <Owner owner>
Answer updatePolicy(Call& call) {
  Input input{call.body};
  const bool isBlocked = input.flag("is_blocked");
  const auto mode = input.text("block_mode");
  input.require(mode == "blacklist" || mode == "whitelist",
                "“block_mode” has to be “blacklist” or “whitelist”.");
  return changing(call, owner, input, [&] {
    setPolicy(call.database, owner, call.path[0], isBlocked, mode, call.now);
    return policy(call, owner);
  });
}

template <Owner owner, List list>
Answer addToList(Call& call) {
  Input input{call.body};
  const auto domain = normalised(input.text("domain"));
  input.require(isDomain(domain), "This is not the name of a site. It should look like example.com.");
  return changing(call, owner, input, [&] {
    addDomain(call.database, owner, call.path[0], list, domain, call.now);
    return changed(call, owner);
  });
}

template <Owner owner, List list>
Answer removeFromList(Call& call) {
  if (!owns(call, owner, call.path[0])) {
    return noSuchOwner(owner);
  }
  const bool removed =
      removeDomain(call.database, owner, call.path[0], list, normalised(call.path[1]), call.now);
  return removed ? changed(call, owner) : notFound("such site on this list");
}

template Answer showPolicy<Owner::device>(Call&);
template Answer updatePolicy<Owner::device>(Call&);
template Answer updatePolicy<Owner::child>(Call&);
template Answer addToList<Owner::device, List::blocked>(Call&);
template Answer addToList<Owner::device, List::allowed>(Call&);
template Answer addToList<Owner::child, List::blocked>(Call&);
template Answer addToList<Owner::child, List::allowed>(Call&);
template Answer removeFromList<Owner::device, List::blocked>(Call&);
template Answer removeFromList<Owner::device, List::allowed>(Call&);
template Answer removeFromList<Owner::child, List::blocked>(Call&);
template Answer removeFromList<Owner::child, List::allowed>(Call&);

}  // namespace quillmar::sandbox::calls
