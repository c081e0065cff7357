#pragma once

#include <string>

namespace quillmar::sandbox::test {

// A plain TCP connection to a port of this machine, for malformed traffic.
class RawConnection {
 public:
  explicit RawConnection(int port);
  ~RawConnection();

  RawConnection(const RawConnection&) = delete;
  RawConnection& operator=(const RawConnection&) = delete;

  bool send(const std::string& bytes);

  // One HTTP answer with a Content-Length; empty if the connection ended early.
  std::string readAnswer();

  // Everything until the other side closes.
  std::string readToEnd();

 private:
  bool readMore();

  int socket_;
  std::string received_;
};

// 200 for "HTTP/1.1 200 OK…"; 0 if it is not an answer.
[[nodiscard]] int statusOf(const std::string& answer);

}  // namespace quillmar::sandbox::test
