#pragma once

#include <boost/asio/io_context.hpp>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tunnel/worker/server.h"

namespace quillmar::tunnel::test {

// The server on a thread of its own, at a free port of this machine.
class RunningServer {
 public:
  using MakeBootstrap = std::function<std::unique_ptr<Bootstrap>(boost::asio::io_context&)>;

  // Asks the system's resolver unless told otherwise.
  RunningServer(const std::string& url, const std::string& caFile, const MakeBootstrap& make = {});
  ~RunningServer();
  RunningServer(const RunningServer&) = delete;
  RunningServer& operator=(const RunningServer&) = delete;

  int port() const { return port_; }
  std::vector<std::string> told() const;

 private:
  boost::asio::io_context context_{1};
  int port_ = 0;
  mutable std::mutex mutex_;
  std::vector<std::string> told_;
  std::unique_ptr<Server> server_;
  std::thread thread_;
};

// A client's socket; waits for answers for a while that no test reaches.
class ClientSocket {
 public:
  ClientSocket(int port, Channel channel);
  ~ClientSocket();
  ClientSocket(const ClientSocket&) = delete;
  ClientSocket& operator=(const ClientSocket&) = delete;

  // As they are, without a length.
  bool sendRaw(const std::string& bytes);
  void send(const std::string& message);
  // Empty where the other side has closed.
  std::string receive();
  void endSending();
  // Whether the other side closes, rather than to say something or nothing.
  bool seesEnd();

 private:
  std::string receiveExactly(std::size_t size);

  const Channel channel_;
  int socket_ = -1;
};

// One question over a new socket.
std::string askServer(int port, const std::string& message, Channel channel = Channel::udp);

}  // namespace quillmar::tunnel::test
