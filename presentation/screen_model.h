#pragma once

#include <functional>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/observable.h"

namespace quillmar {

// A screen without its pixels. Its presenter owns it by std::shared_ptr, calls `appear` and `disappear`, and
// sets the handler that dismisses it.
class ScreenModel : public ObservableObject {
 public:
  using ObservableObject::ObservableObject;

  // Both are idempotent.
  void appear();
  void disappear();
  bool isOnScreen() const { return isOnScreen_; }

  // The front end reports whether it has room to draw the pages of this screen beside it. Until then they
  // cover it.
  void setPagesBeside(bool beside) { arePagesBeside_ = beside; }
  bool arePagesBeside() const { return arePagesBeside_; }

  // Asks the presenter to dismiss this screen; does nothing without a presenter.
  void dismiss();
  void setDismissHandler(std::function<void()> handler) { dismissHandler_ = std::move(handler); }

 protected:
  virtual void onAppear() {}
  virtual void onDisappear() {}

 private:
  bool isOnScreen_ = false;
  bool arePagesBeside_ = false;
  std::function<void()> dismissHandler_;
};

// A screen that its owner presents. The model exists only while it is presented. Presenting makes the model,
// announces it and calls `appear`. Dismissing calls `disappear`, announces the change, releases the model and
// then runs `onDismiss`. A dismissed model first dismisses the screens that it presents itself, without their
// `onDismiss`. If `make` returns null, nothing is presented.
class Presentation : public Member {
 public:
  std::vector<Nested> nested() const override;
  // May stand beside its owner.
  virtual bool isPage() const { return false; }

 protected:
  using Make = std::function<std::shared_ptr<ScreenModel>()>;

  Presentation(ObservableObject& owner, std::string_view name, Make make, std::function<void()> onDismiss);

  ScreenModel* model() const { return model_.get(); }
  // Only announces if the state is already `shown`.
  void present(bool shown);

 private:
  void show();
  void makeRoom();
  void takeAway();
  void withdraw();
  static void withdrawAllOf(const ObservableObject& object);

  Make make_;
  std::function<void()> onDismiss_;
  std::shared_ptr<ScreenModel> model_;
};

// Typed access to the presented model.
template <class T>
class PresentationOf : public Presentation {
 public:
  T* get() const { return static_cast<T*>(model()); }
  T* operator->() const { return get(); }
  T& operator*() const { return *get(); }

 protected:
  using Presentation::Presentation;
};

// A screen presented over its owner's. It is also a Bool state of that name, which a person can set too (by
// swiping the sheet away or by opening a link).
template <class T>
class Sheet : public PresentationOf<T> {
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

// A sheet that may stand beside its owner's screen. There is room for one: presenting it there dismisses the
// page that stands there.
template <class T>
class Page final : public Sheet<T> {
 public:
  using Sheet<T>::Sheet;
  using Sheet<T>::operator=;

  bool isPage() const override { return true; }
};

// A screen shown instead of its owner's content; only the owner presents it.
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
