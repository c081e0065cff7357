#pragma once

#include <functional>
#include <optional>
#include <string>

#include "client/records/child.h"
#include "presentation/screen_model.h"

namespace quillmar {

class Environment;

// Registers a device that cannot run the application.
class ManualEnrollmentView final : public ScreenModel {
 public:
  explicit ManualEnrollmentView(Environment& /*environment*/, std::optional<std::string> /*childId*/,
                                std::function<void()> /*onEnrollmentComplete*/ = {})
      : ScreenModel("ManualEnrollmentView") {}
};

}  // namespace quillmar
