#pragma once

#include <curl/curl.h>

#include <memory>
#include <string>

#include "foundation/result.h"

namespace quillmar {

// A URL that HTTP can request, without user name and password.
class HttpTarget {
 public:
  // Fails with the TransportError for the fault in the text.
  static Result<HttpTarget> parse(const std::string& url);
  // For the target of a redirect, where servers write more forms.
  static Result<HttpTarget> parseRedirect(const std::string& url);

  CURLU* handle() const { return handle_.get(); }
  // As it was written.
  const std::string& text() const { return text_; }
  const std::string& host() const { return host_; }
  bool isPlain() const { return scheme_ == "http"; }
  // 127.0.0.0/8, ::1, or "localhost", which is never resolved.
  bool isLoopback() const;
  bool hasSameOrigin(const HttpTarget& other) const;

 private:
  struct Cleanup {
    void operator()(CURLU* url) const { curl_url_cleanup(url); }
  };
  using Handle = std::unique_ptr<CURLU, Cleanup>;

  HttpTarget(std::string text, Handle handle);
  std::string part(CURLUPart part, unsigned flags = 0) const;

  std::string text_;
  Handle handle_;
  std::string scheme_;
  std::string host_;
  std::string port_;
};

}  // namespace quillmar
