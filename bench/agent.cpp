// What quillmar-agent costs beside a bare libcurl-and-SQLite process that makes the same check-in over TLS,
// with the same certificates to trust: memory once it is made, and the time from exec to its first byte. With
// a number of seconds behind it, also what the agent does while nothing happens.

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
using Words = std::vector<std::string>;
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

// Stands between a client and the service and looks at the client's TLS records, not into them.
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

  // When the first encrypted record of the next client came, all that it sends and gets passed on up to the
  // end of the answer.
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

  // Goes on passing on for as long as the client lives.
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

// A program whose standard output is read, killed at the end.
class Program {
 public:
  explicit Program(Words words) {
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
    for (std::string& word : words) {
      arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    start = Clock::now();
    if (posix_spawn(&process_, arguments.front(), &actions, nullptr, arguments.data(), environ) != 0) {
      giveUp("can't start " + words.front());
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

  // By its name in /proc/PID/FILE.
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
  // Of all its threads.
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

void measure(Watcher& watcher, const Words& words, Figures& figures) {
  Program program(words);
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
  const auto line = [](const char* what, const char* unit, const std::vector<double>& ours,
                       const std::vector<double>& theirs) {
    std::printf("  %-34s %8.2f %s, bare %8.2f %s: %.3f times\n", what, median(ours), unit, median(theirs),
                unit, median(ours) / median(theirs));
  };
  std::printf("%s\n", peer);
  line("exec to the check-in's first byte", "ms", agent.milliseconds, bare.milliseconds);
  line("resident memory after it", "MiB", agent.resident, bare.resident);
  line("its share of what is shared", "MiB", agent.proportional, bare.proportional);
  line("its own alone", "MiB", agent.own, bare.own);
}

std::string enrolledDevice(Client& client, const std::string& service, const std::string& caFile) {
  const auto init = waitFor<InitEnrollmentResponse>([&](Completion<InitEnrollmentResponse> completion) {
    client.service->initEnrollment(newUUID(), "bench", "ios", std::move(completion));
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

void watchIdle(Watcher& watcher, const Words& words, int seconds) {
  Program program(words);
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

  // The agent trusts the system's authorities and this one.
  const std::string allAuthorities = (directory.path() / "authorities.pem").string();
  std::ofstream(allAuthorities) << std::ifstream("/etc/ssl/certs/ca-certificates.crt").rdbuf()
                                << std::ifstream(service.caFile).rdbuf();
  const Words agent{QUILLMAR_AGENT, "--data-dir",   (directory.path() / "data").string(),
                    "--ca-file",    service.caFile, "run"};
  const Words bare{QUILLMAR_BARE, (directory.path() / "data" / "settings.db").string(), watcher.url,
                   allAuthorities, deviceId};
  const Words thrifty{bare.at(0),     bare.at(1), watcher.url,
                      service.caFile, deviceId,   CurlHttpSession::Options().caDirectory};

  Figures ours;
  Figures theirs;
  Figures thrifties;
  for (int round = 0; round < rounds; ++round) {
    measure(watcher, bare, theirs);
    measure(watcher, agent, ours);
    measure(watcher, thrifty, thrifties);
  }
  tell("Against one that reads all authorities", ours, theirs);
  tell("Against one that finds its authority by hash", ours, thrifties);
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
