// The processor time of a parent who watches five devices, against two minimal programs. One fetches and
// parses the same answers sequentially. The other requests all of them at once with libcurl's multi interface
// and fills the same structs. All of it is measured on one core and on all cores. The service keeps to a core
// of its own, because a parent's service runs elsewhere: where the scheduler puts it would decide the
// figures.

#include <curl/curl.h>
#include <sched.h>
#include <simdjson.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "bench/against_service.h"
#include "bench/measure.h"
#include "client/account_calls.h"
#include "client/child_calls.h"
#include "client/network_service.h"
#include "client/records/account.h"
#include "client/records/child.h"
#include "client/records/dns_log.h"

namespace quillmar::bench {
namespace {

using namespace std::chrono_literals;

using Logs = std::vector<DNSLog>;

constexpr int ticksARound = 20;
constexpr int rounds = 41;
constexpr std::size_t watchedDevices = 5;
constexpr std::size_t limit = 100;
constexpr auto span = 24h;

// Runs the main queue until the call is answered.
Logs watch(Client& client, const std::vector<std::string>& devices) {
  std::optional<Result<Logs>> logs;
  client.service->getRecentDeviceLogs(devices, span, limit, [&](Result<Logs> result) {
    logs = std::move(result);
    client.dispatch.stop();
  });
  client.dispatch.run();
  if (!logs || !logs->ok()) {
    giveUp("watch: no logs");
  }
  return std::move(*logs).value();
}

std::string logsUrl(const ServiceProcess& process, const std::string& device) {
  return process.url + "/api/v1/devices/" + device + "/logs?limit=" + std::to_string(limit / watchedDevices) +
         "&since=2000-01-01T00:00:00Z";
}

// Sequential requests; reads each domain and keeps nothing.
class BareLoop {
 public:
  BareLoop(const ServiceProcess& process, const std::string& token, const std::vector<std::string>& devices)
      : handle_(process.url, process.caFile, token) {
    for (const auto& device : devices) {
      urls_.push_back(logsUrl(process, device));
    }
  }

  std::size_t watch() {
    std::size_t letters = 0;
    for (const auto& url : urls_) {
      curl_easy_setopt(handle_.get(), CURLOPT_URL, url.c_str());
      const simdjson::dom::array entries = parser_.parse(handle_.fetch())["logs"];
      for (const auto entry : entries) {
        letters += entry["domain"].get_string().value().size();
      }
    }
    return letters;
  }

 private:
  BareHandle handle_;
  std::vector<std::string> urls_;
  simdjson::dom::parser parser_;
};

// Sends the requests in parallel and does nothing else.
class BareWatch {
 public:
  BareWatch(const ServiceProcess& process, const std::string& token,
            const std::vector<std::string>& devices) {
    for (const auto& device : devices) {
      handles_.push_back(std::make_unique<BareHandle>(logsUrl(process, device), process.caFile, token));
      curl_easy_setopt(handles_.back()->get(), CURLOPT_PIPEWAIT, 1L);  // share one connection
    }
  }

  Logs watch() {
    for (const auto& handle : handles_) {
      handle->clear();
      curl_multi_add_handle(multi_.get(), handle->get());
    }
    for (int running = 1; running > 0;) {
      if (curl_multi_perform(multi_.get(), &running) != CURLM_OK ||
          curl_multi_poll(multi_.get(), nullptr, 0, running > 0 ? 1000 : 0, nullptr) != CURLM_OK) {
        giveUp("watch: libcurl failed");
      }
    }
    Logs logs;
    for (const auto& handle : handles_) {
      curl_multi_remove_handle(multi_.get(), handle->get());
      read(handle->body(), logs);
    }
    std::ranges::sort(logs, std::ranges::greater(), &DNSLog::timestamp);
    return logs;
  }

 private:
  void read(const std::string& body, Logs& logs) {
    const simdjson::dom::array entries = parser_.parse(body)["logs"];
    for (const auto entry : entries) {
      logs.push_back({.id = entry["id"],
                      .deviceId = text(entry["device_id"]),
                      .parentId = text(entry["parent_id"]),
                      .domain = text(entry["domain"]),
                      .queryType = text(entry["query_type"]),
                      .wasBlocked = entry["was_blocked"],
                      .timestamp = text(entry["timestamp"])});
    }
  }
  static std::string text(simdjson::simdjson_result<simdjson::dom::element> value) {
    return std::string(value.get_string().value());
  }

  std::unique_ptr<CURLM, decltype(&curl_multi_cleanup)> multi_{curl_multi_init(), &curl_multi_cleanup};
  std::vector<std::unique_ptr<BareHandle>> handles_;
  simdjson::dom::parser parser_;
};

std::vector<std::int64_t> sortedIds(const Logs& logs) {
  std::vector<std::int64_t> ids;
  std::ranges::transform(logs, std::back_inserter(ids), &DNSLog::id);
  std::ranges::sort(ids);
  return ids;
}

class Cores {
 public:
  static Cores usable() {
    Cores cores;
    sched_getaffinity(0, sizeof cores.set_, &cores.set_);
    return cores;
  }
  Cores first() const { return only(0); }
  Cores last() const { return only(CPU_COUNT(&set_) - 1); }

  // For this thread, and for the threads and processes that it starts.
  void use() const { sched_setaffinity(0, sizeof set_, &set_); }

 private:
  Cores only(int wanted) const {
    Cores cores;
    int place = 0;
    for (int core = 0; core < CPU_SETSIZE; ++core) {
      if (CPU_ISSET(core, &set_) && place++ == wanted) {
        CPU_SET(core, &cores.set_);
      }
    }
    return cores;
  }

  cpu_set_t set_{};
};

ServiceProcess serviceOn(const Cores& cores) {
  cores.use();
  return ServiceProcess({.seed = sandbox::Seed::demo});
}

std::vector<std::string> devicesOf(const ChildrenResponse& family) {
  std::vector<std::string> devices;
  for (const auto& child : family.children) {
    for (const auto& device : child.devices) {
      devices.push_back(device.id);
    }
  }
  devices.resize(watchedDevices);
  return devices;
}

void compare(const char* where, const ServiceProcess& process) {
  Client client(process);
  const auto account = waitFor<AuthResponse>([&](auto completion) {
    client.service->send(calls::login, {.email = "ann@example.com", .password = "quillmar-demo"},
                         std::move(completion));
  });
  const auto devices = devicesOf(waitFor<ChildrenResponse>(
      [&](auto completion) { client.service->send(calls::getChildren, std::move(completion)); }));

  BareLoop loop(process, account.token, devices);
  BareWatch bare(process, account.token, devices);
  const auto ids = sortedIds(watch(client, devices));
  if (ids.size() != limit || ids != sortedIds(bare.watch()) || loop.watch() == 0) {
    giveUp("watch: they do not see the same");
  }
  const auto repeatedly = [](auto tick) {
    return [tick] {
      for (int i = 0; i < ticksARound; ++i) {
        tick();
      }
    };
  };
  const std::vector<std::function<void()>> candidates = {repeatedly([&] { watch(client, devices); }),
                                                         repeatedly([&] { loop.watch(); }),
                                                         repeatedly([&] { bare.watch(); })};
  const auto times = race(rounds, candidates);
  const auto tick = [](Seconds time) { return time.count() / ticksARound * 1e6; };
  std::printf("watching %zu devices on %s: %.0f µs of processor time a tick\n", devices.size(), where,
              tick(times[0]));
  std::printf("  on %s %.2fx a bare loop (%.0f µs)\n", where, times[0] / times[1], tick(times[1]));
  std::printf("  on %s %.2fx a program with the same outcome (%.0f µs)\n", where, times[0] / times[2],
              tick(times[2]));
  const auto waitsOf = [](const std::function<void()>& candidate) {
    const long before = waits();
    candidate();
    return static_cast<double>(waits() - before) / ticksARound;
  };
  std::printf("  its threads wait %.1f times a tick, the loop's %.1f times, the other program's %.1f times\n",
              waitsOf(candidates[0]), waitsOf(candidates[1]), waitsOf(candidates[2]));
}

int run() {
  const Cores all = Cores::usable();
  const ServiceProcess process = serviceOn(all.last());
  all.first().use();
  compare("one core", process);
  all.use();
  compare("all cores", process);
  return 0;
}

}  // namespace
}  // namespace quillmar::bench

int main() { return quillmar::bench::run(); }
