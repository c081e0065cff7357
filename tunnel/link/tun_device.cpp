#include "tunnel/link/tun_device.h"

#include <fcntl.h>
#include <linux/if_link.h>
#include <linux/if_tun.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <system_error>

#include "tunnel/link/netlink.h"

namespace quillmar::tunnel {
namespace {

std::string reason(int error) { return std::system_category().message(error); }

}  // namespace

std::variant<TunDevice, std::string> openTunDevice(const std::string& name) {
  TunDevice device(::open("/dev/net/tun", O_RDWR | O_CLOEXEC | O_NONBLOCK));
  if (!device) {
    return "/dev/net/tun can't be opened: " + reason(errno);
  }
  ifreq request{};
  name.copy(request.ifr_name, sizeof request.ifr_name - 1);
  request.ifr_flags = IFF_TUN | IFF_NO_PI;
  if (::ioctl(device.get(), TUNSETIFF, &request) != 0) {
    return "the device " + name + " can't be made: " + reason(errno);
  }
  return device;
}

std::string removeDevice(const std::string& name) {
  std::string payload;
  netlink::appendStruct(payload, ifinfomsg{});
  netlink::appendAttribute(payload, IFLA_IFNAME, name + '\0');
  const int error = netlink::Requests(NETLINK_ROUTE).request(RTM_DELLINK, payload);
  return error == 0 || error == ENODEV ? std::string()
                                       : "the device " + name + " can't be removed: " + reason(error);
}

}  // namespace quillmar::tunnel
