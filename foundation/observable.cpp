#include "foundation/observable.h"

#include <algorithm>

namespace quillmar {

ObservableObject::ObservableObject(std::string_view typeName) : typeName_(typeName) {}
ObservableObject::~ObservableObject() = default;

Member* ObservableObject::findMember(std::string_view name) const {
  const auto found = std::ranges::find(members_, name, &Member::name);
  return found == members_.end() ? nullptr : *found;
}

void ObservableObject::follow(ObservableObject& other) {
  followed_.push_back(other.observe([this](const Member& member) { changes_.emit(member); }));
}

Member::Member(ObservableObject& owner, std::string_view name, Kind kind)
    : owner_(owner), name_(name), kind_(kind) {
  owner.members_.push_back(this);
}

}  // namespace quillmar
