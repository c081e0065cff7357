#pragma once

#include <boost/asio/io_context.hpp>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "tunnel/network/bootstrap.h"
#include "tunnel/network/nat64.h"
#include "tunnel/network/server_lookup.h"
#include "tunnel/resolver/time.h"

namespace quillmar::tunnel {

// Finds the endpoint's addresses without the system's resolver, which uses this program. It returns
// addresses that were found before, or else those that the link's name servers give. The address that
// worked last is added at the end. If there is no route to any of them, and the network translates IPv4
// (NAT64), their translations are added.
class LinkBootstrap final : public Bootstrap {
 public:
  // Asks for the link's name servers. The answer may come before this returns, later, or never.
  using Servers = std::function<void(std::function<void(NameServers)>)>;
  // The last address that worked, by host.
  using LastGood = std::map<std::string, boost::asio::ip::address>;
  using Reached = std::function<void(const std::string& host, const boost::asio::ip::address&)>;

  using HasRoute = std::function<bool(const boost::asio::ip::address&)>;

  LinkBootstrap(boost::asio::io_context& context, Servers servers, LastGood lastGood, Reached reached,
                HasRoute hasRoute = hasRouteTo);

  void reached(const Endpoint& endpoint, const boost::asio::ip::address& address) override;
  void missed(const Endpoint& endpoint) override;

 private:
  using Addresses = std::vector<boost::asio::ip::address>;
  struct Known {
    Addresses addresses;
    Time ends;
  };

  void lookUp(const Endpoint& endpoint, Found found) override;
  void deliver(TcpEndpoints endpoints, const Found& found) override;
  // The known addresses, or else those that the link's name servers give.
  void addressesOf(const std::string& host, std::function<void(const Addresses&)> take);
  void answer(const Endpoint& endpoint, const Addresses& addresses, const Found& found);
  bool needsTranslation(const TcpEndpoints& endpoints) const;
  TcpEndpoints translations(const TcpEndpoints& endpoints, const std::vector<Nat64Prefix>& prefixes);

  boost::asio::io_context& context_;
  const Servers servers_;
  LastGood lastGood_;
  const Reached reached_;
  const HasRoute hasRoute_;
  std::map<std::string, Known> known_;
  std::map<boost::asio::ip::address, boost::asio::ip::address> originals_;  // of the latest translations
};

}  // namespace quillmar::tunnel
