#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <functional>
#include <string_view>
#include <vector>

#include "tunnel/link/open_file.h"

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
  bool works() const { return socket_.is_open(); }

 private:
  void wait();
  void read();

  boost::asio::posix::stream_descriptor socket_;
  Changed changed_;
  RulesetReader reader_;
};

}  // namespace quillmar::tunnel
