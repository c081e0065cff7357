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

// The server on its own thread, at a free port of this machine.
class RunningServer {
 public:
  using MakeBootstrap = std::function<std::unique_ptr<Bootstrap>(boost::asio::io_context&)>;

  // Uses SystemBootstrap unless another one is given.
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

// A client's socket. Its receive timeout is longer than any test.
class ClientSocket {
 public:
  ClientSocket(int port, Channel channel);
  ~ClientSocket();
  ClientSocket(const ClientSocket&) = delete;
  ClientSocket& operator=(const ClientSocket&) = delete;

  int socket() const { return socket_; }
  // Sends the bytes without a length.
  bool sendRaw(const std::string& bytes);
  void send(const std::string& message);
  // Empty if the other side has closed the connection.
  std::string receive();
  void endSending();
  // Whether the other side closes the connection without sending anything.
  bool seesEnd();

 private:
  std::string receiveExactly(std::size_t size);

  const Channel channel_;
  int socket_ = -1;
};

// Sends a query on a new socket and returns the reply.
std::string askServer(int port, const std::string& message, Channel channel = Channel::udp);

}  // namespace quillmar::tunnel::test
