// A keystroke in the filter of a list of 2,000 sites, against the plainest loop over the same names: one that
// finds exact parts, and one that also ignores case and accents but prepares nothing.

#include <array>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "bench/measure.h"
#include "console/root_domain.h"
#include "console/site_rows.h"
#include "presentation/list_filter.h"

namespace {

using namespace quillmar;

constexpr std::size_t rowCount = 2000;
constexpr int rounds = 101;

class Sites final : public ObservableObject {
 public:
  Sites() : ObservableObject("Sites") {}

  Rows<BlockedSiteRow> rows{*this, "rows"};
  ListFilter filter{*this};
  FilteredRows shown{*this, {.rows = "shown", .noMatch = "noMatch", .searched = "site"}, rows, filter};
};

std::string nameOf(std::size_t i) {
  constexpr auto words =
      std::to_array<const char*>({"video", "games", "école", "schule", "Musik", "новости", "学校", "news"});
  return std::string(words[i % words.size()]) + std::to_string(i) + ".com";
}

std::vector<DNSLog> makeLogs() {
  std::vector<DNSLog> logs;
  for (std::size_t i = 0; i < rowCount; ++i) {
    logs.push_back({.id = static_cast<std::int64_t>(i),
                    .deviceId = "device",
                    .parentId = "parent",
                    .domain = nameOf(i),
                    .queryType = "A",
                    .wasBlocked = true,
                    .timestamp = "2026-01-01T00:00:00Z"});
  }
  return logs;
}

void show(Sites& sites, const std::vector<DNSLog>& logs) {
  std::vector<std::pair<std::string, std::shared_ptr<BlockedSiteRow>>> rows;
  for (const auto& log : logs) {
    rows.emplace_back(log.domain, std::make_shared<BlockedSiteRow>(log, [](const DNSLog&) {}));
  }
  sites.rows.assign(std::move(rows));
}

// Types a word and removes it again.
constexpr auto keystrokes =
    std::to_array<const char*>({"e", "ec", "eco", "ecol", "ecole", "ecol", "eco", "ec", "e", ""});

}  // namespace

int main() {
  const auto logs = makeLogs();
  Sites sites;
  show(sites, logs);
  std::size_t ours = 0;
  std::size_t exact = 0;
  std::size_t unprepared = 0;
  const auto times = bench::race(rounds, {[&] {
                                            for (const char* const typed : keystrokes) {
                                              sites.filter.text = typed;
                                              ours += sites.shown.nested().size();
                                            }
                                          },
                                          [&] {
                                            for (const std::string typed : keystrokes) {
                                              std::vector<const DNSLog*> shown;
                                              for (const auto& log : logs) {
                                                if (rootDomain(log).find(typed) != std::string::npos) {
                                                  shown.push_back(&log);
                                                }
                                              }
                                              exact += shown.size();
                                            }
                                          },
                                          [&] {
                                            for (const char* const typed : keystrokes) {
                                              const SearchKey part(typed);
                                              std::vector<const DNSLog*> shown;
                                              for (const auto& log : logs) {
                                                if (SearchKey(rootDomain(log)).contains(part)) {
                                                  shown.push_back(&log);
                                                }
                                              }
                                              unprepared += shown.size();
                                            }
                                          }});
  const auto milliseconds = [](bench::Seconds time) { return time.count() * 1000 / std::size(keystrokes); };
  std::printf(
      "a keystroke over %zu rows: %.3f ms; the plainest loop, exact: %.3f ms; without preparation: %.3f ms "
      "(%zu, %zu, %zu)\n",
      rowCount, milliseconds(times[0]), milliseconds(times[1]), milliseconds(times[2]), ours, exact,
      unprepared);

  std::vector<bench::Seconds> firsts;
  for (int round = 0; round <= rounds; ++round) {
    Sites fresh;
    show(fresh, logs);
    const auto start = bench::cpuTime(CLOCK_PROCESS_CPUTIME_ID);
    fresh.filter.text = "e";
    const auto time = bench::cpuTime(CLOCK_PROCESS_CPUTIME_ID) - start;
    if (round > 0) {
      firsts.push_back(time);
    }
  }
  std::printf("the first keystroke, which prepares the names: %.3f ms\n",
              bench::median(std::move(firsts)).count() * 1000);
  return ours == unprepared ? 0 : 1;
}
