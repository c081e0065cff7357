#pragma once

#include <boost/asio/io_context.hpp>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "tunnel/network/bootstrap.h"
#include "tunnel/network/server_lookup.h"
#include "tunnel/resolver/time.h"

namespace quillmar::tunnel {

// The endpoint's addresses without the system's resolver, which asks this program: what is known and still
// good, then what the servers of the link say, then what was good last. The last one stands behind the
// others, too: it is tried if those take no connection.
class LinkBootstrap final : public Bootstrap {
 public:
  // Which servers the link has; they may be told at once, later or never.
  using Servers = std::function<void(std::function<void(NameServers)>)>;
  // The address at which each host was reached last.
  using LastGood = std::map<std::string, boost::asio::ip::address>;
  using Reached = std::function<void(const std::string& host, const boost::asio::ip::address&)>;

  LinkBootstrap(boost::asio::io_context& context, Servers servers, LastGood lastGood, Reached reached);

  void reached(const Endpoint& endpoint, const boost::asio::ip::address& address) override;
  void missed(const Endpoint& endpoint) override;

 private:
  struct Known {
    std::vector<boost::asio::ip::address> addresses;
    Time ends;
  };

  void lookUp(const Endpoint& endpoint, Found found) override;
  void answer(const Endpoint& endpoint, const std::vector<boost::asio::ip::address>& addresses,
              const Found& found);

  boost::asio::io_context& context_;
  const Servers servers_;
  LastGood lastGood_;
  const Reached reached_;
  std::map<std::string, Known> known_;
};

}  // namespace quillmar::tunnel
