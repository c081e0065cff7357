#include "tools/walk/real_walk.h"

#include <QEventLoop>
#include <QTimer>
#include <algorithm>
#include <utility>

#include "child/vpn_dns_manager.h"
#include "ui/bridge/shown_text.h"

namespace quillmar {

using namespace std::chrono_literals;
using machine::Outside;
using ui::exactText;

RealWalk::RealWalk(RealMachine& machine, ui::UiStage& parent, std::unique_ptr<ui::UiStage> child,
                   const QDir& directory)
    : Walk(parent, *child, directory), machine_(machine), childStage_(std::move(child)) {}

bool RealWalk::begin() {
  const std::string name = "www.before.example";
  const auto address = RealMachine::lookUp(name);
  return tell(address == Outside::answer && std::ranges::count(machine_.seenInClear(), "udp 53 " + name) > 0,
              "child: getent www.before.example → " + exactText(address),
              "Without protection a question goes out in clear, and is seen on the wire");
}

bool RealWalk::atParents(const std::function<bool()>& work) {
  bool succeeds = false;
  machine_.atParents([&] { succeeds = work(); });
  return succeeds;
}

bool RealWalk::switchOn() {
  auto& application = child().stage.application;
  child().stage.advance(6s);
  const bool isOn = application.machine.dispatch.settleUntil([&] { return application.vpn().isConnected(); });
  machine_.seenInClear();  // waits for earlier packets
  machine_.forgetWhatWasSeen();
  child().stage.settle();
  return tell(isOn, "child: NetworkManager has switched the tunnel on",
              "The device has heard of its enrollment, and asks its endpoint from now on") &&
         see(child(), "Internet Protection Active", "The device is protected") && examine();
}

bool RealWalk::examine() {
  const auto doctor = machine_.runDoctor();
  return tell(
      doctor.status == 0,
      "child: quillmar-agent doctor" + (doctor.status == 0 ? QString() : "\n" + exactText(doctor.output)),
      "Nothing is missing: names go through the tunnel, whatever server is asked");
}

bool RealWalk::finds(const std::string& name, bool isThere, const QString& meaning) {
  const auto address = RealMachine::lookUp(name);
  const auto result = address.empty() ? QStringLiteral("nothing") : exactText(address);
  return tell(address.empty() != isThere && address != Outside::answer,
              QStringLiteral("child: getent %1 → %2").arg(exactText(name), result), meaning);
}

bool RealWalk::ask(const std::string& name) {
  return finds(name, true, "A program finds the name, by way of the endpoint");
}

// Passes real time, while the windows run. A coarse timer may expire seconds early.
void RealWalk::pass(std::chrono::seconds time) {
  QEventLoop loop;
  QTimer timer;
  timer.setTimerType(Qt::PreciseTimer);
  timer.setSingleShot(true);
  QObject::connect(&timer, &QTimer::timeout, &loop, &QEventLoop::quit);
  timer.start(time);
  loop.exec();
}

// A cached answer stays valid for at most a minute.
bool RealWalk::askForBlocked(const std::string& name) {
  const auto life = RealMachine::lifeOf(name);
  if (!tell(life > 0s && life <= 60s,
            QStringLiteral("child: the last answer is good for %1 s more").arg(life.count()),
            "A block acts within a minute")) {
    return false;
  }
  pass(life + 1s);
  return finds(name, false, "It is blocked: no program finds it any more");
}

bool RealWalk::end() { return keptToItself() && disconnect() && isSilent(); }

bool RealWalk::keptToItself() {
  QString seen;
  for (const auto& each : machine_.seenInClear()) {
    seen += exactText(each) + "; ";
  }
  return tell(seen.isEmpty() && machine_.sentToService() > 0,
              "wire: " + (seen.isEmpty() ? QStringLiteral("no question in clear") : seen),
              "All that the protected device asked went to its endpoint, over TLS");
}

bool RealWalk::disconnect() {
  childStage_.reset();  // its background work would connect again
  const QString name = exactText(VPNDNSManager::localizedDescription);
  const bool isDown = RealMachine::run("nmcli", {"connection", "down", name}).status == 0;
  return tell(isDown && machine_.seesNoConnection(), "child: nmcli connection down",
              "An administrator switches the tunnel off, and it hangs up") &&
         tell(RealMachine::run("nft", {"list", "ruleset"}).output.empty() &&
                  RealMachine::run("ip", {"link", "show", "quillmar0"}).status != 0,
              "child: nft list ruleset, ip link", "Its rules and its device are gone");
}

bool RealWalk::isSilent() {
  const int before = machine_.sentToService();
  const std::string name = "www.after.example";
  const auto address = RealMachine::lookUp(name);
  parent().stage.advance(60s);
  return tell(address == Outside::answer && std::ranges::count(machine_.seenInClear(), "udp 53 " + name) > 0,
              "child: getent www.after.example → " + exactText(address),
              "Names are asked as they were before") &&
         tell(machine_.sentToService() == before, "wire: nothing more goes to the service",
              "The tunnel is silent");
}

}  // namespace quillmar
