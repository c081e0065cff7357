// Windows that take the work from an agent, and the application without its pixels, which enrols.

#include <csignal>
#include <thread>

#include "bench/endurance/kills.h"
#include "programs/control/control_client.h"
#include "tests/programs/enrolled_device.h"

namespace quillmar::endurance {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr auto longestGap = 10s;

struct WindowWorld {
  WindowWorld();

  Session session;
  const std::unique_ptr<sandbox::Service> service = std::move(*sandbox::Service::start({}));
  std::atomic<long> takings = 0;
  long callsOfWindow = 0;
  long callsOfEnrollment = 0;

  Words words(const std::string& program, const fs::path& data, const Words& more) const {
    Words all{program, "--data-dir", data.string(), "--service", service->url()};
    all.insert(all.end(), more.begin(), more.end());
    return all;
  }
};

// Lives as a window beside an agent, or as an enrollment, by turns.
class Window final : public Mortal {
 public:
  Window(WindowWorld& world, Random random) : world_(world), random_(random) {
    test::enrollDevice(*world_.service, data_);
    agent_ = start(QUILLMAR_AGENT, data_, {"--simulate-tunnel", "run"});
    agent_->readUntil("The service is reached.");
  }

  bool live() override {
    isEnrollmentsTurn_ = !isEnrollmentsTurn_;
    return isEnrollmentsTurn_ ? enroll() : takeOver();
  }

  long callsOfWindow() {
    const CallCount count(world_.session);
    const auto window = start(QUILLMAR_PROGRAM, data_, {"--simulate-tunnel"}, count.variables());
    window->readUntil("checkin - status: 200");
    require(window->end(SIGTERM) == 0, "A window does not end well.");
    return count.read();
  }

  long callsOfEnrollment() {
    const CallCount count(world_.session);
    const auto driver =
        start(QUILLMAR_DRIVER, world_.session.newFolder(), {"--clock", "virtual"}, count.variables());
    require(enrollBy(*driver), "A device is not enrolled.");
    driver->endInput();
    require(driver->end(0) == 0, "A driver fails.");
    return count.read();
  }

 private:
  std::unique_ptr<Program> start(const std::string& program, const fs::path& data, const Words& more,
                                 const Variables& variables = {}) const {
    return std::make_unique<Program>(world_.words(program, data, more), world_.session.variables(variables));
  }

  bool takeOver() {
    const Stored before = storedIn(data_, *world_.service);
    const auto window =
        start(QUILLMAR_PROGRAM, data_, {"--simulate-tunnel"}, killedAt(anyOf(world_.callsOfWindow, random_)));
    window->readUntil("checkin - status: 200");
    require(window->end(SIGKILL) == -SIGKILL, "A window ends by itself.");
    awaitAgent();
    const Stored after = storedIn(data_, *world_.service);
    require(after.isEnrolled && after.device == before.device, "An enrollment is lost.");
    return true;
  }

  void awaitAgent() {
    const auto until = std::chrono::steady_clock::now() + longestGap;
    for (;;) {
      const auto answer = control::ask(data_, {.operation = "status"}, longestGap);
      if (answer && answer->reply.worker == "agent") {
        break;
      }
      require(std::chrono::steady_clock::now() < until, "The agent does not take over: " + agent_->readAll());
      std::this_thread::sleep_for(1ms);
    }
    world_.takings += agent_->readAll().find("has taken over") == std::string::npos ? 0 : 1;
  }

  bool enroll() {
    const fs::path data = world_.session.newFolder();
    const auto driver = start(QUILLMAR_DRIVER, data, {"--clock", "virtual"},
                              killedAt(anyOf(world_.callsOfEnrollment, random_)));
    const bool isConfirmed = enrollBy(*driver);
    const int status = driver->end(SIGKILL);
    const bool isKept = storedIn(data, *world_.service).isEnrolled;
    require(isKept || !isConfirmed, "A confirmed enrollment is lost.");
    // The next program continues an enrollment, or begins it again.
    const auto next = start(QUILLMAR_DRIVER, data, {"--clock", "virtual"});
    require(isKept ? isEnrolledIn(*next) : enrollBy(*next), "What is left can't be gone on with.");
    return status == -SIGKILL;
  }

  static std::string ask(Program& driver, const std::string& request) {
    driver.say(R"({"id":7,)" + request + '}');
    return driver.readUntil("{\"id\":7");
  }

  static bool isEnrolledIn(Program& driver) {
    return ask(driver, R"("op":"settings")").find(R"("child_isEnrolled":{"type":"bool","value":true})") !=
           std::string::npos;
  }

  // As a person would. True if the application says so in the end.
  bool enrollBy(Program& driver) const {
    ask(driver, R"("op":"act","screen":"RoleSelectionView","row":"cards/child","action":"action")");
    ask(driver, R"("op":"settle")");
    ask(driver, R"("op":"act","screen":"ChildEnrollmentView","action":"startEnrollment")");
    ask(driver, R"("op":"settle")");
    const auto code = between(ask(driver, R"("op":"screens")"), R"("enrollmentCode":")", '"');
    if (!code.empty()) {
      require(world_.service->approve(code), "The service does not know a code.");
    }
    ask(driver, R"("op":"advance","seconds":5)");
    ask(driver, R"("op":"settle")");
    return isEnrolledIn(driver);
  }

  WindowWorld& world_;
  Random random_;
  const fs::path data_ = world_.session.newFolder();
  std::unique_ptr<Program> agent_;
  bool isEnrollmentsTurn_ = false;
};

WindowWorld::WindowWorld() {
  Window window(*this, Random(1));
  callsOfWindow = window.callsOfWindow();
  callsOfEnrollment = window.callsOfEnrollment();
}

}  // namespace

Kind windows() {
  const auto world = std::make_shared<WindowWorld>();
  return {"Windows",
          4,
          [world](Random random) { return std::make_unique<Window>(*world, random); },
          "times that one had taken the work over",
          {world, &world->takings}};
}

}  // namespace quillmar::endurance
