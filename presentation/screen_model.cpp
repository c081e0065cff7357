#include "presentation/screen_model.h"

namespace quillmar {

void ScreenModel::appear() {
  if (!std::exchange(isOnScreen_, true)) {
    onAppear();
  }
}

void ScreenModel::disappear() {
  if (std::exchange(isOnScreen_, false)) {
    onDisappear();
  }
}

void ScreenModel::dismiss() {
  // A copy: dismissing the screen clears the handler while it runs.
  if (const auto handler = dismissHandler_) {
    handler();
  }
}

Presentation::Presentation(ObservableObject& owner, std::string_view name, Make make,
                           std::function<void()> onDismiss)
    : Member(owner, name, Kind::sheet), make_(std::move(make)), onDismiss_(std::move(onDismiss)) {}

std::vector<Member::Nested> Presentation::nested() const {
  return model_ ? std::vector<Nested>{{std::string(model_->typeName()), model_}} : std::vector<Nested>();
}

void Presentation::present(bool shown) {
  const auto held = holdOwner();
  if (shown == (model_ != nullptr)) {
    announce();
  } else if (shown) {
    show();
  } else {
    takeAway();
  }
}

void Presentation::show() {
  const auto model = make_();
  if (!model) {
    announce();
    return;
  }
  makeRoom();
  model_ = model;
  model->setDismissHandler(owner().weakly([this] { present(false); }));
  announce();
  // A listener may already have dismissed it.
  if (model_ == model) {
    model->appear();
  }
}

void Presentation::makeRoom() {
  const auto* const screen = dynamic_cast<const ScreenModel*>(&owner());
  if (!isPage() || !screen || !screen->arePagesBeside()) {
    return;
  }
  for (Member* member : owner().members()) {
    auto* const other = dynamic_cast<Presentation*>(member);
    if (other && other->isPage() && other->model_) {
      other->takeAway();
    }
  }
}

void Presentation::takeAway() {
  withdraw();
  if (onDismiss_) {
    onDismiss_();
  }
}

void Presentation::withdraw() {
  const auto model = std::exchange(model_, nullptr);
  model->setDismissHandler({});
  withdrawAllOf(*model);
  model->disappear();
  announce();
}

void Presentation::withdrawAllOf(const ObservableObject& object) {
  for (Member* member : object.members()) {
    if (auto* presentation = dynamic_cast<Presentation*>(member)) {
      if (presentation->model_) {
        presentation->withdraw();
      }
    } else {
      for (const auto& nested : member->nested()) {
        withdrawAllOf(*nested.object);
      }
    }
  }
}

}  // namespace quillmar
