#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace quillmar::sandbox::test {

// A UDP server on a free port of 127.0.0.1, on its own thread. It sends the datagrams that `Answering`
// returns for a received one.
class DatagramServer {
 public:
  using Answering = std::function<std::vector<std::string>(std::string_view received)>;

  explicit DatagramServer(Answering answering);
  ~DatagramServer();
  DatagramServer(const DatagramServer&) = delete;
  DatagramServer& operator=(const DatagramServer&) = delete;

  int port() const { return port_; }

 private:
  void serve();

  const Answering answering_;
  const int socket_;
  const int stop_;
  int port_ = 0;
  std::thread thread_;
};

}  // namespace quillmar::sandbox::test
