#pragma once

#include <nghttp2/nghttp2.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "tunnel/network/endpoint.h"
#include "tunnel/network/http_fields.h"
#include "tunnel/resolver/connection.h"

namespace quillmar::tunnel {

// DNS over HTTPS (RFC 8484) on one HTTP/2 connection. It works on bytes in memory; the caller transfers them.
class Http2Session {
 public:
  // The endpoint and the events have to outlive it. It reports answers, lost requests, PONGs and GOAWAY.
  Http2Session(const Endpoint& endpoint, ConnectionEvents& events);
  Http2Session(const Http2Session&) = delete;
  Http2Session& operator=(const Http2Session&) = delete;
  ~Http2Session();

  // The reason if the connection takes no more requests.
  std::optional<Failure> send(Ticket ticket, const std::string& question);
  void cancel(Ticket ticket);
  void ping();

  // The reason if the connection has to be closed.
  std::optional<Failure> receive(std::string_view bytes);
  // Replaces `frames` by the next ones for the endpoint, about `size` bytes; empty if there are none. Returns
  // the reason if the connection has to be closed.
  std::optional<Failure> takeOutgoing(std::string& frames, std::size_t size);
  // Neither side has anything left to send.
  bool isOver() const;

  // Reports nothing from now on.
  void silence() { events_ = nullptr; }

 private:
  struct Request {
    Ticket ticket = 0;
    std::int32_t stream = 0;
    std::string question{};
    std::string length{};  // of the question, for its header
    std::size_t sent = 0;
    HttpFields fields{};
    std::string body{};
    bool isComplete = false;
    bool isTooLong = false;
    bool isCancelled = false;
  };
  struct Free {
    void operator()(nghttp2_session* session) const { nghttp2_session_del(session); }
  };

  static const nghttp2_session_callbacks* callbacks();

  Request* requestOf(std::int32_t stream);
  void frameCame(const nghttp2_frame& frame);
  void dataCame(std::int32_t stream, std::string_view data);
  void streamClosed(std::int32_t stream);

  const Endpoint& endpoint_;
  ConnectionEvents* events_;
  std::unordered_map<Ticket, Request> requests_;
  std::unique_ptr<nghttp2_session, Free> http_;
};

}  // namespace quillmar::tunnel
