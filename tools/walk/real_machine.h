#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "testing/machine/outside.h"

namespace quillmar {

// A child's computer in namespaces, with its own NetworkManager, message bus and tunnel program. The network
// beyond its card has the service and the parent's computer, and captures the packets that leave it.
class RealMachine {
 public:
  // Why this computer can't provide one; empty if it can.
  static std::string obstacle();
  // Runs `work` in a process of new namespaces, in which all processes end with it. Returns its exit status.
  // Call it before a second thread exists.
  static int around(const std::function<int()>& work);

  // Throws std::runtime_error with the name of the part that did not start.
  RealMachine();
  ~RealMachine();
  RealMachine(const RealMachine&) = delete;
  RealMachine& operator=(const RealMachine&) = delete;

  const std::string& service() const { return service_; }
  const std::string& caFile() const { return caFile_; }

  // Runs `work` in the parent's network; threads that it starts stay there.
  void atParents(const std::function<void()>& work) const;

  struct Ended {
    int status = -1;
    std::string output;
  };
  // Runs a program on the child's computer.
  static Ended run(const QString& program, const QStringList& words);
  // The IPv4 address that the system's resolver gives for a name; empty if there is none.
  static std::string lookUp(const std::string& name);
  // How long the tunnel keeps its answer for this name.
  static std::chrono::seconds lifeOf(const std::string& name);
  Ended runDoctor() const;

  // The packets to DNS ports that have left the computer, as "udp 53 NAME".
  std::vector<std::string> seenInClear();
  void forgetWhatWasSeen() { outside_->forget(); }
  // The number of TCP segments with data or a new connection that the computer has sent to the service.
  int sentToService() { return outside_->sentTo(servicePort); }
  bool seesNoConnection() { return outside_->seesAllEnd(servicePort); }

 private:
  static constexpr std::uint16_t servicePort = 8791;

  void startService();
  void startManager();
  void startTunnel();
  QProcess& start(const QString& program, const QStringList& words);

  const int childs_;  // the network namespaces
  int parents_ = -1;
  std::string service_;
  std::string caFile_;
  std::vector<std::unique_ptr<QProcess>> programs_;
  std::unique_ptr<machine::Outside> outside_;
};

}  // namespace quillmar
