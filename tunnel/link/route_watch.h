#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>

namespace quillmar::tunnel {

// Reads the kernel's notifications of links, addresses and routes for what matters to connections to the
// outside. Much is told again and again without a change, and is nothing.
class RouteReader {
 public:
  // Whether there may be another way out than before.
  bool read(std::string_view notifications);

 private:
  bool takeLink(bool isThere, std::string_view payload);
  bool takeRoute(bool isThere, std::string_view payload);
  void forgetWaysThrough(int link);

  std::map<int, bool> carriers_;
  // The default routes, by link; what else there is to each is not looked into.
  std::set<std::pair<int, std::string>> ways_;
};

class RouteWatch {
 public:
  RouteWatch(boost::asio::io_context& context, std::function<void()> changed);

 private:
  void wait();
  void read();

  boost::asio::posix::stream_descriptor socket_;
  const std::function<void()> changed_;
  RouteReader reader_;
};

}  // namespace quillmar::tunnel
