#include <libpsl.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "client/recent_logs.h"
#include "console/root_domain.h"

// Finding a name's site, against the registrable domain of a public suffix library; and merging many devices'
// logs.
namespace {

using namespace quillmar;

constexpr int rounds = 41;
constexpr std::size_t nameCount = 10000;

std::vector<std::string> makeNames() {
  constexpr auto endings = std::to_array<const char*>(
      {"example.com", "example.co.uk", "shop.com.au", "news.org", "cdn.net", "school.edu.sg", "a.io"});
  constexpr auto hosts = std::to_array<const char*>({"www.", "api.eu-west.", "", "img1.static.", "m."});
  std::vector<std::string> names;
  for (std::size_t i = 0; i < nameCount; ++i) {
    names.push_back(hosts[i % hosts.size()] + ("site" + std::to_string(i)) + "." +
                    endings[i % endings.size()]);
  }
  return names;
}

std::vector<DNSLog> makeLogs(int device) {
  std::vector<DNSLog> logs;
  for (int i = 0; i < 100; ++i) {
    std::array<char, 32> time{};
    std::snprintf(time.data(), time.size(), "2026-01-01T00:%02d:%02dZ", i / 60, (i * 7 + device) % 60);
    logs.push_back({.id = device * 100 + i,
                    .deviceId = "device-" + std::to_string(device),
                    .parentId = "parent",
                    .domain = "www.site" + std::to_string(i) + ".example",
                    .queryType = "A",
                    .wasBlocked = i % 3 == 0,
                    .timestamp = time.data()});
  }
  return logs;
}

// The newest of 100 devices' logs with 100 entries each, without the requests.
double mergeMilliseconds() {
  std::vector<bench::Seconds> times;
  for (int round = 0; round <= rounds; ++round) {
    RecentLogs collected(100);
    for (int device = 0; device < 100; ++device) {
      collected.add(static_cast<std::size_t>(device), makeLogs(device));
    }
    const auto start = bench::cpuTime(CLOCK_PROCESS_CPUTIME_ID);
    const auto newest = collected.takeNewest(100);
    const auto time = bench::cpuTime(CLOCK_PROCESS_CPUTIME_ID) - start;
    if (!newest.ok() || newest.value().size() != 100) {
      return -1;
    }
    if (round > 0) {
      times.push_back(time);
    }
  }
  return bench::median(std::move(times)).count() * 1000;
}

}  // namespace

int main() {
  const auto names = makeNames();
  const std::unique_ptr<psl_ctx_t, decltype(&psl_free)> list(psl_latest(nullptr), &psl_free);
  if (!list) {
    std::fputs("there is no public suffix list\n", stderr);
    return 1;
  }
  std::size_t ours = 0;
  std::size_t theirs = 0;
  std::string storage;
  const auto times = bench::race(rounds, {[&] {
                                            for (const auto& name : names) {
                                              ours += rootDomain(name, storage).size();
                                            }
                                          },
                                          [&] {
                                            for (const auto& name : names) {
                                              const auto* const domain =
                                                  psl_registrable_domain(list.get(), name.c_str());
                                              theirs += domain ? std::char_traits<char>::length(domain) : 0;
                                            }
                                          }});
  std::printf("the site of a name: %.0f ns, a public suffix library %.0f ns, %.1f times as fast (%zu, %zu)\n",
              times[0].count() * 1e9 / nameCount, times[1].count() * 1e9 / nameCount, times[1] / times[0],
              ours, theirs);
  std::printf("the newest 100 of 100 devices with 100 entries each: %.2f ms\n", mergeMilliseconds());
  return 0;
}
