#include "sandbox/traffic.h"

#include <string>
#include <vector>

#include "sandbox/dns/rules.h"
#include "sandbox/world.h"

namespace quillmar::sandbox {

void browse(Database& database, Time now, Dice& dice) {
  struct Device {
    std::string id;
    std::string type;
  };
  std::vector<Device> online;
  database.each(
      "SELECT id, device_type FROM devices WHERE last_seen_at >= ? ORDER BY rowid",
      [&](Row row) {
        online.push_back({row.text(0), row.text(1)});
      },
      now - onlineFor);
  for (const auto& device : online) {
    for (int count = std::uniform_int_distribution{0, 3}(dice); count > 0; --count) {
      const auto [domain, type] = anyLookup(device.type, dice);
      logQuery(database, device.id, domain, type, isBlockedFor(database, device.id, domain), now);
    }
  }
}

}  // namespace quillmar::sandbox
