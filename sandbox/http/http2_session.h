#pragma once

#include <nghttp2/nghttp2.h>

#include <array>
#include <boost/asio/steady_timer.hpp>
#include <map>
#include <memory>
#include <string>

#include "sandbox/http/connection.h"
#include "sandbox/http/exchange.h"

namespace quillmar::sandbox {

// An HTTP/2 connection. Keeps itself alive until the connection ends.
class Http2Session : public std::enable_shared_from_this<Http2Session> {
 public:
  Http2Session(std::shared_ptr<Connection> connection, Exchange& exchange);
  ~Http2Session();

  void start();

 private:
  struct Exchanged {
    explicit Exchanged(boost::asio::io_context& network) : pause{network} {}
    Request request;
    Answer answer;
    std::size_t sent = 0;
    std::size_t ready = 0;  // the size of the part of the body that may be sent now
    bool answered = false;
    bool headOnly = false;
    boost::asio::steady_timer pause;
  };

  static const nghttp2_session_callbacks* callbacks();
  static ssize_t readAnswer(nghttp2_session*, int32_t id, uint8_t* buffer, size_t length, uint32_t* flags,
                            nghttp2_data_source* source, void* user);

  Exchanged* find(int32_t id);
  void headerCame(int32_t id, std::string_view name, std::string_view value);
  void dataCame(int32_t id, std::string_view data);
  void requestCame(int32_t id);
  void submit(int32_t id, Answer answer);
  void makeReady(int32_t id);

  void read();
  void flush();
  void close();

  std::shared_ptr<Connection> connection_;
  Exchange& exchange_;
  nghttp2_session* session_ = nullptr;
  std::map<int32_t, Exchanged> streams_;
  std::array<uint8_t, std::size_t{16} * 1024> incoming_{};
  std::string outgoing_;
  bool writing_ = false;
  bool closed_ = false;
};

}  // namespace quillmar::sandbox
