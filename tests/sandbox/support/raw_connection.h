#pragma once

#include <string>

namespace quillmar::sandbox::test {

// A plain TCP connection to a port of this machine, for what no well-behaved client would send.
class RawConnection {
 public:
  explicit RawConnection(int port);
  ~RawConnection();

  RawConnection(const RawConnection&) = delete;
  RawConnection& operator=(const RawConnection&) = delete;

  bool send(const std::string& bytes);

  // One HTTP answer with a Content-Length; empty if the connection ended before it was whole.
  std::string readAnswer();

  // All that comes until the other side closes.
  std::string readToEnd();

 private:
  bool readMore();

  int socket_;
  std::string received_;
};

// "HTTP/1.1 200 OK…" is 200; 0 for what isn't an answer.
[[nodiscard]] int statusOf(const std::string& answer);

}  // namespace quillmar::sandbox::test
