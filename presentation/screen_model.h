#pragma once

#include <functional>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/observable.h"

namespace quillmar {

// All of a screen but its pixels. Whoever presents it owns it by std::shared_ptr, tells it when it comes and
// goes, and hears when it wants to go.
class ScreenModel : public ObservableObject {
 public:
  using ObservableObject::ObservableObject;

  // Telling twice what is so already does nothing.
  void appear();
  void disappear();
  bool isOnScreen() const { return isOnScreen_; }

  // Asks the presenter to take this screen away; does nothing where nobody presents it.
  void dismiss();
  void setDismissHandler(std::function<void()> handler) { dismissHandler_ = std::move(handler); }

 protected:
  virtual void onAppear() {}
  virtual void onDisappear() {}

 private:
  bool isOnScreen_ = false;
  std::function<void()> dismissHandler_;
};

// A screen that its owner shows or not. The model exists exactly while it is shown: it is made, announced and
// told to appear; when its time is over, it is told to disappear, its end is announced, it is let go, and
// then `onDismiss` runs. A model that goes takes with it, first, the screens that it presents itself; their
// `onDismiss` does not run, for there is no screen to come back to. Where there is nothing to show, `make`
// gives null, and nothing is presented.
class Presentation : public Member {
 public:
  std::vector<Nested> nested() const override;

 protected:
  using Make = std::function<std::shared_ptr<ScreenModel>()>;

  Presentation(ObservableObject& owner, std::string_view name, Make make, std::function<void()> onDismiss);

  ScreenModel* model() const { return model_.get(); }
  // Presenting what is presented already, or taking away nothing, only announces.
  void present(bool shown);

 private:
  void show();
  void takeAway();
  void withdraw();
  static void withdrawAllOf(const ObservableObject& object);

  Make make_;
  std::function<void()> onDismiss_;
  std::shared_ptr<ScreenModel> model_;
};

// The typed view of what is presented.
template <class T>
class PresentationOf : public Presentation {
 public:
  T* get() const { return static_cast<T*>(model()); }
  T* operator->() const { return get(); }
  T& operator*() const { return *get(); }

 protected:
  using Presentation::Presentation;
};

// A screen presented over its owner's, and at once the owner's Bool state of that name, which a person may
// set too (a sheet is swiped away, a link opens it).
template <class T>
class Sheet final : public PresentationOf<T> {
 public:
  Sheet(ObservableObject& owner, std::string_view name, std::function<std::shared_ptr<T>()> make,
        std::function<void()> onDismiss = {})
      : PresentationOf<T>(owner, name, std::move(make), std::move(onDismiss)) {}

  bool operator()() const { return this->get() != nullptr; }
  Sheet& operator=(bool shown) {
    this->present(shown);
    return *this;
  }

  Value value() const override { return (*this)(); }
  bool isInput() const override { return true; }
  bool input(const Value& value) override {
    const bool* shown = value.boolean();
    if (shown && *shown != (*this)()) {
      this->present(*shown);
    }
    return shown != nullptr;
  }
};

// A screen shown in place of its owner's own content; only the owner says when.
template <class T>
class Presented final : public PresentationOf<T> {
 public:
  Presented(ObservableObject& owner, std::string_view name, std::function<std::shared_ptr<T>()> make,
            std::function<void()> onDismiss = {})
      : PresentationOf<T>(owner, name, std::move(make), std::move(onDismiss)) {}

  using Presentation::present;
  explicit operator bool() const { return this->get() != nullptr; }
};

}  // namespace quillmar
