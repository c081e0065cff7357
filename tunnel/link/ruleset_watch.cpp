#include "tunnel/link/ruleset_watch.h"

#include <linux/netfilter/nf_tables.h>
#include <linux/netfilter/nfnetlink.h>
#include <linux/netlink.h>

#include <utility>

#include "tunnel/link/netlink.h"
#include "tunnel/link/redirection.h"

namespace quillmar::tunnel {
namespace {

constexpr std::uint32_t nftablesGroup = 1U << (NFNLGRP_NFTABLES - 1U);

// The first attribute of tables, chains, rules and sets.
std::string_view tableOf(std::string_view payload) {
  if (payload.size() < sizeof(nfgenmsg)) {
    return {};
  }
  auto name = netlink::attribute(payload.substr(sizeof(nfgenmsg)), NFTA_TABLE_NAME).value_or("");
  return name.substr(0, name.find('\0'));
}

}  // namespace

std::vector<RulesetChange> RulesetReader::read(std::string_view notifications) {
  std::vector<RulesetChange> changes;
  netlink::visit(notifications, [&](std::uint16_t type, std::string_view payload) {
    if (type >> 8U != NFNL_SUBSYS_NFTABLES) {
      return;
    }
    if ((type & 0xffU) != NFT_MSG_NEWGEN) {  // the end of a transaction
      return take(type & 0xffU, tableOf(payload));
    }
    const auto [touched, made, released] = std::exchange(*this, {});
    if (released) {
      changes.push_back(RulesetChange::released);
    } else if (touched && !made) {
      changes.push_back(RulesetChange::redirectionTouched);
    }
  });
  return changes;
}

void RulesetReader::take(unsigned message, std::string_view table) {
  released_ = released_ || table == releaseTable;
  if (table == redirectionTable) {
    touched_ = true;
    made_ = made_ || message == NFT_MSG_NEWTABLE;
  }
}

RulesetWatch::RulesetWatch(boost::asio::io_context& context, Changed changed)
    : changed_(std::move(changed)),
      watch_(context, NETLINK_NETFILTER, nftablesGroup,
             [this](std::optional<std::string_view> messages) { read(messages); }) {}

void RulesetWatch::read(std::optional<std::string_view> messages) {
  if (!messages) {  // a lost message may have been about our table
    changed_(RulesetChange::redirectionTouched);
    return;
  }
  for (const auto change : reader_.read(*messages)) {
    changed_(change);
  }
}

}  // namespace quillmar::tunnel
