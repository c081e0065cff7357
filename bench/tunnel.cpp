// What a query through quillmar-tunnel costs in processor time and in waiting, at 2,000 a second and with
// nothing in any cache, beside other proxies that ask the same endpoint over HTTPS. Needs Debian's dnsdist
// (which is the endpoint, too), dnss and dnsperf.

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "sandbox/http/certificates.h"
#include "testing/temporary_directory.h"

extern char** environ;

namespace quillmar::bench {
namespace {

using Words = std::vector<std::string>;
namespace fs = std::filesystem;

constexpr int rounds = 5;
constexpr int secondsEach = 5;
constexpr int queriesEachSecond = 2000;
constexpr int endpointPort = 28443;

[[noreturn]] void giveUp(const std::string& cause) {
  std::fprintf(stderr, "%s\n", cause.c_str());
  std::quick_exit(1);
}

// A program of its own, killed at the end; what it says goes to a file.
class Program {
 public:
  Program(Words words, const fs::path& output) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0600);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    std::vector<char*> arguments;
    for (std::string& word : words) {
      arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    if (posix_spawnp(&process_, arguments.front(), &actions, nullptr, arguments.data(), environ) != 0) {
      giveUp("can't start " + words.front() + ", which is a package of the same name");
    }
    posix_spawn_file_actions_destroy(&actions);
  }
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;
  ~Program() {
    if (process_ > 0) {
      ::kill(process_, SIGKILL);
      wait();
    }
  }

  void wait() {
    ::waitpid(process_, nullptr, 0);
    process_ = -1;
  }

  // Of all threads, as the scheduler counts it: the times in /proc/PID/stat are guessed at the clock's ticks.
  double processorMicroseconds() const {
    double all = 0;
    for (const auto& thread : fs::directory_iterator("/proc/" + std::to_string(process_) + "/task")) {
      double nanoseconds = 0;
      std::ifstream(thread.path() / "schedstat") >> nanoseconds;
      all += nanoseconds / 1000;
    }
    return all;
  }
  double megabytes() const {
    std::ifstream in("/proc/" + std::to_string(process_) + "/status");
    for (std::string word; in >> word;) {
      if (double kilobytes = 0; word == "VmRSS:" && in >> kilobytes) {
        return kilobytes / 1024;
      }
    }
    return 0;
  }

 private:
  pid_t process_ = -1;
};

double median(std::vector<double> values) {
  std::ranges::sort(values);
  return values[values.size() / 2];
}

struct Contender {
  std::string name;
  int port;
  Words words;
  std::unique_ptr<Program> program{};
  std::vector<double> microseconds{};
  std::vector<double> latencies{};
};

// Behind a mark in what dnsperf says.
double numberAfter(const std::string& text, const std::string& mark) {
  const auto at = text.find(mark);
  return at == std::string::npos ? 0 : std::strtod(text.c_str() + at + mark.size(), nullptr);
}

std::string contents(const fs::path& file) {
  std::ostringstream text;
  text << std::ifstream(file).rdbuf();
  return text.str();
}

void measure(Contender& contender, const fs::path& directory, int round) {
  const auto names = directory / "names";
  {
    std::ofstream out(names);
    for (int number = 0; number < 2 * secondsEach * queriesEachSecond; ++number) {
      out << 'r' << round << 'n' << number << ".example A\n";
    }
  }
  const double before = contender.program->processorMicroseconds();
  Program load({"dnsperf", "-s", "127.0.0.1", "-p", std::to_string(contender.port), "-d", names.string(),
                "-Q", std::to_string(queriesEachSecond), "-l", std::to_string(secondsEach)},
               directory / "load");
  load.wait();
  const double spent = contender.program->processorMicroseconds() - before;
  const auto said = contents(directory / "load");
  const double completed = numberAfter(said, "Queries completed:");
  if (completed < secondsEach * queriesEachSecond * 0.99 ||
      said.find("NOERROR " + std::to_string(int(completed))) == std::string::npos) {
    giveUp(contender.name + " did not answer everything:\n" + said);
  }
  contender.microseconds.push_back(spent / completed);
  contender.latencies.push_back(numberAfter(said, "Average Latency (s):") * 1e6);
}

std::string written(const fs::path& file, const std::string& text) {
  std::ofstream(file) << text;
  return file.string();
}

void run() {
  const TemporaryDirectory directory;
  const auto certificates = sandbox::certificatesIn(directory.path());
  if (!certificates) {
    giveUp("no certificates");
  }
  const auto url = "https://localhost:" + std::to_string(endpointPort) + "/dns-query";
  const auto ca = certificates->authority.string();
  const auto endpointSettings =
      written(directory.path() / "endpoint.conf",
              "setLocal(\"127.0.0.1:25300\")\naddDOHLocal(\"127.0.0.1:" + std::to_string(endpointPort) +
                  "\", \"" + certificates->certificate.string() + "\", \"" + certificates->key.string() +
                  "\", \"/dns-query\")\naddAction(AllRule(), SpoofAction({\"192.0.2.7\"}, {ttl=60}))\n");
  const auto peerSettings = written(directory.path() / "peer.conf",
                                    "setLocal(\"127.0.0.1:25302\")\nnewServer({address=\"127.0.0.1:" +
                                        std::to_string(endpointPort) + "\", tls=\"openssl\", caStore=\"" +
                                        ca + "\", subjectName=\"localhost\", dohPath=\"/dns-query\"})\n");
  const Program endpoint({"dnsdist", "--supervised", "-C", endpointSettings}, directory.path() / "endpoint");

  std::vector<Contender> contenders;
  contenders.push_back(
      {"quillmar-tunnel",
       25301,
       {QUILLMAR_TUNNEL, "serve", "--endpoint", url, "--listen", "127.0.0.1:25301", "--ca-file", ca}});
  contenders.push_back({"dnsdist", 25302, {"dnsdist", "--supervised", "-C", peerSettings}});
  contenders.push_back({"dnss",
                        25303,
                        {"dnss", "-enable_dns_to_https", "-dns_listen_addr", "127.0.0.1:25303",
                         "-https_upstream", url, "-https_client_cafile", ca, "-enable_cache=false"}});
  for (auto& contender : contenders) {
    contender.program = std::make_unique<Program>(contender.words, directory.path() / contender.name);
  }
  std::this_thread::sleep_for(std::chrono::seconds(3));  // dnsdist looks at its endpoint before it asks it
  for (int round = 0; round < rounds; ++round) {
    for (auto& contender : contenders) {
      measure(contender, directory.path(), round);
    }
  }
  const double ours = median(contenders.front().microseconds);
  for (const auto& contender : contenders) {
    const double cost = median(contender.microseconds);
    std::printf(
        "%-16s %6.1f us of processor time a query (ours are %.2f of that), answer after %7.0f us, %5.1f "
        "MiB\n",
        contender.name.c_str(), cost, ours / cost, median(contender.latencies),
        contender.program->megabytes());
  }
}

}  // namespace
}  // namespace quillmar::bench

int main() {
  quillmar::bench::run();
  return 0;
}
