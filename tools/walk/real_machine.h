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

// A child's computer with a NetworkManager, a message bus and the tunnel program of its own. At the other end
// of its wire are the service, the parent, and whoever sees what leaves it.
class RealMachine {
 public:
  // Why it can't be had here; empty where it can.
  static std::string obstacle();
  // Does the work in namespaces of its own, which end with it and end all that it has started. Returns its
  // exit status. Call it before there is any thread.
  static int around(const std::function<int()>& work);

  // Throws std::runtime_error, which says what did not start.
  RealMachine();
  ~RealMachine();
  RealMachine(const RealMachine&) = delete;
  RealMachine& operator=(const RealMachine&) = delete;

  const std::string& service() const { return service_; }
  const std::string& caFile() const { return caFile_; }

  // Does it on the parent's computer; threads that begin there stay there.
  void atParents(const std::function<void()>& work) const;

  struct Ended {
    int status = -1;
    std::string output;
  };
  // A program on the child's computer.
  static Ended run(const QString& program, const QStringList& words);
  // The address that any program gets for a name; empty if it gets none.
  static std::string lookUp(const std::string& name);
  // How long that holds.
  static std::chrono::seconds lifeOf(const std::string& name);
  Ended runDoctor() const;

  // What has left the computer for a DNS port, as "udp 53 NAME".
  std::vector<std::string> seenInClear();
  void forgetWhatWasSeen() { outside_->forget(); }
  // How often the computer has said something to the service.
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
