#include "tools/walk/real_machine.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QProcessEnvironment>
#include <csignal>
#include <sstream>
#include <stdexcept>

#include "child/vpn_dns_manager.h"
#include "testing/machine/layout.h"
#include "ui/bridge/shown_text.h"

namespace quillmar {
namespace {

using ui::exactText;

// Reached only if something hangs.
constexpr int patience = 60'000;

constexpr const char* folder = "/run/quillmar";
constexpr const char* routerAddress = "10.9.9.1";
constexpr const char* routerAddress6 = "2001:db8:9::1";

constexpr const char* busConfiguration = R"(<busconfig><type>system</type>
<listen>unix:path=/run/dbus/system_bus_socket</listen><auth>EXTERNAL</auth>
<policy context="default"><allow user="*"/><allow own="*"/><allow send_destination="*"/>
<allow eavesdrop="true"/></policy>
<include>%1</include></busconfig>
)";

constexpr const char* managerConfiguration = R"([main]
plugins=keyfile
dns=default
no-auto-default=*
rc-manager=file
auth-polkit=false
[keyfile]
path=/run/quillmar/profiles
)";

constexpr const char* registration = R"([VPN Connection]
name=quillmar-tunnel
service=%1
program=/bin/false
)";

QString inFolder(const QString& name) { return QDir(folder).filePath(name); }

void writeFile(const QString& path, const QString& text) {
  QFile file(path);
  if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0 ||
      !file.setPermissions(QFile::ReadOwner | QFile::WriteOwner)) {
    throw std::runtime_error("a file can't be written: " + path.toStdString());
  }
}

bool succeeds(const QString& program, const QStringList& words) {
  return RealMachine::run(program, words).status == 0;
}

// Waits for a line that contains this text. If the program ends before, throws its output.
std::string await(QProcess& program, const char* text) {
  std::string said;
  while (program.canReadLine() || program.waitForReadyRead(patience)) {
    while (program.canReadLine()) {
      std::string line = program.readLine().trimmed().toStdString();
      if (line.find(text) != std::string::npos) {
        return line;
      }
      said += line + '\n';
    }
  }
  throw std::runtime_error(program.program().toStdString() + " does not start: " + said);
}

void sendMark(const char* address, int family, const std::string& token) {
  constexpr std::uint16_t markPort = 9;
  const int socket = ::socket(family, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  sockaddr_in6 to6{};
  to6.sin6_family = AF_INET6;
  to6.sin6_port = htons(markPort);
  inet_pton(AF_INET6, address, &to6.sin6_addr);
  sockaddr_in to4{};
  to4.sin_family = AF_INET;
  to4.sin_port = htons(markPort);
  inet_pton(AF_INET, address, &to4.sin_addr);
  const auto* to =
      family == AF_INET6 ? reinterpret_cast<const sockaddr*>(&to6) : reinterpret_cast<const sockaddr*>(&to4);
  ::sendto(socket, token.data(), token.size(), 0, to, family == AF_INET6 ? sizeof to6 : sizeof to4);
  ::close(socket);
}

int waitFor(pid_t process) {
  int status = 0;
  ::waitpid(process, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}

}  // namespace

std::string RealMachine::obstacle() {
  if (::geteuid() != 0) {
    return "A computer of its own takes root.";
  }
  const auto isMissing = [](const QStringList& words) { return !succeeds("unshare", words); };
  if (isMissing({"--net", "--mount", "--pid", "--fork", "--mount-proc", "true"})) {
    return "This computer allows no namespaces.";
  }
  if (isMissing({"--net", "nft", "list", "ruleset"})) {
    return "This computer has no nftables.";
  }
  if (isMissing({"--net", "ip", "tuntap", "add", "dev", "tun9", "mode", "tun"})) {
    return "This computer has no tun devices.";
  }
  return {};
}

int RealMachine::around(const std::function<int()>& work) {
  if (::unshare(CLONE_NEWNET | CLONE_NEWNS | CLONE_NEWPID) != 0) {
    return 1;
  }
  // The child is process 1 of the namespace; all others end with it.
  const pid_t process = ::fork();
  if (process != 0) {
    return waitFor(process);
  }
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr);
  ::mount("proc", "/proc", "proc", 0, nullptr);
  std::_Exit(work());
}

RealMachine::RealMachine() : childs_(::open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC)) {
  QProcess layingOut;
  layingOut.start("sh", {"-c", machine::layOut});
  if (!layingOut.waitForFinished(patience) || layingOut.exitCode() != 0) {
    throw std::runtime_error("the computer can't be laid out: " +
                             layingOut.readAllStandardError().toStdString());
  }
  parents_ = ::open("/run/netns/outside", O_RDONLY | O_CLOEXEC);
  for (const char* name : {"profiles", "state", "kept", "tmp"}) {
    QDir(folder).mkpath(name);
  }
  outside_ = std::make_unique<machine::Outside>("/run/netns/outside", "v1");
  startService();
  startManager();
  startTunnel();
}

RealMachine::~RealMachine() {
  for (const auto& program : programs_) {
    program->kill();
    program->waitForFinished(patience);
  }
  ::close(parents_);
  ::close(childs_);
}

void RealMachine::startService() {
  atParents([this] {
    auto& program = start(QUILLMAR_SANDBOX, {"--listen", routerAddress, "--port", "0", "--tls-port",
                                             QString::number(servicePort), "--memory", "--seed", "empty"});
    const auto line = await(program, "https://");
    service_ = "https://" + std::string(routerAddress) + ':' + std::to_string(servicePort);
    caFile_ = line.substr(line.find("ca=") + 3);
  });
}

void RealMachine::startManager() {
  QDir("/run").mkpath("dbus");
  writeFile(inFolder("bus.conf"), QString(busConfiguration).arg(QUILLMAR_TUNNEL_POLICY));
  await(start("dbus-daemon",
              {"--nofork", "--nopidfile", "--config-file=" + inFolder("bus.conf"), "--print-address"}),
        "unix:");
  writeFile(inFolder("manager.conf"), managerConfiguration);
  writeFile(inFolder("profiles/wire.nmconnection"), machine::wireProfile);
  writeFile("/etc/NetworkManager/VPN/quillmar-tunnel.name",
            QString(registration).arg(exactText(VPNDNSManager::tunnelBundleId)));
  // Nobody reads its output while it runs, so it goes to a file.
  start("sh", {"-c",
               "cd /run/quillmar; exec NetworkManager --debug --config manager.conf --config-dir state "
               "--intern-config intern.conf --state-file state.file --pid-file pid >log 2>&1"});
  if (!succeeds("nm-online", {"-q", "-s", "-t", "30"})) {
    throw std::runtime_error("NetworkManager does not start: " + run("tail", {inFolder("log")}).output);
  }
}

void RealMachine::startTunnel() {
  await(start(QUILLMAR_TUNNEL, {"run", "--ca-file", exactText(caFile_)}), "Has the name");
}

QProcess& RealMachine::start(const QString& program, const QStringList& words) {
  auto process = std::make_unique<QProcess>();
  auto environment = QProcessEnvironment::systemEnvironment();
  environment.insert("TMPDIR", inFolder("tmp"));
  environment.insert("STATE_DIRECTORY", inFolder("kept"));
  process->setProcessEnvironment(environment);
  process->setProcessChannelMode(QProcess::MergedChannels);
  process->start(program, words);
  return *programs_.emplace_back(std::move(process));
}

void RealMachine::atParents(const std::function<void()>& work) const {
  ::setns(parents_, CLONE_NEWNET);
  try {
    work();
  } catch (...) {
    ::setns(childs_, CLONE_NEWNET);
    throw;
  }
  ::setns(childs_, CLONE_NEWNET);
}

RealMachine::Ended RealMachine::run(const QString& program, const QStringList& words) {
  QProcess process;
  process.setStandardErrorFile(QProcess::nullDevice());
  process.start(program, words);
  const bool ended = process.waitForFinished(patience) && process.exitStatus() == QProcess::NormalExit;
  return {.status = ended ? process.exitCode() : -1, .output = process.readAllStandardOutput().toStdString()};
}

std::string RealMachine::lookUp(const std::string& name) {
  const auto found = run("getent", {"ahostsv4", exactText(name)}).output;
  return found.substr(0, found.find(' '));
}

std::chrono::seconds RealMachine::lifeOf(const std::string& name) {
  // The tunnel caches by question, so the flags must be those of getent's query.
  std::istringstream answer(
      run("kdig", {"@198.18.53.53", "+noadflag", "+noall", "+answer", exactText(name), "A"}).output);
  std::string owner;
  long seconds = 0;
  answer >> owner >> seconds;
  return std::chrono::seconds(seconds);
}

RealMachine::Ended RealMachine::runDoctor() const {
  return run(QUILLMAR_AGENT, {"doctor", "--data-dir", inFolder("agent"), "--service", exactText(service_),
                              "--ca-file", exactText(caFile_)});
}

std::vector<std::string> RealMachine::seenInClear() {
  return outside_->seenInClear([](const std::string& token) {
    sendMark(routerAddress, AF_INET, token);
    sendMark(routerAddress6, AF_INET6, token);
  });
}

}  // namespace quillmar
