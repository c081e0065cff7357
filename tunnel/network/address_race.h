#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <chrono>
#include <functional>
#include <list>
#include <memory>

#include "tunnel/network/bootstrap.h"
#include "tunnel/network/timer.h"

namespace quillmar::tunnel {

// Connects to several addresses and keeps the first connection that succeeds. The next attempt begins after
// a head start, or when an attempt fails.
class AddressRace : public std::enable_shared_from_this<AddressRace> {
 public:
  static constexpr std::chrono::milliseconds headStart{250};
  using Won = std::function<void(boost::system::error_code, boost::asio::ip::tcp::socket)>;

  AddressRace(boost::asio::io_context& context, TcpEndpoints endpoints, Won won);

  void start() { startNext(); }
  // `won` is not called any more.
  void cancel();

 private:
  using Socket = boost::asio::ip::tcp::socket;

  void startNext();
  void ended(std::list<Socket>::iterator runner, boost::system::error_code error);

  boost::asio::io_context& context_;
  Timer timer_;
  const TcpEndpoints endpoints_;
  TcpEndpoints::const_iterator next_;
  std::list<Socket> runners_;
  Won won_;
};

}  // namespace quillmar::tunnel
