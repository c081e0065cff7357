#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "foundation/wipe.h"

namespace quillmar {

// A password or a token. Its memory is wiped when it is replaced, moved from or destroyed.
class Secret {
 public:
  Secret() = default;
  // NOLINTBEGIN(google-explicit-constructor): it is used like the text that it holds
  Secret(std::string text) : text_(std::move(text)) { wipe(text); }
  Secret(const char* text) : text_(text) {}
  Secret(const Secret&) = default;
  Secret(Secret&& other) noexcept : text_(std::move(other.text_)) { wipe(other.text_); }
  // Not by a swap: a short text would leave a copy of itself on the stack.
  Secret& operator=(Secret other) noexcept {
    wipe(text_);
    text_ = std::move(other.text_);
    return *this;
  }
  ~Secret() { wipe(text_); }

  operator const std::string&() const { return text_; }
  // NOLINTEND(google-explicit-constructor)
  const std::string& text() const { return text_; }
  bool empty() const { return text_.empty(); }

  // Gives the text away to what wipes it itself.
  std::string release() && { return std::move(text_); }

  friend bool operator==(const Secret& one, const Secret& other) { return one.text_ == other.text_; }

 private:
  std::string text_;
};

}  // namespace quillmar
