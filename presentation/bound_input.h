#pragma once

#include <string_view>

#include "foundation/observable.h"

namespace quillmar {

// A field of a sheet that edits an input of the presenting screen. The sheet must not outlive that screen.
template <class T>
class BoundInput final : public Member {
 public:
  BoundInput(ObservableObject& owner, std::string_view name, Input<T>& source)
      : Member(owner, name, Kind::state), source_(source) {}

  const T& operator()() const { return source_(); }

  Value value() const override { return source_.value(); }
  bool isInput() const override { return true; }
  bool input(const Value& value) override { return source_.input(value); }

 private:
  Input<T>& source_;
};

}  // namespace quillmar
