#include "tunnel/link/flows.h"

#include <arpa/inet.h>
#include <linux/netfilter/nfnetlink.h>
#include <linux/netfilter/nfnetlink_conntrack.h>
#include <linux/netlink.h>

#include <cerrno>
#include <cstring>
#include <system_error>
#include <vector>

#include "tunnel/link/netlink.h"

namespace quillmar::tunnel {
namespace {

using netlink::attribute;

constexpr std::uint16_t messageType(unsigned message) {
  return static_cast<std::uint16_t>(NFNL_SUBSYS_CTNETLINK << 8U | message);
}

nfgenmsg ofFamily(std::uint8_t family) { return {family, NFNETLINK_V0, 0}; }

bool isDns(std::string_view originalTuple) {
  const auto protocol = attribute(originalTuple, CTA_TUPLE_PROTO);
  const auto port = protocol ? attribute(*protocol, CTA_PROTO_DST_PORT) : std::nullopt;
  if (!port || port->size() != sizeof(std::uint16_t)) {
    return false;
  }
  std::uint16_t number = 0;
  std::memcpy(&number, port->data(), sizeof number);
  constexpr std::uint16_t dns = 53;
  constexpr std::uint16_t dnsOverTls = 853;
  return ntohs(number) == dns || ntohs(number) == dnsOverTls;
}

// The request to delete a flow.
std::string deletionOf(std::string_view flow) {
  std::string payload;
  netlink::appendStruct(payload, ofFamily(static_cast<std::uint8_t>(flow.front())));
  const auto attributes = flow.substr(sizeof(nfgenmsg));
  for (const std::uint16_t type : {CTA_TUPLE_ORIG, CTA_ZONE, CTA_ID}) {
    if (const auto value = attribute(attributes, type)) {
      const bool isNested = type == CTA_TUPLE_ORIG;
      netlink::appendAttribute(payload, isNested ? static_cast<std::uint16_t>(type | NLA_F_NESTED) : type,
                               *value);
    }
  }
  return payload;
}

}  // namespace

std::string forgetDnsFlows() {
  netlink::Requests requests(NETLINK_NETFILTER);
  std::vector<std::string> deletions;
  std::string all;
  netlink::appendStruct(all, ofFamily(AF_UNSPEC));
  int error = requests.dump(messageType(IPCTNL_MSG_CT_GET), all, [&](std::uint16_t, std::string_view flow) {
    const auto tuple = flow.size() > sizeof(nfgenmsg)
                           ? attribute(flow.substr(sizeof(nfgenmsg)), CTA_TUPLE_ORIG)
                           : std::nullopt;
    if (tuple && isDns(*tuple)) {
      deletions.push_back(deletionOf(flow));
    }
  });
  for (const auto& deletion : deletions) {
    const int failed = requests.request(messageType(IPCTNL_MSG_CT_DELETE), deletion);
    if (failed != 0 && failed != ENOENT) {  // the flow has ended meanwhile
      error = failed;
    }
  }
  return error == 0 ? std::string()
                    : "existing flows are not redirected: " + std::system_category().message(error);
}

}  // namespace quillmar::tunnel
