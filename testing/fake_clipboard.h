#pragma once

#include <string>
#include <string_view>

#include "platform/clipboard.h"

namespace quillmar {

class FakeClipboard final : public Clipboard {
 public:
  void setString(std::string_view text) override { text_ = text; }
  std::string string() const override { return text_; }

 private:
  std::string text_;
};

}  // namespace quillmar
