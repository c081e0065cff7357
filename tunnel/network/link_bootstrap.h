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

// Finds the endpoint's addresses without the system's resolver, which uses this program. It returns
// addresses that were found before, or else those that the link's name servers give. The address that
// worked last is added at the end.
class LinkBootstrap final : public Bootstrap {
 public:
  // Asks for the link's name servers. The answer may come before this returns, later, or never.
  using Servers = std::function<void(std::function<void(NameServers)>)>;
  // The last address that worked, by host.
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
