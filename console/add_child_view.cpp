#include "console/add_child_view.h"

#include <utility>

#include "foundation/filled_text.h"
#include "foundation/text.h"
#include "platform/hop.h"

namespace quillmar {

AddChildView::AddChildView(Environment& environment, std::function<void()> onChildAdded)
    : ScreenModel("AddChildView"), environment_(environment), onChildAdded_(std::move(onChildAdded)) {}

void AddChildView::create() {
  isLoading = true;
  environment_.networkService()->createChild(
      {.name = name(), .photoURL = std::nullopt, .birthYear = wholeNumber(birthYear())},
      hoppingToMain(environment_.platform().dispatch,
                    weakly([this](const Result<ChildProfileWithDevices>& result) { handleResult(result); })));
}

void AddChildView::handleResult(const Result<ChildProfileWithDevices>& result) {
  isLoading = false;
  if (!result.ok()) {
    errorAlert.show(result.error());
    return;
  }
  const ChildProfileWithDevices& child = result.value();
  environment_.platform().log.system(
      filled("[AddChildView] Child created successfully: %@ (id: %@)", {child.name, child.id}));
  dismiss();
}

}  // namespace quillmar
