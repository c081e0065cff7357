// What a parent who watches five devices costs the processor, against the plainest program with the same
// outcome: libcurl's multi interface with one handle a device, and simdjson into the same structs.

#include <curl/curl.h>
#include <simdjson.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "bench/against_service.h"
#include "bench/measure.h"

namespace quillmar::bench {
namespace {

using namespace std::chrono_literals;

using Logs = std::vector<DNSLog>;

constexpr int ticksARound = 20;
constexpr int rounds = 41;
constexpr std::size_t watchedDevices = 5;
constexpr std::size_t limit = 100;
constexpr auto span = 24h;

// A call whose answer comes on the main queue, which is run until then.
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

// As many requests at once, and nothing else.
class BareWatch {
 public:
  BareWatch(const ServiceProcess& process, const std::string& token,
            const std::vector<std::string>& devices) {
    for (const auto& device : devices) {
      const std::string url = process.url + "/api/v1/devices/" + device +
                              "/logs?limit=" + std::to_string(limit / devices.size()) +
                              "&since=2000-01-01T00:00:00Z";
      handles_.push_back(std::make_unique<BareHandle>(url, process.caFile, token));
      curl_easy_setopt(handles_.back()->get(), CURLOPT_PIPEWAIT, 1L);  // one connection for all
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

int run() {
  const ServiceProcess process({.seed = sandbox::Seed::demo});
  Client client(process);
  const auto account = waitFor<AuthResponse>([&](auto completion) {
    client.service->login({.email = "ann@example.com", .password = "quillmar-demo"}, std::move(completion));
  });
  const auto family =
      waitFor<ChildrenResponse>([&](auto completion) { client.service->getChildren(std::move(completion)); });
  std::vector<std::string> devices;
  for (const auto& child : family.children) {
    for (const auto& device : child.devices) {
      devices.push_back(device.id);
    }
  }
  devices.resize(watchedDevices);

  BareWatch bare(process, account.token, devices);
  const auto ids = sortedIds(watch(client, devices));
  if (ids.size() != limit || ids != sortedIds(bare.watch())) {
    giveUp("watch: the two do not see the same");
  }
  const auto repeatedly = [](auto tick) {
    return [tick] {
      for (int i = 0; i < ticksARound; ++i) {
        tick();
      }
    };
  };
  std::size_t entries = 0;
  const auto times = race(rounds, {repeatedly([&] { entries += watch(client, devices).size(); }),
                                   repeatedly([&] { entries += bare.watch().size(); })});
  std::printf("watching %zu devices: %.2fx a bare loop (%.0f µs of processor time a tick against %.0f)\n",
              devices.size(), times[0] / times[1], times[0].count() / ticksARound * 1e6,
              times[1].count() / ticksARound * 1e6);
  return entries > 0 ? 0 : 1;
}

}  // namespace
}  // namespace quillmar::bench

int main() { return quillmar::bench::run(); }
