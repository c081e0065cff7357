#include "tunnel/link/route_watch.h"

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <net/if.h>

#include <cstring>
#include <optional>
#include <utility>

#include "tunnel/link/constants.h"
#include "tunnel/link/netlink.h"

namespace quillmar::tunnel {
namespace {

constexpr std::uint32_t groups =
    RTMGRP_LINK | RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR | RTMGRP_IPV4_ROUTE | RTMGRP_IPV6_ROUTE;

template <class T>
std::optional<T> headOf(std::string_view payload) {
  if (payload.size() < sizeof(T)) {
    return std::nullopt;
  }
  T head{};
  std::memcpy(&head, payload.data(), sizeof head);
  return head;
}

template <class T>
std::string_view behind(std::string_view payload) {
  return payload.substr(std::min(payload.size(), std::size_t{NLMSG_ALIGN(sizeof(T))}));
}

}  // namespace

bool RouteReader::read(std::string_view notifications) {
  bool isChanged = false;
  netlink::visit(notifications, [&](std::uint16_t type, std::string_view payload) {
    if (type == RTM_NEWLINK || type == RTM_DELLINK) {
      isChanged = takeLink(type == RTM_NEWLINK, payload) || isChanged;
    } else if (type == RTM_NEWROUTE || type == RTM_DELROUTE) {
      isChanged = takeRoute(type == RTM_NEWROUTE, payload) || isChanged;
    } else if (const auto address = headOf<ifaddrmsg>(payload); address && type == RTM_DELADDR) {
      forgetWaysThrough(static_cast<int>(address->ifa_index));
    }
  });
  return isChanged;
}

bool RouteReader::takeLink(bool isThere, std::string_view payload) {
  const auto link = headOf<ifinfomsg>(payload);
  const auto name = netlink::attribute(behind<ifinfomsg>(payload), IFLA_IFNAME).value_or("");
  if (!link || name.substr(0, name.find('\0')) == deviceName) {
    return false;
  }
  constexpr unsigned working = IFF_UP | IFF_RUNNING;
  const bool works = isThere && (link->ifi_flags & working) == working;
  const auto [known, isNew] = carriers_.try_emplace(link->ifi_index, works);
  const bool worked = std::exchange(known->second, works);
  if (!works) {
    forgetWaysThrough(link->ifi_index);
  }
  return !isNew && works && !worked;
}

// The kernel does not report the removed routes of a link that has gone down.
void RouteReader::forgetWaysThrough(int link) {
  std::erase_if(ways_, [&](const auto& way) { return way.first == link; });
}

bool RouteReader::takeRoute(bool isThere, std::string_view payload) {
  const auto route = headOf<rtmsg>(payload);
  if (!route || route->rtm_dst_len != 0 || route->rtm_type != RTN_UNICAST ||
      (route->rtm_flags & RTM_F_CLONED) != 0) {
    return false;
  }
  const auto attributes = behind<rtmsg>(payload);
  const auto link = headOf<int>(netlink::attribute(attributes, RTA_OIF).value_or("")).value_or(0);
  std::string way{static_cast<char>(route->rtm_family), static_cast<char>(route->rtm_table)};
  for (const std::uint16_t type : {RTA_TABLE, RTA_GATEWAY, RTA_PRIORITY, RTA_MULTIPATH}) {
    way += netlink::attribute(attributes, type).value_or("");
    way += '/';
  }
  return isThere ? ways_.emplace(link, way).second : ways_.erase({link, way}) > 0;
}

RouteWatch::RouteWatch(boost::asio::io_context& context, std::function<void()> changed)
    : changed_(std::move(changed)),
      watch_(context, NETLINK_ROUTE, groups, [this](std::optional<std::string_view> messages) {
        if (!messages || reader_.read(*messages)) {
          changed_();
        }
      }) {}

}  // namespace quillmar::tunnel
