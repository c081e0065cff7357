#pragma once

#include <filesystem>
#include <string>

#include "tunnel/network/link_bootstrap.h"

namespace quillmar::tunnel {

// Keeps the last address that worked for each endpoint's host, in a file that only its owner can read. With
// it a machine finds its endpoint on a network whose name servers don't answer.
class ReachedAddresses {
 public:
  explicit ReachedAddresses(std::filesystem::path directory);

  const LinkBootstrap::LastGood& all() const { return addresses_; }
  // Returns the problem, or an empty text.
  std::string keep(const std::string& host, const boost::asio::ip::address& address);

 private:
  std::string write() const;

  const std::filesystem::path directory_;
  LinkBootstrap::LastGood addresses_;
};

}  // namespace quillmar::tunnel
