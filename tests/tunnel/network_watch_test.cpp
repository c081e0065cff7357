#include "tunnel/service/network_watch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/rtnetlink.h>
#include <net/if.h>

#include <string>

#include "tunnel/link/constants.h"
#include "tunnel/link/netlink.h"

namespace quillmar::tunnel {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;

std::string notification(std::uint16_t type, const std::string& payload) {
  std::string text;
  netlink::appendStruct(
      text, nlmsghdr{static_cast<std::uint32_t>(sizeof(nlmsghdr) + payload.size()), type, 0, 0, 0});
  return text + payload;
}

template <class T>
std::string bytesOf(const T& value) {
  std::string text;
  netlink::appendStruct(text, value);
  return text;
}

constexpr unsigned working = IFF_UP | IFF_RUNNING;

std::string link(int index, unsigned flags, const std::string& name = "eth0",
                 std::uint16_t message = RTM_NEWLINK) {
  ifinfomsg info{};
  info.ifi_index = index;
  info.ifi_flags = flags;
  auto payload = bytesOf(info);
  netlink::appendAttribute(payload, IFLA_IFNAME, name + '\0');
  return notification(message, payload);
}

struct Way {
  int link = 2;
  std::string gateway = "\x0a\x09\x09\x01"s;
  std::uint8_t prefix = 0;
  std::uint16_t message = RTM_NEWROUTE;
  std::uint8_t type = RTN_UNICAST;
  std::uint32_t flags = 0;
};
std::string route(const Way& way) {
  rtmsg head{};
  head.rtm_family = AF_INET;
  head.rtm_dst_len = way.prefix;
  head.rtm_table = RT_TABLE_MAIN;
  head.rtm_type = way.type;
  head.rtm_flags = way.flags;
  auto payload = bytesOf(head);
  netlink::appendAttribute(payload, RTA_OIF, bytesOf(way.link));
  netlink::appendAttribute(payload, RTA_GATEWAY, way.gateway);
  return notification(way.message, payload);
}

std::string addressGone(int index) {
  ifaddrmsg head{};
  head.ifa_index = static_cast<std::uint32_t>(index);
  return notification(RTM_DELADDR, bytesOf(head));
}

struct TunnelRoutes : testing::Test {
  RouteReader reader;
};

TEST_F(TunnelRoutes, change_when_a_link_is_back) {
  EXPECT_FALSE(reader.read(link(2, working))) << "as it was, for all that is known";
  EXPECT_FALSE(reader.read(link(2, working))) << "a search for radio networks, say";
  EXPECT_FALSE(reader.read(link(2, IFF_UP)));
  EXPECT_TRUE(reader.read(link(2, working)));
  EXPECT_FALSE(reader.read(link(2, working)));
  EXPECT_FALSE(reader.read(link(2, working, "eth0", RTM_DELLINK)));
  EXPECT_TRUE(reader.read(link(2, working)));
  EXPECT_TRUE(reader.read(link(2, IFF_UP) + link(2, working))) << "at once";
}

TEST_F(TunnelRoutes, do_not_lead_through_the_tunnel) {
  EXPECT_FALSE(reader.read(link(3, 0, deviceName)));
  EXPECT_FALSE(reader.read(link(3, working, deviceName)));
}

TEST_F(TunnelRoutes, change_with_another_default_route) {
  EXPECT_TRUE(reader.read(route({})));
  EXPECT_FALSE(reader.read(route({}))) << "said again";
  EXPECT_TRUE(reader.read(route({.gateway = "\x0a\x09\x09\x02"s})));
  EXPECT_TRUE(reader.read(route({.link = 4})));
  EXPECT_TRUE(reader.read(route({.message = RTM_DELROUTE})));
  EXPECT_FALSE(reader.read(route({.message = RTM_DELROUTE})));
  EXPECT_TRUE(reader.read(route({})));
}

TEST_F(TunnelRoutes, that_lead_no_further_do_not_matter) {
  EXPECT_FALSE(reader.read(route({.prefix = 24})));
  EXPECT_FALSE(reader.read(route({.type = RTN_BLACKHOLE})));
  EXPECT_FALSE(reader.read(route({.flags = RTM_F_CLONED})));
}

// The kernel does not report the removal of routes when their link or address goes.
TEST_F(TunnelRoutes, change_when_they_return_with_their_link) {
  EXPECT_TRUE(reader.read(route({})));
  EXPECT_FALSE(reader.read(addressGone(4)));
  EXPECT_FALSE(reader.read(route({})));
  EXPECT_FALSE(reader.read(addressGone(2)));
  EXPECT_TRUE(reader.read(route({})));
  EXPECT_FALSE(reader.read(link(2, 0)));
  EXPECT_TRUE(reader.read(route({})));
}

TEST_F(TunnelRoutes, are_read_from_complete_notifications_only) {
  const auto whole = route({});
  for (std::size_t size = 0; size < whole.size(); ++size) {
    RouteReader fresh;
    EXPECT_FALSE(fresh.read(std::string_view(whole).substr(0, size))) << size;
  }
  for (const auto type : {RTM_NEWLINK, RTM_NEWROUTE, RTM_DELADDR}) {
    EXPECT_FALSE(reader.read(notification(static_cast<std::uint16_t>(type), "ab")));
  }
}

struct TunnelSleep : testing::Test {
  boost::asio::io_context context;
  std::chrono::nanoseconds asleep = 5h;
  int woke = 0;
  SleepWatch watch{context, [this] { ++woke; }, [this] { return asleep; }};
};

TEST_F(TunnelSleep, is_reported_when_it_ends) {
  asleep += 8h;
  watch.look();
  EXPECT_EQ(woke, 1);
  watch.look();
  EXPECT_EQ(woke, 1);
}

TEST_F(TunnelSleep, is_not_reported_when_the_clock_was_set) {
  watch.look();
  asleep += 1ms;
  watch.look();
  EXPECT_EQ(woke, 0);
}

TEST_F(TunnelSleep, is_waited_for_without_waking_up) { EXPECT_EQ(context.poll(), 0U); }

TEST(TunnelTimeAsleep, is_not_of_the_future) {
  EXPECT_GE(timeAsleep(), -1ms);
  EXPECT_LE(timeAsleep(), std::chrono::seconds(::time(nullptr)));
}

}  // namespace
}  // namespace quillmar::tunnel
