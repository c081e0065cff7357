#include "tests/tunnel/support/messages.h"

#include <ldns/ldns.h>

#include <cstdlib>
#include <memory>

namespace quillmar::tunnel::test {

std::string readByLdns(const std::string& message) {
  ldns_pkt* read = nullptr;
  if (ldns_wire2pkt(&read, reinterpret_cast<const std::uint8_t*>(message.data()), message.size()) !=
      LDNS_STATUS_OK) {
    return {};
  }
  const std::unique_ptr<ldns_pkt, void (*)(ldns_pkt*)> packet{read, &ldns_pkt_free};
  const std::unique_ptr<char, void (*)(void*)> text{ldns_pkt2str(packet.get()), &std::free};
  return text ? text.get() : "";
}

}  // namespace quillmar::tunnel::test
