#pragma once

#include <boost/asio/io_context.hpp>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "tunnel/link/netlink_watch.h"

namespace quillmar::tunnel {

// Reads the kernel's notifications of links, addresses and routes, and recognizes new ways to the outside.
// Notifications that repeat the known state are ignored.
class RouteReader {
 public:
  // Returns whether a new way to the outside may exist.
  bool read(std::string_view notifications);

 private:
  bool takeLink(bool isThere, std::string_view payload);
  bool takeRoute(bool isThere, std::string_view payload);
  void forgetWaysThrough(int link);

  std::map<int, bool> carriers_;
  // The default routes as (link, identifying attributes).
  std::set<std::pair<int, std::string>> ways_;
};

class RouteWatch {
 public:
  RouteWatch(boost::asio::io_context& context, std::function<void()> changed);

 private:
  const std::function<void()> changed_;
  RouteReader reader_;
  NetlinkWatch watch_;
};

}  // namespace quillmar::tunnel
