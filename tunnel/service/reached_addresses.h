#pragma once

#include <filesystem>
#include <string>

#include "tunnel/network/link_bootstrap.h"

namespace quillmar::tunnel {

// The address at which each endpoint was reached last, in a file that only its owner reads: with it a machine
// starts where nobody else tells the endpoint's address.
class ReachedAddresses {
 public:
  explicit ReachedAddresses(std::filesystem::path directory);

  const LinkBootstrap::LastGood& all() const { return addresses_; }
  // The problem, if there is one.
  std::string keep(const std::string& host, const boost::asio::ip::address& address);

 private:
  std::string write() const;

  const std::filesystem::path directory_;
  LinkBootstrap::LastGood addresses_;
};

}  // namespace quillmar::tunnel
