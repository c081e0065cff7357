#pragma once

#include "platform/clipboard.h"

namespace quillmar::ui {

// The desktop's clipboard. Needs a QGuiApplication.
class QtClipboard final : public Clipboard {
 public:
  void setString(std::string_view text) override;
  std::string string() const override;
};

}  // namespace quillmar::ui
