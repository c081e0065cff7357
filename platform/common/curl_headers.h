#pragma once

#include <curl/curl.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "foundation/wipe.h"

namespace quillmar {

// Header lines in the form that libcurl reads during a transfer. They are overwritten when they go, because
// one may hold a token.
class CurlHeaders {
 public:
  CurlHeaders() = default;
  CurlHeaders(const CurlHeaders&) = delete;
  CurlHeaders& operator=(const CurlHeaders&) = delete;
  ~CurlHeaders() { wipeAll(); }

  // Replaces all lines. libcurl must not use the old ones any more.
  void assign(std::vector<std::string> lines) {
    wipeAll();
    lines_ = std::move(lines);
    list_.resize(lines_.size());
    for (std::size_t i = 0; i < lines_.size(); ++i) {
      list_[i] = {lines_[i].data(), i + 1 < lines_.size() ? &list_[i + 1] : nullptr};
    }
  }

  // Null if there are none. Valid until the next `assign`.
  curl_slist* list() { return list_.empty() ? nullptr : list_.data(); }

 private:
  void wipeAll() {
    for (auto& line : lines_) {
      wipe(line);
    }
  }

  std::vector<std::string> lines_;
  std::vector<curl_slist> list_;
};

}  // namespace quillmar
