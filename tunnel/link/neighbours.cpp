#include "tunnel/link/neighbours.h"

#include <linux/neighbour.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>

#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "tunnel/link/netlink.h"

namespace quillmar::tunnel {
namespace {

// The request to delete an entry; nothing where the neighbour has answered.
std::optional<std::string> deletionIfUnanswered(std::string_view entry) {
  ndmsg head{};
  if (entry.size() < sizeof head) {
    return std::nullopt;
  }
  std::memcpy(&head, entry.data(), sizeof head);
  const auto address = netlink::attribute(entry.substr(sizeof head), NDA_DST);
  if (!address || (head.ndm_state & (NUD_INCOMPLETE | NUD_FAILED)) == 0) {
    return std::nullopt;
  }
  std::string request;
  netlink::appendStruct(request, head);
  netlink::appendAttribute(request, NDA_DST, *address);
  return request;
}

}  // namespace

void forgetUnansweredNeighbours() {
  netlink::Requests requests(NETLINK_ROUTE);
  std::vector<std::string> deletions;
  std::string all;
  netlink::appendStruct(all, ndmsg{});
  requests.dump(RTM_GETNEIGH, all, [&](std::uint16_t type, std::string_view entry) {
    if (auto deletion = deletionIfUnanswered(entry); deletion && type == RTM_NEWNEIGH) {
      deletions.push_back(std::move(*deletion));
    }
  });
  for (const auto& deletion : deletions) {
    requests.request(RTM_DELNEIGH, deletion);
  }
}

}  // namespace quillmar::tunnel
