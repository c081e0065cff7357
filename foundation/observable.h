#pragma once

#include <concepts>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "foundation/convert.h"
#include "foundation/signal.h"
#include "foundation/value.h"

// Objects that describe themselves. A member is declared once, with its name, and is from then on known to
// every front end: the QML bridge, the driver, a terminal, a test that prints a screen. Everything here is
// for the main thread.
namespace quillmar {

class Member;
class ObservableObject;

// A closure that outlives its object must not touch it. A LifeGuard is what such a closure holds instead.
class LifeGuard {
 public:
  LifeGuard() = default;
  explicit LifeGuard(const std::shared_ptr<const bool>& life) : life_(life) {}
  bool alive() const { return !life_.expired(); }

 private:
  std::weak_ptr<const bool> life_;
};

// Objects whose own members may let them go (a screen that dismisses itself) are owned by std::shared_ptr:
// a call into such an object keeps it alive until the call is done.
class ObservableObject : public std::enable_shared_from_this<ObservableObject> {
 public:
  explicit ObservableObject(std::string_view typeName);
  ObservableObject(const ObservableObject&) = delete;
  ObservableObject& operator=(const ObservableObject&) = delete;
  virtual ~ObservableObject();

  std::string_view typeName() const { return typeName_; }
  const std::vector<Member*>& members() const { return members_; }
  Member* findMember(std::string_view name) const;

  // Hears of every announced change; derived values may have changed with it.
  Subscription observe(std::function<void(const Member&)> listener) {
    return changes_.connect(std::move(listener));
  }

  LifeGuard lifeGuard() const { return LifeGuard(life_); }

  // Wraps a closure so that it does nothing once this object has gone. To be run on the main thread.
  template <class Function>
  auto weakly(Function function) const {
    return [this, guard = lifeGuard(), function = std::move(function)](auto&&... args) mutable {
      if (guard.alive()) {
        const auto held = weak_from_this().lock();
        function(std::forward<decltype(args)>(args)...);
      }
    };
  }

 protected:
  // What this object shows follows from `other` too: its changes are passed on.
  void follow(ObservableObject& other);

 private:
  friend class Member;

  std::string_view typeName_;
  std::vector<Member*> members_;
  Signal<const Member&> changes_;
  std::vector<Subscription> followed_;
  std::shared_ptr<const bool> life_ = std::make_shared<const bool>(true);
};

class Member {
 public:
  // state: published; derived: a function of state; text: a fixed sentence; action: a control's effect;
  // part: a nested object that belongs to the drawing of this one; rows: a list of such; sheet: a screen
  // presented over this one.
  enum class Kind { state, derived, text, action, part, rows, sheet };

  Member(ObservableObject& owner, std::string_view name, Kind kind);
  Member(const Member&) = delete;
  Member& operator=(const Member&) = delete;
  virtual ~Member() = default;

  std::string_view name() const { return name_; }
  Kind kind() const { return kind_; }

  // state, derived, text: what it holds.
  virtual Value value() const { return {}; }
  // state: whether a person's input may change it, and the change; false for a value of another type.
  virtual bool isInput() const { return false; }
  virtual bool input(const Value& /*value*/) { return false; }
  // action: whether its control is in use, and its use; false when out of use or the arguments do not fit.
  virtual bool isEnabled() const { return false; }
  virtual bool perform(const Value::List& /*arguments*/) { return false; }
  // part, rows, sheet: the objects that stand there now, each with a key that stays its own across refreshes.
  struct Nested {
    std::string key;
    std::shared_ptr<ObservableObject> object;
  };
  virtual std::vector<Nested> nested() const { return {}; }

 protected:
  void announce() const { owner_.changes_.emit(*this); }
  ObservableObject& owner() const { return owner_; }
  // Whoever goes on after an announcement or an effect holds the owner until then.
  std::shared_ptr<const ObservableObject> holdOwner() const { return owner_.weak_from_this().lock(); }

 private:
  ObservableObject& owner_;
  std::string_view name_;
  Kind kind_;
};

// A value of an object whose every assignment is announced, whether it differs or not.
template <class T>
class Published : public Member {
 public:
  Published(ObservableObject& owner, std::string_view name, T initial = T())
      : Member(owner, name, Kind::state), value_(std::move(initial)) {}

  const T& operator()() const { return value_; }
  const T& get() const { return value_; }

  Published& operator=(T value) {
    set(std::move(value));
    return *this;
  }
  void set(T value) {
    const auto held = holdOwner();
    const T previous = std::exchange(value_, std::move(value));
    announce();
    if (!(previous == value_)) {
      changed_.emit();
    }
  }

  // Runs after an assignment that made a difference, and only then.
  Subscription onChange(std::function<void()> reaction) { return changed_.connect(std::move(reaction)); }

  Value value() const override { return toValue(value_); }

 private:
  T value_;
  Signal<> changed_;
};

// A published value that a person's input may set: a text field, a toggle, a tab, an alert's dismissal.
template <class T>
class Input final : public Published<T> {
 public:
  using Published<T>::Published;
  using Published<T>::operator=;

  bool isInput() const override { return true; }
  bool input(const Value& value) override {
    auto converted = fromValue<T>(value);
    if (!converted) {
      return false;
    }
    if (!(*converted == this->get())) {
      this->set(std::move(*converted));
    }
    return true;
  }
};

// A value that follows from others and is never stored.
template <class T>
class Derived final : public Member {
 public:
  Derived(ObservableObject& owner, std::string_view name, std::function<T()> compute)
      : Member(owner, name, Kind::derived), compute_(std::move(compute)) {}

  T operator()() const { return compute_(); }
  Value value() const override { return toValue(compute_()); }

 private:
  std::function<T()> compute_;
};

// One of the system's own sentences, as it stands on a screen.
class Text final : public Member {
 public:
  Text(ObservableObject& owner, std::string_view name, std::string_view text)
      : Member(owner, name, Kind::text), text_(text) {}

  const std::string& operator()() const { return text_; }
  Value value() const override { return text_; }

 private:
  std::string text_;
};

// What a control does, and when it may be used. Out of use, it does nothing, whoever calls.
template <class... Args>
class Action final : public Member {
 public:
  Action(ObservableObject& owner, std::string_view name, std::function<void(Args...)> effect,
         std::function<bool()> enabled = {})
      : Member(owner, name, Kind::action), effect_(std::move(effect)), enabled_(std::move(enabled)) {}

  bool operator()(Args... args) {
    if (!isEnabled()) {
      return false;
    }
    const auto held = holdOwner();
    effect_(std::move(args)...);
    return true;
  }

  bool isEnabled() const override { return !enabled_ || enabled_(); }

  bool perform(const Value::List& arguments) override {
    return arguments.size() == sizeof...(Args) && performWith(arguments, std::index_sequence_for<Args...>());
  }

 private:
  template <std::size_t... i>
  bool performWith([[maybe_unused]] const Value::List& arguments, std::index_sequence<i...> /*indices*/) {
    [[maybe_unused]] auto converted = std::make_tuple(fromValue<std::remove_cvref_t<Args>>(arguments[i])...);
    return (std::get<i>(converted).has_value() && ...) && (*this)(std::move(*std::get<i>(converted))...);
  }

  std::function<void(Args...)> effect_;
  std::function<bool()> enabled_;
};

// A nested object that is there or not.
template <class T>
class Part : public Member {
 public:
  Part(ObservableObject& owner, std::string_view name, Kind kind = Kind::part) : Member(owner, name, kind) {}

  T* get() const { return object_.get(); }
  T* operator->() const { return object_.get(); }
  T& operator*() const { return *object_; }
  explicit operator bool() const { return object_ != nullptr; }

  void put(std::shared_ptr<T> object) {
    // The former object stays alive until the change is known: an action of its own may have led here.
    const auto former = std::exchange(object_, std::move(object));
    announce();
  }

  std::vector<Nested> nested() const override {
    return object_ ? std::vector<Nested>{{std::string(object_->typeName()), object_}} : std::vector<Nested>();
  }

 private:
  std::shared_ptr<T> object_;
};

// A list of nested objects, one a row. A row keeps its identity for as long as its key is in the list.
template <class Row>
class Rows final : public Member {
 public:
  Rows(ObservableObject& owner, std::string_view name) : Member(owner, name, Kind::rows) {}

  std::size_t size() const { return rows_.size(); }
  Row& operator[](std::size_t index) const { return *rows_[index].second; }
  Row* find(std::string_view key) const {
    for (const auto& [known, row] : rows_) {
      if (known == key) {
        return row.get();
      }
    }
    return nullptr;
  }

  void assign(std::vector<std::pair<std::string, std::shared_ptr<Row>>> rows) {
    const auto former = std::exchange(rows_, std::move(rows));
    announce();
  }
  std::shared_ptr<Row> share(std::string_view key) const {
    for (const auto& [known, row] : rows_) {
      if (known == key) {
        return row;
      }
    }
    return nullptr;
  }

  std::vector<Nested> nested() const override {
    std::vector<Nested> all;
    for (const auto& [key, row] : rows_) {
      all.push_back({key, row});
    }
    return all;
  }

 private:
  std::vector<std::pair<std::string, std::shared_ptr<Row>>> rows_;
};

}  // namespace quillmar
