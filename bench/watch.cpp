// What a parent who watches five devices costs the processor, against a loop that does nothing but fetch the
// same answers over one kept-alive HTTPS connection and parse them.

#include <simdjson.h>

#include <cstdio>
#include <string>
#include <vector>

#include "bench/against_service.h"
#include "bench/measure.h"
#include "platform/linux/asio_dispatch.h"
#include "platform/linux/curl_http_session.h"
#include "tests/support/memory_settings_store.h"

namespace quillmar::bench {
namespace {

using namespace std::chrono_literals;

constexpr int ticksARound = 20;
constexpr int rounds = 41;
constexpr std::size_t watchedDevices = 5;
constexpr std::size_t limit = 100;
constexpr auto span = 24h;

// A call whose answer comes on the main queue, which is run until then.
std::vector<DNSLog> watch(NetworkService& service, AsioDispatch& dispatch,
                          const std::vector<std::string>& devices) {
  std::optional<Result<std::vector<DNSLog>>> logs;
  service.getRecentDeviceLogs(devices, span, limit, [&](Result<std::vector<DNSLog>> result) {
    logs = std::move(result);
    dispatch.stop();
  });
  dispatch.run();
  if (!logs || !logs->ok()) {
    giveUp("watch: no logs");
  }
  return std::move(*logs).value();
}

int run() {
  const ServiceProcess process({.seed = sandbox::Seed::demo});
  curl_global_init(CURL_GLOBAL_DEFAULT);
  CurlHttpSession::Options options;
  options.caFile = process.caFile;
  CurlHttpSession session(options);
  MemorySettingsStore settings;
  SilentLog log;
  settings.set(NetworkService::apiURLKey, process.url);
  AsioDispatch dispatch;
  const auto service = NetworkService::make(session, settings, log, dispatch, Deployments::all(process.url));

  Waiting<AuthResponse> account;
  service->login({.email = "ann@example.com", .password = "quillmar-demo"}, account.completion());
  const std::string token = account.value().token;
  Waiting<ChildrenResponse> family;
  service->getChildren(family.completion());
  std::vector<std::string> devices;
  for (const auto& child : family.value().children) {
    for (const auto& device : child.devices) {
      devices.push_back(device.id);
    }
  }
  devices.resize(watchedDevices);

  BareHandle bare(process.url, process.caFile, token);
  simdjson::dom::parser parser;
  std::size_t entries = 0;
  const auto watchBarely = [&] {
    for (const auto& device : devices) {
      const auto& body = bare.fetch(*service->baseURL() + "/devices/" + device + "/logs?limit=" +
                                    std::to_string(limit / devices.size()) + "&since=2000-01-01T00:00:00Z");
      const simdjson::dom::array logs = parser.parse(body)["logs"];
      for (const auto entry : logs) {
        entries += entry["domain"].get_string().value().size();
      }
    }
  };
  const auto repeatedly = [](auto tick) {
    return [tick] {
      for (int i = 0; i < ticksARound; ++i) {
        tick();
      }
    };
  };
  const auto times = race(rounds, {repeatedly([&] { entries += watch(*service, dispatch, devices).size(); }),
                                   repeatedly(watchBarely)});
  std::printf("watching %zu devices: %.2fx a bare loop (%.0f µs of processor time a tick against %.0f)\n",
              devices.size(), times[0] / times[1], times[0].count() / ticksARound * 1e6,
              times[1].count() / ticksARound * 1e6);
  return entries > 0 ? 0 : 1;
}

}  // namespace
}  // namespace quillmar::bench

int main() { return quillmar::bench::run(); }
