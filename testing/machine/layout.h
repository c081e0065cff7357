#pragma once

namespace quillmar::machine {

// A shell script that prepares the current network and mount namespace for a NetworkManager without udev. The
// machine's network card is v0. Its peer v1 is in the network namespace "outside", which also has the
// addresses of other DNS servers that a user may configure. The script changes nothing outside the
// namespaces.
inline constexpr const char* layOut = R"(
set -e
mount --make-rprivate /
mount -t sysfs -o ro sysfs /sys
mount -t tmpfs -o mode=755 none /run
mount -t tmpfs none /var/lib/NetworkManager
mkdir -p /run/NetworkManager /run/etc/upper /run/etc/work
mount -t overlay overlay -o lowerdir=/etc,upperdir=/run/etc/upper,workdir=/run/etc/work /etc
mkdir -p /etc/NetworkManager/VPN
rm -f /etc/resolv.conf
sed -i /^quillmar-tunnel:/d /etc/passwd
echo 'hosts: files dns' >/etc/nsswitch.conf
for each in all default; do echo 0 >/proc/sys/net/ipv6/conf/$each/accept_dad; done
ip link set lo up
ip netns add outside
ip link add v0 type veth peer name v1 netns outside
ip link set v0 up
ip netns exec outside sh -ec '
  for each in all default v1; do echo 0 >/proc/sys/net/ipv6/conf/$each/accept_dad; done
  ip link set lo up; ip link set v1 up
  ip address add 10.9.9.1/24 dev v1; ip address add 192.0.2.53/32 dev lo
  ip -6 address add 2001:db8:9::1/64 dev v1; ip -6 address add fe80::1/64 dev v1
  ip -6 address add 2001:db8:53::53/128 dev lo'
)";

inline constexpr const char* wireProfile = R"([connection]
id=wire
uuid=11111111-2222-3333-4444-555555555555
type=ethernet
interface-name=v0
[ipv4]
method=manual
address1=10.9.9.2/24,10.9.9.1
dns=10.9.9.1;
[ipv6]
method=manual
address1=2001:db8:9::2/64,2001:db8:9::1
)";

}  // namespace quillmar::machine
