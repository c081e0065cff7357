#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "console/child_detail_view.h"
#include "tests/console/console_test.h"

namespace quillmar {

inline ChildPolicy makePolicy(bool isBlocked = false, std::vector<std::string> allowed = {},
                              std::vector<std::string> blocked = {}) {
  ChildPolicy policy;
  policy.id = "p1";
  policy.childId = "c1";
  policy.familyId = "f1";
  policy.isBlocked = isBlocked;
  policy.blockMode = "blacklist";
  policy.blockedDomains = std::move(blocked);
  policy.allowedDomains = std::move(allowed);
  policy.createdAt = policy.updatedAt = "2016-10-08T22:31:00Z";
  return policy;
}

// A query from this many seconds ago.
inline DNSLog makeLog(const std::string& domain, int secondsAgo, bool wasBlocked = false) {
  static std::int64_t nextId = 1;
  DNSLog log;
  log.id = nextId++;
  log.deviceId = "d1";
  log.parentId = "p1";
  log.domain = domain;
  log.queryType = "A";
  log.wasBlocked = wasBlocked;
  log.timestamp = formatISO8601(VirtualDispatch::defaultStart - std::chrono::seconds(secondsAgo));
  return log;
}

// The page of one child, presented by no other screen with requests or timers of its own.
struct ChildDetail : testing::Test {
  using Names = std::vector<std::string>;

  ChildDetail() {
    app.machine.settings.set(settings::authToken, std::string("token"));
    app.settle();
  }

  // Makes the screen without showing it.
  void make(const std::optional<std::int64_t>& birthYear = {}) {
    auto child = makeChild("c1", "Mia");
    child.birthYear = birthYear;
    screen = std::make_shared<ChildDetailView>(app.environment(), child, [this] {
      ++updates;
      order += "update ";
    });
    screen->setDismissHandler([this] {
      ++dismissals;
      order += "dismiss ";
    });
  }
  // Shows the screen and waits for the service's answer.
  void open(std::vector<Device> devices = {}, std::optional<ChildPolicy> policy = {}) {
    answerChild(std::move(devices), std::move(policy));
    make();
    screen->appear();
    app.settle();
  }
  void answerChild(std::vector<Device> devices, std::optional<ChildPolicy> policy = {}) {
    http().answerAlways("GET", "/children/c1", 200, childJson(std::move(devices), std::move(policy)));
  }
  static std::string childJson(std::vector<Device> devices, std::optional<ChildPolicy> policy) {
    auto child = makeChild("c1", "Mia", std::move(devices));
    child.policy = std::move(policy);
    return jsonOf(child);
  }
  void answerLogs(std::vector<DNSLog> logs, const std::string& device = "d1") {
    http().answerAlways("GET", "/devices/" + device + "/logs", 200, jsonOf(DNSLogsResponse{std::move(logs)}));
  }
  void answerPolicy(const std::string& method, const std::string& path, const ChildPolicy& policy) {
    http().answerAlways(method, "/children/c1/policy" + path, 200, jsonOf(policy));
  }
  std::size_t count(const std::string& method, const std::string& path) { return http().count(method, path); }
  // The bodies sent to this path, in order.
  Names bodies(const std::string& method, const std::string& path) {
    Names all;
    for (const auto& request : http().requests(method, path)) {
      all.push_back(request.body.value_or("none"));
    }
    return all;
  }
  Names policyCalls() { return bodies("PUT", "/children/c1/policy"); }
  ScriptedHttpSession& http() { return app.machine.http; }
  ChildDetailView& page() { return *screen; }
  void expectAlert(const std::string& text) {
    EXPECT_TRUE(page().errorAlert.isShown());
    EXPECT_EQ(page().errorAlert.message(), text);
  }

  template <class Row, class Text>
  static Names texts(const Rows<Row>& rows, Text text) {
    Names all;
    for (std::size_t i = 0; i < rows.size(); ++i) {
      all.push_back((rows[i].*text)());
    }
    return all;
  }

  TestApplication app{asParent()};
  std::shared_ptr<ChildDetailView> screen;
  int updates = 0;
  int dismissals = 0;
  std::string order;
};

}  // namespace quillmar
