#pragma once

#include <nghttp2/nghttp2.h>

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "tests/platform/raw_server.h"

namespace quillmar {

// The server side of an HTTP/2 connection, one request at a time.
class Http2Connection {
 public:
  struct Request {
    std::int32_t stream = 0;
    std::string method = {};
    std::string path = {};
  };

  explicit Http2Connection(RawConnection& connection);
  Http2Connection(const Http2Connection&) = delete;
  Http2Connection& operator=(const Http2Connection&) = delete;
  ~Http2Connection() = default;

  // The next complete request; nullopt if the client closed.
  std::optional<Request> readRequest();

  void answer(std::int32_t stream, int status, std::string body);
  // A HEADERS frame without END_HEADERS.
  void beginHeaders(std::int32_t stream);
  // Announces `length` but sends only `body`.
  void answerInPart(std::int32_t stream, std::string_view length, std::string body);
  void resetStream(std::int32_t stream, std::uint32_t error);
  // No stream after this one was processed.
  void goAway(std::int32_t lastStream);

 private:
  struct Cleanup {
    void operator()(nghttp2_session* session) const { nghttp2_session_del(session); }
  };
  struct Body {
    std::string left;
    bool ends = true;
  };

  static nghttp2_session* makeSession(Http2Connection* self);
  static int onHeader(nghttp2_session*, const nghttp2_frame* frame, const std::uint8_t* name,
                      std::size_t nameSize, const std::uint8_t* value, std::size_t valueSize, std::uint8_t,
                      void* self);
  static int onFrame(nghttp2_session*, const nghttp2_frame* frame, void* self);
  static ssize_t readBody(nghttp2_session*, std::int32_t, std::uint8_t* buffer, std::size_t size,
                          std::uint32_t* flags, nghttp2_data_source* source, void*);

  void respond(std::int32_t stream, int status, std::string_view length, Body body);
  void flush();

  RawConnection& connection_;
  std::map<std::int32_t, Request> open_;
  std::map<std::int32_t, Body> bodies_;
  std::deque<Request> whole_;
  std::unique_ptr<nghttp2_session, Cleanup> session_;
};

}  // namespace quillmar
