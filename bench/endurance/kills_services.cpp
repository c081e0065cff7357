// Stand-in services that keep a family on the disk. A family is asked for what was confirmed to it.

#include <algorithm>
#include <csignal>
#include <map>
#include <set>

#include "bench/endurance/kills.h"
#include "sandbox/json.h"
#include "tests/sandbox/support/raw_connection.h"

namespace quillmar::endurance {
namespace {

namespace fs = std::filesystem;
using sandbox::Json;

constexpr int roundsOfALife = 4;
constexpr int livesOfAFolder = 25;

struct ServiceWorld {
  ServiceWorld();

  Session session;
  std::atomic<long> enrollments = 0;
  long calls = 0;
};

struct Reply {
  int status = 0;  // 0 if the service ended before it answered
  Json body{};
};

// A connection to one life of the service.
class Client {
 public:
  explicit Client(int port) : connection_(port) {}

  Reply ask(const std::string& method, const std::string& path, const std::string& token,
            const Json& body = {}) {
    const std::string text = body.is_null() ? "" : body.dump();
    connection_.send(method + " /api/v1" + path + " HTTP/1.1\r\nHost: localhost\r\n" +
                     (token.empty() ? "" : "Authorization: Bearer " + token + "\r\n") +
                     "Content-Type: application/json\r\nContent-Length: " + std::to_string(text.size()) +
                     "\r\n\r\n" + text);
    const std::string answer = connection_.readAnswer();
    const auto head = answer.find("\r\n\r\n");
    return {sandbox::test::statusOf(answer),
            head == std::string::npos ? Json() : Json::parse(answer.substr(head + 4), nullptr, false)};
  }

 private:
  sandbox::test::RawConnection connection_;
};

// What the service has confirmed, and what it was asked for without an answer.
class Family {
 public:
  // The family's next wishes. Stops where the service ends.
  void goOn(Client& client) { signIn(client) && check(client) && live(client); }

  std::size_t devices() const { return devices_.size(); }
  bool isChecked() const { return isChecked_; }
  void beginLife() { isChecked_ = false; }

 private:
  // The account exists whole or not at all.
  bool signIn(Client& client) {
    const Json account{{"email", "ann@example.com"},
                       {"password", "correct horse"},
                       {"name", "Ann"},
                       {"phone", "+61 400 000 000"}};
    auto reply = client.ask("POST", "/auth/register", "", account);
    if (reply.status == 409) {
      reply = client.ask("POST", "/auth/login", "", account);
    } else {
      require(reply.status == 0 || !isKnown_, "A confirmed account is lost.");
    }
    if (reply.status == 0) {
      return false;
    }
    require(reply.status < 300, "The account is half made: " + reply.body.dump());
    isKnown_ = true;
    token_ = reply.body.at("token");
    return true;
  }

  bool check(Client& client) {
    if (!open_.empty() && !complete(client)) {
      return false;
    }
    const auto reply = client.ask("GET", "/children", token_);
    if (reply.status == 0) {
      return false;
    }
    std::set<std::string> children;
    std::multiset<std::string> devices;
    for (const auto& child : reply.body.at("children")) {
      children.insert(child.at("id"));
      for (const auto& device : child.at("devices")) {
        devices.insert(device.at("id"));
      }
    }
    require(std::ranges::includes(children, children_), "A confirmed child is lost.");
    require(std::ranges::equal(devices, devices_), "The devices are not those that were confirmed.");
    for (const auto& child : children_) {
      if (!hasItsBlockedSites(client, child)) {
        return false;
      }
    }
    isChecked_ = true;
    return true;
  }

  bool hasItsBlockedSites(Client& client, const std::string& child) const {
    const auto reply = client.ask("GET", "/children/" + child, token_);
    if (reply.status == 0) {
      return false;
    }
    const std::string text = reply.body.dump();
    const auto wanted = blocked_.find(child);
    require(wanted == blocked_.end() || text.find('"' + wanted->second + '"') != std::string::npos,
            "A confirmed site is lost: " + text);
    return true;
  }

  bool live(Client& client) {
    for (int round = 0; round < roundsOfALife; ++round) {
      const auto child = client.ask("POST", "/children", token_, {{"name", "Mia"}});
      if (child.status == 0) {
        return false;
      }
      child_ = child.body.at("id");
      children_.insert(child_);
      const std::string site = "site" + std::to_string(children_.size()) + ".example";
      if (client.ask("POST", "/children/" + child_ + "/policy/block", token_, {{"domain", site}}).status ==
          0) {
        return false;
      }
      blocked_[child_] = site;
      const auto init = client.ask("POST", "/enrollment/init", "",
                                   {{"device_id", "x"}, {"device_name", "x"}, {"device_type", "ios"}});
      if (init.status == 0) {
        return false;
      }
      open_ = init.body.at("enrollment_code");
      openDevice_ = init.body.at("device_id");
      if (!complete(client) ||
          client.ask("POST", "/device/checkin", "", {{"device_id", openDevice_}}).status == 0) {
        return false;
      }
    }
    return true;
  }

  // Whether or not an earlier attempt was carried out, it is one device afterwards.
  bool complete(Client& client) {
    const auto reply =
        client.ask("POST", "/enrollment/complete", token_,
                   {{"enrollment_code", open_}, {"device_name", "Phone"}, {"child_id", child_}});
    if (reply.status == 0) {
      return false;
    }
    require(reply.status == 201 || reply.status == 409, "An enrollment is half done: " + reply.body.dump());
    open_.clear();
    devices_.insert(openDevice_);
    return true;
  }

  bool isKnown_ = false;
  bool isChecked_ = false;
  std::string token_;
  std::string child_;
  std::string open_;  // the code of an enrollment that is not confirmed
  std::string openDevice_;
  std::set<std::string> children_;
  std::multiset<std::string> devices_;
  std::map<std::string, std::string> blocked_;
};

class Service final : public Mortal {
 public:
  Service(ServiceWorld& world, Random random) : world_(world), random_(random) {}

  bool live() override {
    if (++lives_ % livesOfAFolder == 0) {
      conclude();
      family_ = {};
      data_ = world_.session.newFolder();
    }
    return letLive(killedAt(anyOf(world_.calls, random_)), SIGKILL) == -SIGKILL;
  }

  // All that was confirmed is there in the end.
  void conclude() override {
    const int status = letLive({}, SIGTERM);
    require(status == 0 && family_.isChecked(), "The service does not come back.");
  }

  long calls() {
    const CallCount count(world_.session);
    require(letLive(count.variables(), SIGTERM) == 0, "A service does not end well.");
    return count.read();
  }

 private:
  int letLive(const Variables& variables, int signal) {
    Program program({QUILLMAR_SANDBOX, "--port", "0", "--tls-port", "0", "--data", data_.string()},
                    world_.session.variables(variables));
    const std::string said = program.readUntil("quillmar-sandbox ");
    if (const auto port = between(said, "http://127.0.0.1:", ' '); !port.empty()) {
      Client client(std::stoi(port));
      family_.beginLife();
      const auto before = family_.devices();
      family_.goOn(client);
      world_.enrollments += static_cast<long>(family_.devices() - before);
    }
    const int status = program.end(signal);
    require(status == -SIGKILL || status == 0, "A service fails: " + said);
    return status;
  }

  ServiceWorld& world_;
  Random random_;
  fs::path data_ = world_.session.newFolder();
  Family family_;
  int lives_ = 0;
};

ServiceWorld::ServiceWorld() { calls = Service(*this, Random(1)).calls(); }

}  // namespace

Kind services() {
  const auto world = std::make_shared<ServiceWorld>();
  return {"Services",
          4,
          [world](Random random) { return std::make_unique<Service>(*world, random); },
          "enrollments confirmed in their lives",
          {world, &world->enrollments}};
}

}  // namespace quillmar::endurance
