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
  Secret(std::string text) { take(text); }
  Secret(const char* text) : text_(text) {}
  Secret(const Secret&) = default;
  Secret(Secret&& other) noexcept { take(other.text_); }
  Secret& operator=(Secret other) noexcept {
    wipe(text_);
    take(other.text_);
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
  // A short text is copied, and left behind. Called while this one is empty: a swap of two short texts would
  // also leave one on the stack.
  void take(std::string& text) noexcept {
    text_.swap(text);
    wipe(text);
  }

  std::string text_;
};

}  // namespace quillmar
