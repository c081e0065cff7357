// Agents that enrol, do the work, hand it over, check in and forget, each on a device of its own.

#include <csignal>
#include <map>

#include "bench/endurance/kills.h"
#include "programs/control/control_client.h"
#include "programs/control/lock_attempt.h"
#include "tests/programs/enrolled_device.h"

namespace quillmar::endurance {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds patience{30};

enum class Deed { enroll, work, handOver, sync, reset };

struct AgentWorld {
  AgentWorld();

  Session session;
  const std::unique_ptr<sandbox::Service> service = std::move(*sandbox::Service::start({}));
  std::map<Deed, long> calls;
  std::atomic<long> handOvers = 0;
};

class Agent final : public Mortal {
 public:
  Agent(AgentWorld& world, Random random) : world_(world), random_(random) {}

  void beEnrolled() { test::enrollDevice(*world_.service, data_); }

  bool live() override {
    const Stored before = stored();
    const Deed deed = before.isEnrolled ? anyDeed() : Deed::enroll;
    const auto program = start(deed, killedAt(anyOf(world_.calls.at(deed), random_)));
    const std::string said = perform(deed, *program);
    world_.handOvers += said.find("has taken over") == std::string::npos ? 0 : 1;
    const int status = program->end(endsByItself(deed) ? 0 : SIGKILL);
    require(status == -SIGKILL || status == 0, "An agent fails: " + said);
    judge(before, deed, said);
    succeed();
    return status == -SIGKILL;
  }

  // How many calls an agent makes that is not killed.
  long callsOf(Deed deed) {
    const CallCount count(world_.session);
    const auto program = start(deed, count.variables());
    const std::string said = perform(deed, *program);
    require(program->end(endsByItself(deed) ? 0 : SIGTERM) == 0, "An agent fails: " + said);
    return count.read();
  }

 private:
  static bool endsByItself(Deed deed) { return deed != Deed::work && deed != Deed::handOver; }

  Deed anyDeed() {
    constexpr std::array deeds{Deed::work, Deed::handOver, Deed::handOver, Deed::sync, Deed::reset};
    return deeds.at(std::uniform_int_distribution<std::size_t>(0, deeds.size() - 1)(random_));
  }

  std::unique_ptr<Program> start(Deed deed, const Variables& variables = {}) const {
    static const std::map<Deed, Words> commands{{Deed::enroll, {"enroll"}},
                                                {Deed::work, {"run"}},
                                                {Deed::handOver, {"run"}},
                                                {Deed::sync, {"sync"}},
                                                {Deed::reset, {"reset", "--yes"}}};
    Words words{QUILLMAR_AGENT, "--data-dir",          data_.string(),
                "--service",    world_.service->url(), "--simulate-tunnel"};
    const Words& command = commands.at(deed);
    words.insert(words.end(), command.begin(), command.end());
    return std::make_unique<Program>(words, world_.session.variables(variables));
  }

  // Plays the others' part. Returns what the agent said.
  std::string perform(Deed deed, Program& agent) const {
    switch (deed) {
      case Deed::enroll:
        return enroll(agent);
      case Deed::handOver:
        return handOver(agent);
      case Deed::work:
        return agent.readUntil("The service is reached.");
      case Deed::sync:
        return agent.readUntil("Checked in.");
      case Deed::reset:
        return agent.readUntil("has forgotten");
    }
    return {};
  }

  std::string enroll(Program& agent) const {
    std::string said = agent.readUntil("Enrollment Code: ");
    if (const auto code = between(said, "Enrollment Code: ", '\n'); !code.empty()) {
      require(world_.service->approve(code), "The service does not know a code.");
    }
    return said + agent.readUntil("This device is enrolled.");
  }

  std::string handOver(Program& agent) const {
    std::string said = agent.readUntil("The service is reached.");
    {
      const auto attempt = control::attemptLock(data_, {}, patience);
      require(attempt.lock.has_value(), "The lock can't be had: " + said);
    }
    return said + agent.readUntil("Looking after");
  }

  void judge(const Stored& before, Deed deed, const std::string& said) const {
    const Stored after = stored();
    const auto isSaid = [&said](const char* text) { return said.find(text) != std::string::npos; };
    require(after.isEnrolled || !isSaid("This device is enrolled."), "A confirmed enrollment is lost.");
    if (deed == Deed::reset) {
      require(!after.isEnrolled || !isSaid("has forgotten its enrollment"), "A confirmed reset is lost.");
    } else if (before.isEnrolled) {
      require(after.isEnrolled && after.device == before.device, "An enrollment is lost.");
    }
  }

  // Another takes its place, and can be asked.
  void succeed() const {
    const auto next = start(Deed::work);
    const bool isEnrolled = stored().isEnrolled;
    const std::string said = next->readUntil(isEnrolled ? "Looking after this device." : "Waiting for that.");
    const auto answer = control::ask(data_, {.operation = "status"}, patience);
    require(answer && answer->reply.worker == "agent" && answer->reply.device &&
                answer->reply.device->isEnrolled == isEnrolled,
            "The next agent can't be asked: " + said);
  }

  Stored stored() const { return storedIn(data_, *world_.service); }

  AgentWorld& world_;
  Random random_;
  const fs::path data_ = world_.session.newFolder();
};

AgentWorld::AgentWorld() {
  Agent device(*this, Random(1));
  for (const Deed deed : {Deed::enroll, Deed::work, Deed::handOver, Deed::sync, Deed::reset}) {
    calls[deed] = device.callsOf(deed);
  }
}

}  // namespace

// Most of an enrollment is the five seconds before its poll, so many go on side by side.
Kind agents() {
  const auto world = std::make_shared<AgentWorld>();
  const auto makeAgent = [world](Random random) {
    auto agent = std::make_unique<Agent>(*world, random);
    if (random() % 2 == 0) {
      agent->beEnrolled();
    }
    return agent;
  };
  return {"Agents", 24, makeAgent, "times that one handed its work over", {world, &world->handOvers}};
}

}  // namespace quillmar::endurance
