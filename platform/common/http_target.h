#pragma once

#include <curl/curl.h>

#include <memory>
#include <string>

#include "foundation/result.h"

namespace quillmar {

// Where a request goes: a URL that HTTP can do, without a user's name and password in it.
class HttpTarget {
 public:
  // Fails with the transport error that stands for what is wrong with the text.
  static Result<HttpTarget> parse(const std::string& url);
  // The same for a place named by a server's answer, where more kinds of text are in use.
  static Result<HttpTarget> parseRedirect(const std::string& url);

  CURLU* handle() const { return handle_.get(); }
  const std::string& host() const { return host_; }
  bool isPlain() const { return scheme_ == "http"; }
  // 127.0.0.0/8, ::1 or the name "localhost", which is never looked up.
  bool isLoopback() const;
  bool hasSameOrigin(const HttpTarget& other) const;

 private:
  struct Cleanup {
    void operator()(CURLU* url) const { curl_url_cleanup(url); }
  };
  using Handle = std::unique_ptr<CURLU, Cleanup>;

  explicit HttpTarget(Handle handle);
  std::string part(CURLUPart part, unsigned flags = 0) const;

  Handle handle_;
  std::string scheme_;
  std::string host_;
  std::string port_;
};

}  // namespace quillmar
