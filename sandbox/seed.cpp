#include "sandbox/seed.h"

#include <array>
#include <string>
#include <vector>

#include "sandbox/browsing.h"
#include "sandbox/dns/rules.h"
#include "sandbox/secrets.h"
#include "sandbox/store/families.h"
#include "sandbox/store/policies.h"
#include "sandbox/world.h"

namespace quillmar::sandbox {
namespace {

using namespace std::chrono_literals;

struct DemoChild {
  const char* name;
  int age;
  bool isBlocked;
  std::vector<std::string> blocked;
  std::vector<std::string> allowed;
};

struct DemoDevice {
  const char* name;
  const char* type;
  const char* friendlyName;  // none: ""
  int child;                 // none: -1
  bool active;
  std::chrono::minutes seenAgo;
  int lookups;  // in the last day
};

const std::array children{
    DemoChild{"Mia", 13, false, {"ads.example", "streaming.example"}, {"learn.school.example"}},
    DemoChild{"Leo", 10, false, {"friends.example", "ads.example"}, {}},
    DemoChild{"Zoe", 7, true, {}, {"school.example", "wikipedia.example"}},
};

constexpr std::array demoDevices{
    DemoDevice{"iPhone", "ios", "Mia's Phone", 0, true, 0min, 320},
    DemoDevice{"Galaxy Tab", "tablet", "", 0, true, 95min, 140},
    DemoDevice{"Leo-PC", "windows", "Leo's Computer", 1, true, 1min, 260},
    DemoDevice{"PlayStation 5", "playstation", "", 1, true, 7h, 90},
    DemoDevice{"Zoe's iPad", "ios", "", 2, true, 2min, 110},
    DemoDevice{"Living Room TV", "smarttv", "", -1, true, 11h, 60},
    DemoDevice{"Old Pixel", "android", "", -1, false, 24h * 40, 0},
};

// Few queries at night, many in the afternoon; none after the device was last seen.
Time momentWithinDay(Time now, std::chrono::minutes seenAgo, Dice& dice) {
  const auto span = std::chrono::duration_cast<std::chrono::milliseconds>(24h);
  std::uniform_int_distribution<std::int64_t> ago{std::chrono::milliseconds{seenAgo}.count(),
                                                  span.count() - 1};
  Time moment = now - std::chrono::milliseconds{ago(dice)};
  const auto hourOf = [](Time time) {
    return (time - std::chrono::floor<std::chrono::days>(time)) / std::chrono::hours{1};
  };
  for (int attempt = 0; attempt < 4 && (hourOf(moment) < 7 || hourOf(moment) >= 21); ++attempt) {
    moment = now - std::chrono::milliseconds{ago(dice)};
  }
  return moment;
}

void setRules(Database& database, const std::string& childId, const DemoChild& child, Time now) {
  setPolicy(database, Owner::child, childId, child.isBlocked, child.isBlocked ? "whitelist" : "blacklist",
            now);
  for (const auto& site : child.blocked) {
    addDomain(database, Owner::child, childId, List::blocked, site, now);
  }
  for (const auto& site : child.allowed) {
    addDomain(database, Owner::child, childId, List::allowed, site, now);
  }
}

void addLogs(Database& database, const std::string& deviceId, const DemoDevice& device, Time now,
             Dice& dice) {
  std::vector<Time> moments;
  moments.reserve(std::size_t(device.lookups));
  for (int i = 0; i < device.lookups; ++i) {
    moments.push_back(momentWithinDay(now, device.seenAgo, dice));
  }
  std::ranges::sort(moments);
  for (const auto moment : moments) {
    const auto [domain, type] = anyLookup(device.type, dice);
    logQuery(database, deviceId, domain, type, isBlockedFor(database, deviceId, domain), moment);
  }
}

void addHomeNetwork(Database& database, const std::string& familyId, const std::string& parentId, Time now) {
  const auto id = newId();
  database.run(
      "INSERT INTO home_networks(id, family_id, parent_id, name, public_ip, is_active, created_at, "
      "updated_at) "
      "VALUES (?, ?, ?, 'Home Network', ?, 1, ?, ?)",
      id, familyId, parentId, publicAddress, now, now);
  addPolicy(database, Owner::homeNetwork, id, now);
  addDomain(database, Owner::homeNetwork, id, List::blocked, "ads.example", now);
}

void plantDemo(Database& database, Time now) {
  Dice dice{8790};
  const auto founded = now - 24h * 60;
  const auto ann = addAccount(database,
                              {.email = demoPrimaryEmail,
                               .password = demoPassword,
                               .name = "Ann Fielding",
                               .phone = "+61 412 345 678",
                               .region = "australia"},
                              founded);
  const auto family = addFamily(database, ann, founded);
  const auto ben = addAccount(
      database, {.email = demoMemberEmail, .password = demoPassword, .name = "Ben Fielding"}, founded + 24h);
  addMember(database,
            {.familyId = family,
             .parentId = ben,
             .displayName = "Ben Fielding",
             .invitedBy = ann,
             .canManagePolicies = false},
            founded + 24h);

  const int year{std::chrono::year_month_day{std::chrono::floor<std::chrono::days>(now)}.year()};
  std::vector<std::string> childIds;
  for (const auto& child : children) {
    childIds.push_back(addChild(
        database, {.familyId = family, .name = child.name, .birthYear = year - child.age}, founded + 48h));
    setRules(database, childIds.back(), child, founded + 48h);
  }
  for (const auto& device : demoDevices) {
    const auto childId = device.child < 0 ? std::nullopt : std::optional{childIds[std::size_t(device.child)]};
    const auto id = addDevice(
        database,
        {.familyId = family, .parentId = ann, .childId = childId, .name = device.name, .type = device.type},
        founded + 72h);
    addLogs(database, id, device, now, dice);
    database.run(
        "UPDATE devices SET friendly_name = nullif(?, ''), is_active = ?, last_seen_at = ? WHERE id = ?",
        device.friendlyName, device.active, now - device.seenAgo, id);
  }
  database.run(
      "INSERT INTO invitations(id, family_id, invite_code, invited_by, invitee_name, status, created_at, "
      "expires_at) "
      "VALUES (?, ?, ?, ?, 'Grandma', 'pending', ?, ?)",
      newId(), family, newCode(6), ann, now - 3h, now - 3h + invitationLifetime);
  addHomeNetwork(database, family, ann, founded + 96h);
}

}  // namespace

void plant(Seed seed, Database& database, Time now) {
  if (seed == Seed::demo) {
    plantDemo(database, now);
  }
}

}  // namespace quillmar::sandbox
