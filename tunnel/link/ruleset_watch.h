#pragma once

#include <boost/asio/io_context.hpp>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

#include "tunnel/link/netlink_watch.h"

namespace quillmar::tunnel {

enum class RulesetChange {
  redirectionTouched,  // by another program
  released,
};

// Reads the kernel's notifications about nftables. A transaction that changes our table without creating it
// again was made by another program.
class RulesetReader {
 public:
  std::vector<RulesetChange> read(std::string_view notifications);

 private:
  void take(unsigned message, std::string_view table);

  bool touched_ = false;
  bool made_ = false;
  bool released_ = false;
};

class RulesetWatch {
 public:
  using Changed = std::function<void(RulesetChange)>;

  RulesetWatch(boost::asio::io_context& context, Changed changed);

  // Whether this machine sends notifications.
  bool works() const { return watch_.works(); }

 private:
  void read(std::optional<std::string_view> messages);

  const Changed changed_;
  RulesetReader reader_;
  NetlinkWatch watch_;
};

}  // namespace quillmar::tunnel
