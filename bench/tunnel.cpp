// Compares quillmar-tunnel with other proxies that use the same DNS over HTTPS endpoint: processor time and
// latency of queries that are not cached, at 2,000 a second; processor time of cached ones; memory; wake-ups
// while idle. Needs Debian's dnsperf, and dnsdist as the endpoint. The peers are dnsdist and dnss; one that
// is not installed is left out.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "bench/program.h"
#include "sandbox/http/certificates.h"
#include "testing/temporary_directory.h"

namespace quillmar::bench {
namespace {

constexpr int rounds = 3;
constexpr int secondsEach = 5;
constexpr int queriesEachSecond = 2000;
constexpr int endpointPort = 28443;
constexpr int cachedNames = 100;
constexpr int secondsOfCached = 3;
constexpr std::chrono::seconds settling{2};
constexpr std::chrono::seconds idleTime{10};

double median(std::vector<double> values) {
  std::ranges::sort(values);
  return values[values.size() / 2];
}

struct Contender {
  std::string name;
  int port;
  Command command;
  std::unique_ptr<Program> program{};
  std::vector<double> microseconds{};  // of processor time, one for each round
  std::vector<double> cachedMicroseconds{};
  std::vector<double> latencies{};  // of all queries, in microseconds
  double answers = 0;
  double memory = 0;
  long wakeUps = 0;
};

// The number after a label in dnsperf's output.
double numberAfter(const std::string& text, const std::string& mark) {
  const auto at = text.find(mark);
  return at == std::string::npos ? 0 : std::strtod(text.c_str() + at + mark.size(), nullptr);
}

std::string questions(const std::string& prefix, int count) {
  std::string text;
  for (int number = 0; number < count; ++number) {
    text += prefix + std::to_string(number) + ".example A\n";
  }
  return text;
}

// The processor time per answer while dnsperf asks with these options. Fails unless all answers are NOERROR.
double costOf(Contender& contender, const fs::path& directory, const std::string& asked, Command options) {
  Command command{"dnsperf",
                  "-s",
                  "127.0.0.1",
                  "-p",
                  std::to_string(contender.port),
                  "-d",
                  written(directory / "names", asked)};
  command.insert(command.end(), options.begin(), options.end());
  const double before = contender.program->processorMicroseconds();
  Program load(command, directory / "load");
  load.wait();
  const double spent = contender.program->processorMicroseconds() - before;
  const auto said = contents(directory / "load");
  const double sent = numberAfter(said, "Queries sent:");
  const double completed = numberAfter(said, "Queries completed:");
  if (completed < sent * 0.99 || completed < 1 ||
      said.find("NOERROR " + std::to_string(static_cast<long>(completed))) == std::string::npos) {
    giveUp(contender.name + " did not answer everything:\n" + said.substr(said.find("Statistics:")));
  }
  contender.answers += completed;
  return spent / completed;
}

void takeLatencies(Contender& contender, const fs::path& load) {
  std::ifstream in(load);
  for (std::string line; std::getline(in, line);) {
    if (line.starts_with("> NOERROR ")) {
      contender.latencies.push_back(std::strtod(line.c_str() + line.rfind(' '), nullptr) * 1e6);
    }
  }
}

void measureUncached(Contender& contender, const fs::path& directory, int round) {
  const auto names = questions('r' + std::to_string(round) + 'n', 2 * secondsEach * queriesEachSecond);
  contender.microseconds.push_back(
      costOf(contender, directory, names,
             {"-v", "-Q", std::to_string(queriesEachSecond), "-l", std::to_string(secondsEach)}));
  takeLatencies(contender, directory / "load");
}

// Measures how many queries for cached names it can answer.
void measureCached(Contender& contender, const fs::path& directory, int round) {
  const auto names = questions('c' + std::to_string(round) + 'n', cachedNames);
  costOf(contender, directory, names, {"-n", "1"});
  contender.cachedMicroseconds.push_back(
      costOf(contender, directory, names, {"-l", std::to_string(secondsOfCached)}));
}

void measureIdle(std::vector<Contender>& contenders) {
  std::this_thread::sleep_for(settling);
  for (auto& contender : contenders) {
    contender.memory = contender.program->proportionalMemory();
    contender.wakeUps = -contender.program->wakeUps();
  }
  std::this_thread::sleep_for(idleTime);
  for (auto& contender : contenders) {
    contender.wakeUps += contender.program->wakeUps();
  }
}

double partOf(std::vector<double> values, double part) {
  std::ranges::sort(values);
  return values[static_cast<std::size_t>(part * static_cast<double>(values.size() - 1))];
}

void print(const Contender& contender, const Contender& ours) {
  const double cost = median(contender.microseconds);
  const double cached = median(contender.cachedMicroseconds);
  std::printf(
      "%s: %.1f us of processor time a query (ours are %.2f of that), answered after %.0f us (99 %%: %.0f "
      "us)\n",
      contender.name.c_str(), cost, median(ours.microseconds) / cost, median(contender.latencies),
      partOf(contender.latencies, 0.99));
  std::printf("%s: from its cache %.0f answers a second of one core (ours are %.2f of that)\n",
              contender.name.c_str(), 1e6 / cached, cached / median(ours.cachedMicroseconds));
  std::printf("%s: %.1f MiB (PSS) after %.0f thousand queries, %ld wake-ups in %ld idle seconds\n",
              contender.name.c_str(), contender.memory, contender.answers / 1000, contender.wakeUps,
              static_cast<long>(idleTime.count()));
}

std::vector<Contender> contendersFor(const std::string& url, const std::string& ca,
                                     const fs::path& directory) {
  const auto peerSettings =
      written(directory / "peer.conf",
              "setSecurityPollSuffix('')\nsetLocal('127.0.0.1:25302')\nnewServer({address='127.0.0.1:" +
                  std::to_string(endpointPort) + "', tls='openssl', caStore='" + ca +
                  "', subjectName='localhost', dohPath='/dns-query'})\n"
                  "getPool(''):setCache(newPacketCache(100000))\n");
  std::vector<Contender> all;
  all.push_back(
      {"quillmar-tunnel",
       25301,
       {QUILLMAR_TUNNEL, "serve", "--endpoint", url, "--listen", "127.0.0.1:25301", "--ca-file", ca}});
  all.push_back({"dnsdist", 25302, {"dnsdist", "--supervised", "--disable-syslog", "-C", peerSettings}});
  all.push_back({"dnss",
                 25303,
                 {"dnss", "-enable_dns_to_https", "-dns_listen_addr", "127.0.0.1:25303", "-https_upstream",
                  url, "-https_client_cafile", ca}});
  std::erase_if(
      all, [](const Contender& each) { return each.name != "quillmar-tunnel" && !isInstalled(each.name); });
  return all;
}

void run() {
  if (!isInstalled("dnsdist") || !isInstalled("dnsperf")) {
    std::puts("dnsdist or dnsperf is not installed.");
    return;
  }
  const TemporaryDirectory directory;
  const auto certificates = sandbox::certificatesIn(directory.path());
  if (!certificates) {
    giveUp("no certificates");
  }
  const auto endpointSettings =
      written(directory.path() / "endpoint.conf",
              "setSecurityPollSuffix('')\nsetLocal('127.0.0.1:25300')\naddDOHLocal('127.0.0.1:" +
                  std::to_string(endpointPort) + "', '" + certificates->certificate.string() + "', '" +
                  certificates->key.string() +
                  "', '/dns-query')\naddAction(AllRule(), SpoofAction({'192.0.2.7'}, {ttl=60}))\n");
  const Program endpoint({"dnsdist", "--supervised", "--disable-syslog", "-C", endpointSettings},
                         directory.path() / "endpoint");
  const auto url = "https://localhost:" + std::to_string(endpointPort) + "/dns-query";
  auto contenders = contendersFor(url, certificates->authority.string(), directory.path());
  for (auto& contender : contenders) {
    contender.program = std::make_unique<Program>(contender.command, directory.path() / contender.name);
  }
  std::this_thread::sleep_for(std::chrono::seconds(3));  // dnsdist checks its endpoint before it uses it
  for (int round = 0; round < rounds; ++round) {
    for (auto& contender : contenders) {
      measureUncached(contender, directory.path(), round);
      measureCached(contender, directory.path(), round);
    }
  }
  measureIdle(contenders);
  for (const auto& contender : contenders) {
    print(contender, contenders.front());
  }
}

}  // namespace
}  // namespace quillmar::bench

int main() {
  quillmar::bench::run();
  return 0;
}
