// How soon a protected machine has DNS: after its network is back, after its worker was killed, and after
// NetworkManager has said `Connect`.
// The machine is a network namespace with a NetworkManager and a message bus of its own. Needs root and
// Debian's dnsdist, which is the endpoint.

#include <arpa/inet.h>
#include <net/if.h>
#include <poll.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "bench/program.h"
#include "sandbox/http/certificates.h"
#include "testing/machine/layout.h"

namespace quillmar::bench {
namespace {

using Clock = std::chrono::system_clock;  // the message bus's
using Milliseconds = std::chrono::duration<double, std::milli>;
using namespace std::chrono_literals;

constexpr int mostAtOnce = 3;
constexpr const char* outsideAddress = "10.9.9.1";
constexpr const char* thisMachine = "127.0.0.1";
constexpr const char* tunnelAddress = "198.18.53.53";
constexpr const char* profile = "Protection";
// Long enough for everybody to notice that the network is gone, and different each time.
constexpr auto shortestOutage = 200ms;
constexpr auto longerEachTime = 150ms;
constexpr std::chrono::duration<int, std::milli> betweenQuestions{1};
constexpr auto patience = 30s;

const fs::path folder = "/run/quillmar";

void run(const Command& command) {
  Program program(command, folder / "said");
  if (program.wait() != 0) {
    giveUp(command.front() + ": " + contents(folder / "said"));
  }
}

void await(const fs::path& output, const std::string& text) {
  const auto end = Clock::now() + patience;
  while (contents(output).find(text) == std::string::npos) {
    if (Clock::now() > end) {
      giveUp(output.string() + " never says “" + text + "”: " + contents(output));
    }
    std::this_thread::sleep_for(5ms);
  }
}

// A question for the addresses of one name, which some client repeats until it has an answer.
class Client {
 public:
  explicit Client(const std::string& name) : question_("\x12\x34\1\0\0\1\0\0\0\0\0\0", 12) {
    question_ += static_cast<char>(name.size());
    question_ += name + std::string("\7example\0\0\1\0\1", 13);
  }

  Clock::time_point askUntilAnswered() const {
    const int socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in server{};
    server.sin_family = AF_INET;
    server.sin_port = htons(53);
    ::inet_pton(AF_INET, tunnelAddress, &server.sin_addr);
    const auto end = Clock::now() + patience;
    while (Clock::now() < end) {
      ::sendto(socket, question_.data(), question_.size(), MSG_NOSIGNAL,
               reinterpret_cast<const sockaddr*>(&server), sizeof server);
      if (isAnswered(socket)) {
        ::close(socket);
        return Clock::now();
      }
    }
    giveUp("no answer");
  }

 private:
  // Until it is time for the next question.
  static bool isAnswered(int socket) {
    pollfd reading{socket, POLLIN, 0};
    std::array<char, 512> reply{};
    constexpr std::size_t answersAt = 7;
    return ::poll(&reading, 1, betweenQuestions.count()) == 1 &&
           ::recv(socket, reply.data(), reply.size(), 0) > 0 && reply[answersAt] == 1;
  }

  std::string question_;
};

// Sets the link state of one end of the wire: down is a pulled cable.
void switchWire(bool isOurEnd, const std::string& state) {
  Command command{"ip", "link", "set", isOurEnd ? "v0" : "v1", state};
  if (!isOurEnd) {
    command.insert(command.begin(), {"ip", "netns", "exec", "outside"});
  }
  run(command);
}

class Machine {
 public:
  Machine() {
    written("/tmp/layout", machine::layOut);
    if (Program({"sh", "/tmp/layout"}, "/tmp/said").wait() != 0) {
      giveUp("the machine can't be laid out: " + contents("/tmp/said"));
    }
    for (const char* name : {"profiles", "state", "kept"}) {
      fs::create_directories(folder / name);
    }
    startEndpoints();
    startManager();
    start({"env", "STATE_DIRECTORY=" + (folder / "kept").string(), QUILLMAR_TUNNEL, "run", "--ca-file",
           caFile_},
          "tunnel");
    await(folder / "tunnel", "Has the name");
    start({"stdbuf", "-oL", "dbus-monitor", "--system", "--profile",
           "type='method_call',interface='org.freedesktop.NetworkManager.VPN.Plugin'"},
          "bus");
    await(folder / "bus", "NameAcquired");
  }

  void protect(const std::string& endpoint) {
    writeProfile("protection",
                 "[connection]\nid=" + std::string(profile) +
                     "\nuuid=66666666-7777-8888-9999-000000000000\ntype=vpn\n"
                     "[vpn]\nservice-type=live.quillmar.quillmar.PacketTunnel\npersistent=true\n"
                     "dohEndpoint=https://" +
                     endpoint +
                     ":8443/dns-query\n[ipv4]\nmethod=auto\ndns-priority=-100\ndns-search=~.;\n"
                     "never-default=true\n[ipv6]\nmethod=auto\nnever-default=true\n");
    run({"nmcli", "connection", "load", (folder / "profiles/protection.nmconnection").string()});
    connect();
  }
  static void connect() { run({"nmcli", "connection", "up", profile}); }
  // NetworkManager tells the program after it has told nmcli.
  static void disconnect() {
    run({"nmcli", "connection", "down", profile});
    while (::if_nametoindex("quillmar0") != 0) {
      std::this_thread::sleep_for(1ms);
    }
  }

  // When NetworkManager called the program for the last time.
  static Clock::time_point lastConnect() {
    const auto said = contents(folder / "bus");
    // Or ConnectInteractive, for a person who could be asked.
    const auto call = said.rfind("\tConnect");
    const auto line = said.rfind("\nmc\t", call);
    if (call == std::string::npos || line == std::string::npos) {
      giveUp("nobody called the program: " + said);
    }
    const double seconds = std::strtod(said.c_str() + line + 4, nullptr);
    return Clock::time_point(
        std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds)));
  }

 private:
  void start(const Command& command, const std::string& output) {
    programs_.push_back(std::make_unique<Program>(command, folder / output));
  }

  static void writeProfile(const std::string& name, const std::string& text) {
    const auto path = folder / "profiles" / (name + ".nmconnection");
    written(path, text);
    fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write);
  }

  void startEndpoints() {
    const auto made = sandbox::certificatesIn(folder, outsideAddress);
    if (!made) {
      giveUp("no certificates");
    }
    caFile_ = made->authority.string();
    for (const std::string address : {outsideAddress, thisMachine}) {
      const auto settings =
          written(folder / (address + ".conf"),
                  "setSecurityPollSuffix('')\nsetLocal('" + address + ":25300')\naddDOHLocal('" + address +
                      ":8443', '" + made->certificate.string() + "', '" + made->key.string() +
                      "', '/dns-query')\naddAction(AllRule(), SpoofAction({'192.0.2.7'}, {ttl=60}))\n");
      Command command{"dnsdist", "--supervised", "--disable-syslog", "-C", settings};
      if (address == outsideAddress) {
        command.insert(command.begin(), {"ip", "netns", "exec", "outside"});
      }
      start(command, address);
    }
  }

  void startManager() {
    fs::create_directories("/run/dbus");
    const auto bus =
        written(folder / "bus.conf",
                "<busconfig><type>system</type><listen>unix:path=/run/dbus/system_bus_socket</listen>"
                "<auth>EXTERNAL</auth><policy context=\"default\"><allow user=\"*\"/><allow own=\"*\"/>"
                "<allow send_destination=\"*\"/><allow eavesdrop=\"true\"/></policy></busconfig>");
    start({"dbus-daemon", "--nofork", "--nopidfile", "--config-file=" + bus, "--print-address"}, "daemon");
    await(folder / "daemon", "unix:");
    written("/etc/NetworkManager/VPN/quillmar-tunnel.name",
            "[VPN Connection]\nname=quillmar-tunnel\nservice=live.quillmar.quillmar.PacketTunnel\n"
            "program=/bin/false\n");
    writeProfile("wire", machine::wireProfile);
    const auto settings = written(folder / "manager.conf",
                                  "[main]\nplugins=keyfile\ndns=default\nno-auto-default=*\nrc-manager=file\n"
                                  "auth-polkit=false\n[keyfile]\npath=/run/quillmar/profiles\n");
    start({"NetworkManager", "--debug", "--config", settings, "--config-dir", (folder / "state").string(),
           "--intern-config", (folder / "intern.conf").string(), "--state-file",
           (folder / "state.file").string(), "--pid-file", (folder / "pid").string()},
          "manager");
    run({"nm-online", "-q", "-s", "-t", "30"});
  }

  std::string caFile_;
  std::vector<std::unique_ptr<Program>> programs_;
};

// Of a client that asks all the while.
Milliseconds answeredAfterOutage(int round) {
  const bool isOurEnd = round % 2 == 0;
  switchWire(isOurEnd, "down");
  Clock::time_point back;
  std::jthread returning([&] {
    std::this_thread::sleep_for(shortestOutage + round * longerEachTime);
    back = Clock::now();
    switchWire(isOurEnd, "up");
  });
  const auto answered = Client("back" + std::to_string(round)).askUntilAnswered();
  returning.join();
  return answered - back;
}

Milliseconds answeredAfterConnect(int round) {
  Machine::disconnect();
  std::jthread connecting([] { Machine::connect(); });
  const auto answered = Client("connected" + std::to_string(round)).askUntilAnswered();
  connecting.join();
  return answered - Machine::lastConnect();
}

Milliseconds answeredAfterDeath(int round) {
  const auto death = Clock::now();
  run({"pkill", "-KILL", "-x", "quillmar-worker"});
  return Client("killed" + std::to_string(round)).askUntilAnswered() - death;
}

void print(const char* what, const std::function<Milliseconds(int)>& measure, int rounds = 20) {
  std::vector<Milliseconds> times;
  for (int round = 0; round < rounds; ++round) {
    times.push_back(measure(round));
  }
  std::ranges::sort(times);
  std::printf("%s: %.0f ms at least, %.0f the median, %.0f at most, of %d times\n", what,
              times.front().count(), times[times.size() / 2].count(), times.back().count(), rounds);
}

int measure() {
  Machine machine;
  machine.protect(outsideAddress);
  Client("first").askUntilAnswered();
  print("from the network's return to the first answer", answeredAfterOutage);
  // One that dies again and again is not started again at once.
  print("from the worker's death to the first answer", answeredAfterDeath, mostAtOnce);
  Machine::disconnect();
  machine.protect(thisMachine);
  print("from Connect to the first answer", answeredAfterConnect);
  return 0;
}

// In namespaces that end with it and end all that it has started.
int measureOnOwnMachine() {
  if (::unshare(CLONE_NEWNET | CLONE_NEWNS | CLONE_NEWPID) != 0) {
    giveUp("no namespaces");
  }
  const pid_t process = ::fork();
  if (process != 0) {
    int status = 0;
    ::waitpid(process, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
  }
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr);
  ::mount("proc", "/proc", "proc", 0, nullptr);
  ::mount("tmpfs", "/tmp", "tmpfs", 0, nullptr);
  std::quick_exit(measure());
}

}  // namespace
}  // namespace quillmar::bench

int main() {
  using namespace quillmar::bench;
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  if (::geteuid() != 0 || !isInstalled("dnsdist")) {
    std::puts("This takes root, and dnsdist.");
    return 0;
  }
  return measureOnOwnMachine();
}
