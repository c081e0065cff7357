#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/udp.hpp>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tunnel/dns/address_records.h"
#include "tunnel/network/bootstrap.h"
#include "tunnel/network/timer.h"

namespace quillmar::tunnel {

using NameServers = std::vector<boost::asio::ip::udp::endpoint>;

// Looks up the addresses of a name at plain DNS servers. It asks the next server when one is late or fails.
// The first server that has answered for both families, with an address, decides.
class ServerLookup : public std::enable_shared_from_this<ServerLookup> {
 public:
  struct Result {
    std::vector<boost::asio::ip::address> addresses{};
    std::chrono::seconds life{0};
  };
  using Done = std::function<void(Result)>;

  static constexpr std::chrono::milliseconds headStart{400};
  static constexpr std::chrono::seconds patience{2};

  ServerLookup(boost::asio::io_context& context, NameServers servers, Done done);

  // `done` is called after this has returned.
  void start(const std::string& host);

 private:
  struct Asked;

  void askNext();
  bool send(Asked& asked);
  void receive(const std::shared_ptr<Asked>& asked);
  void take(Asked& asked, std::string_view message);
  void end(Result result);

  boost::asio::io_context& context_;
  const NameServers servers_;
  NameServers::const_iterator next_;
  Done done_;
  std::vector<Query> queries_;
  std::vector<std::shared_ptr<Asked>> asked_;
  Timer turn_;
  Timer end_;
};

}  // namespace quillmar::tunnel
