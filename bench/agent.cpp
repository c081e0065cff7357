// The memory of quillmar-agent after a check-in and its time from exec to the first sent byte, against a
// minimal process with libcurl and SQLite. Both check in over TLS with the same trusted certificates. With a
// number of seconds as argument, also measures the idle agent.

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "bench/against_service.h"
#include "client/enrollment_calls.h"
#include "client/network_service.h"
#include "client/records/enrollment.h"
#include "foundation/json_decode.h"
#include "foundation/text.h"
#include "platform/common/curl_http_session.h"
#include "platform/common/file_descriptor.h"
#include "platform/common/sqlite_settings_store.h"
#include "platform/settings.h"
#include "testing/temporary_directory.h"

extern char** environ;

namespace quillmar::bench {
namespace {

using Clock = std::chrono::steady_clock;
using Command = std::vector<std::string>;
namespace fs = std::filesystem;

constexpr int rounds = 21;

sockaddr_in loopback(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

int portOf(const std::string& url) { return std::stoi(url.substr(url.rfind(':') + 1)); }

// A TCP proxy between the client and the service that sees TLS records but not their content.
class Watcher {
 public:
  explicit Watcher(int servicePort)
      : servicePort_(servicePort), listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    const auto any = loopback(0);
    sockaddr_in bound{};
    socklen_t size = sizeof bound;
    if (::bind(listener_.get(), reinterpret_cast<const sockaddr*>(&any), sizeof any) != 0 ||
        ::listen(listener_.get(), 8) != 0 ||
        ::getsockname(listener_.get(), reinterpret_cast<sockaddr*>(&bound), &size) != 0) {
      giveUp("no port to listen on");
    }
    url = "https://127.0.0.1:" + std::to_string(ntohs(bound.sin_port));
  }

  // Forwards one exchange with the next client. Returns when the client's first encrypted record arrived.
  Clock::time_point passOn() {
    client_ = FileDescriptor(::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
    service_ = FileDescriptor(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const auto address = loopback(servicePort_);
    if (::connect(service_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
      giveUp("no service");
    }
    records_.clear();
    Clock::time_point encrypted{};
    while (encrypted == Clock::time_point()) {
      const auto [fromClient, fromService] = awaitInput();
      if (fromService) {
        forward(service_, client_);
      }
      if (fromClient) {
        records_ += forward(client_, service_);
        encrypted = hasEncryptedRecord() ? Clock::now() : Clock::time_point();
      }
    }
    return encrypted;
  }

  // Keeps forwarding until the client ends or `until` is readable.
  void serve(const int& until) {
    pollfd all[] = {{client_.get(), POLLIN, 0}, {service_.get(), POLLIN, 0}, {until, POLLIN, 0}};
    while (::poll(all, std::size(all), -1) > 0 && all[2].revents == 0) {
      if ((all[0].revents != 0 && forward(client_, service_).empty()) ||
          (all[1].revents != 0 && forward(service_, client_).empty())) {
        return;
      }
    }
  }

  std::string url;

 private:
  std::pair<bool, bool> awaitInput() const {
    pollfd both[] = {{client_.get(), POLLIN, 0}, {service_.get(), POLLIN, 0}};
    ::poll(both, std::size(both), -1);
    return {both[0].revents != 0, both[1].revents != 0};
  }

  static std::string forward(const FileDescriptor& from, const FileDescriptor& to) {
    std::array<char, 16384> buffer{};
    const auto size = ::recv(from.get(), buffer.data(), buffer.size(), 0);
    if (size <= 0 || ::send(to.get(), buffer.data(), static_cast<std::size_t>(size), MSG_NOSIGNAL) != size) {
      return {};
    }
    return {buffer.data(), static_cast<std::size_t>(size)};
  }

  bool hasEncryptedRecord() const {
    constexpr char applicationData = 0x17;
    constexpr std::size_t header = 5;
    for (std::size_t at = 0; at + header <= records_.size();) {
      if (records_[at] == applicationData) {
        return true;
      }
      const auto high = static_cast<unsigned char>(records_[at + 3]);
      const auto low = static_cast<unsigned char>(records_[at + 4]);
      at += header + high * 256U + low;
    }
    return false;
  }

  const int servicePort_;
  const FileDescriptor listener_;
  FileDescriptor client_;
  FileDescriptor service_;
  std::string records_;
};

// A process with piped standard output, killed by the destructor.
class Program {
 public:
  explicit Program(Command command) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
      giveUp("no pipe");
    }
    output_ = FileDescriptor(ends[0]);
    const FileDescriptor inside(ends[1]);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, inside.get(), STDOUT_FILENO);
    std::vector<char*> arguments;
    for (std::string& word : command) {
      arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    start = Clock::now();
    if (posix_spawn(&process_, arguments.front(), &actions, nullptr, arguments.data(), environ) != 0) {
      giveUp("can't start " + command.front());
    }
    posix_spawn_file_actions_destroy(&actions);
  }
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;
  ~Program() {
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
  }

  int output() const { return output_.get(); }
  bool says(const std::string& text) {
    std::array<char, 512> buffer{};
    const auto size = ::read(output_.get(), buffer.data(), buffer.size());
    if (size <= 0) {
      giveUp("a program ended too early");
    }
    said_.append(buffer.data(), static_cast<std::size_t>(size));
    return said_.find(text) != std::string::npos;
  }

  // The number after `name` in /proc/PID/FILE.
  double number(const std::string& file, const std::string& name) const {
    std::ifstream in("/proc/" + std::to_string(process_) + '/' + file);
    for (std::string word; in >> word;) {
      if (double value = 0; word == name + ':' && in >> value) {
        return value;
      }
    }
    return 0;
  }
  double processorSeconds() const {
    std::ifstream in("/proc/" + std::to_string(process_) + "/stat");
    const std::string text{std::istreambuf_iterator<char>(in), {}};
    std::string word;
    std::vector<std::string> fields;
    std::istringstream rest(text.substr(text.rfind(')') + 2));
    while (rest >> word) {
      fields.push_back(word);
    }
    return (std::stod(fields[11]) + std::stod(fields[12])) / static_cast<double>(::sysconf(_SC_CLK_TCK));
  }
  // Context switches of all threads.
  double wakeUps() const {
    double sum = 0;
    for (const auto& thread : fs::directory_iterator("/proc/" + std::to_string(process_) + "/task")) {
      sum += number("task/" + thread.path().filename().string() + "/status", "voluntary_ctxt_switches");
    }
    return sum;
  }

  Clock::time_point start;

 private:
  pid_t process_ = -1;
  FileDescriptor output_;
  std::string said_;
};

struct Figures {
  std::vector<double> milliseconds;
  std::vector<double> resident;
  std::vector<double> proportional;
  std::vector<double> own;
};

double median(std::vector<double> values) {
  std::ranges::sort(values);
  return values[values.size() / 2];
}

void measure(Watcher& watcher, const Command& command, Figures& figures) {
  Program program(command);
  const auto encrypted = watcher.passOn();
  const std::chrono::duration<double, std::milli> time = encrypted - program.start;
  for (bool isDone = false; !isDone;) {
    watcher.serve(program.output());
    isDone = program.says("The service is reached.");
  }
  figures.milliseconds.push_back(time.count());
  figures.resident.push_back(program.number("smaps_rollup", "Rss") / 1024);
  figures.proportional.push_back(program.number("smaps_rollup", "Pss") / 1024);
  figures.own.push_back(
      (program.number("smaps_rollup", "Private_Clean") + program.number("smaps_rollup", "Private_Dirty")) /
      1024);
}

void tell(const char* peer, const Figures& agent, const Figures& bare) {
  const auto line = [peer](const char* what, const char* unit, const std::vector<double>& ours,
                           const std::vector<double>& theirs) {
    std::printf("%s, against one that %s: %.1f %s to %.1f, %.2f times\n", what, peer, median(ours), unit,
                median(theirs), median(ours) / median(theirs));
  };
  line("exec to the check-in's first byte", "ms", agent.milliseconds, bare.milliseconds);
  line("resident memory (RSS) after it", "MiB", agent.resident, bare.resident);
  line("proportional memory (PSS)", "MiB", agent.proportional, bare.proportional);
  line("private memory (USS)", "MiB", agent.own, bare.own);
}

std::string enrolledDevice(Client& client, const std::string& service, const std::string& caFile) {
  const auto init = waitFor<InitEnrollmentResponse>([&](Completion<InitEnrollmentResponse> completion) {
    client.service->send(calls::initEnrollment, {newUUID(), "bench", "ios"}, std::move(completion));
  });
  BareHandle approve(service + "/sandbox/approve", caFile, "");
  const std::string body = R"({"enrollment_code":")" + init.enrollmentCode + "\"}";
  const std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)> headers(
      curl_slist_append(nullptr, "Content-Type: application/json"), &curl_slist_free_all);
  curl_easy_setopt(approve.get(), CURLOPT_HTTPHEADER, headers.get());
  curl_easy_setopt(approve.get(), CURLOPT_POSTFIELDS, body.c_str());
  approve.fetch();
  return init.deviceId;
}

void writeSettings(const fs::path& directory, const std::string& root, const std::string& deviceId) {
  SilentLog log;
  SqliteSettingsStore settings(directory, log);
  settings.set(settings::deviceRole, std::string("child"));
  settings.set(settings::childIsEnrolled, true);
  settings.set(settings::childDeviceID, deviceId);
  settings.set(settings::childDohEndpoint, "https://127.0.0.1/dns-query/x");
  settings.set(settings::apiBaseURL, root);
}

void watchIdle(Watcher& watcher, const Command& command, int seconds) {
  Program program(command);
  watcher.passOn();
  for (bool isDone = false; !isDone;) {
    watcher.serve(program.output());
    isDone = program.says("The service is reached.");
  }
  std::thread passing([&] { watcher.serve(-1); });
  std::this_thread::sleep_for(std::chrono::seconds(10));
  const double wakeUps = program.wakeUps();
  const double processor = program.processorSeconds();
  std::this_thread::sleep_for(std::chrono::seconds(seconds));
  std::printf("idle for %d s: %.0f wake-ups of all threads, %.4f %% of a core\n", seconds,
              program.wakeUps() - wakeUps, 100 * (program.processorSeconds() - processor) / seconds);
  std::fflush(stdout);
  std::quick_exit(0);
}

void run(int idleSeconds) {
  const ServiceProcess service;
  Client client(service);
  const std::string deviceId = enrolledDevice(client, service.url, service.caFile);
  Watcher watcher(portOf(service.url));
  const TemporaryDirectory directory;
  writeSettings(directory.path() / "data", watcher.url, deviceId);

  // The agent gets the system's authorities and this one.
  const std::string allAuthorities = (directory.path() / "authorities.pem").string();
  std::ofstream(allAuthorities) << std::ifstream("/etc/ssl/certs/ca-certificates.crt").rdbuf()
                                << std::ifstream(service.caFile).rdbuf();
  const Command agent{QUILLMAR_AGENT, "--data-dir",   (directory.path() / "data").string(),
                      "--ca-file",    service.caFile, "run"};
  const Command bare{QUILLMAR_BARE, (directory.path() / "data" / "settings.db").string(), watcher.url,
                     allAuthorities, deviceId};
  const Command thrifty{bare.at(0),     bare.at(1), watcher.url,
                        service.caFile, deviceId,   CurlHttpSession::Options().caDirectory};

  Figures ours;
  Figures theirs;
  Figures thrifties;
  for (int round = 0; round < rounds; ++round) {
    measure(watcher, bare, theirs);
    measure(watcher, agent, ours);
    measure(watcher, thrifty, thrifties);
  }
  tell("reads all authorities", ours, theirs);
  tell("finds its authority by hash", ours, thrifties);
  if (idleSeconds > 0) {
    watchIdle(watcher, agent, idleSeconds);
  }
}

}  // namespace
}  // namespace quillmar::bench

int main(int count, char** words) {
  quillmar::bench::run(count > 1 ? std::atoi(words[1]) : 0);
  return 0;
}
