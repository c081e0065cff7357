#pragma once

#include <functional>
#include <optional>
#include <string>

#include "client/records/child.h"
#include "presentation/screen_model.h"

namespace quillmar {

class Environment;

// The parent's half of an enrollment.
class ScannerView final : public ScreenModel {
 public:
  explicit ScannerView(Environment& /*environment*/, std::optional<std::string> /*childId*/,
                       std::function<void()> /*onEnrollmentComplete*/)
      : ScreenModel("ScannerView") {}
};

}  // namespace quillmar
