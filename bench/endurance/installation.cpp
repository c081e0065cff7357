#include "bench/endurance/installation.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>

#include "platform/common/sqlite_settings_store.h"
#include "platform/settings.h"
#include "testing/recording_log.h"

namespace quillmar::endurance {

namespace fs = std::filesystem;

Session::Session() {
  fs::permissions(runtime_.path(), fs::perms::owner_all);
  ::setenv("XDG_RUNTIME_DIR", runtime_.path().c_str(), 1);  // NOLINT(concurrency-mt-unsafe): no thread yet
}

fs::path Session::newFolder() { return home() / std::to_string(++folders_); }

Variables Session::variables(const Variables& more) const {
  Variables all = more;
  all.insert({{"PATH", "/usr/bin:/bin"},
              {"HOME", home().string()},
              {"XDG_RUNTIME_DIR", runtime_.path().string()},
              {"QT_QPA_PLATFORM", "offscreen"},
              {"QT_QUICK_BACKEND", "software"},
              {"LC_ALL", "C.UTF-8"}});
  return all;
}

Stored storedIn(const fs::path& data, sandbox::Service& service) {
  RecordingLog log;
  Stored stored;
  {
    const SqliteSettingsStore store(data, log);
    require(store.isReadable(), "The settings can't be read.");
    stored = {store.boolean(settings::childIsEnrolled),
              store.read(settings::childDeviceID).value_or(std::string())};
    const bool hasEndpoint =
        store.read(settings::childDohEndpoint).value_or(std::string()).starts_with("https://");
    const bool isChilds = store.read(settings::deviceRole) == "child";
    require(stored.isEnrolled == !stored.device.empty() && stored.isEnrolled == hasEndpoint &&
                (isChilds || !stored.isEnrolled),
            "An enrollment is half stored.");
  }
  require(log.printed().empty(), "The settings are damaged.");
  // The last is a draft that nobody reads, and that the next one replaces.
  constexpr std::array<std::string_view, 7> lasting{
      "agent.lock",           "instance.lock",           "settings.db", "settings.db-shm", "settings.db-wal",
      "simulated-tunnel.txt", "simulated-tunnel.txt.new"};
  for (const auto& file : fs::directory_iterator(data)) {
    require(std::ranges::find(lasting, file.path().filename().string()) != lasting.end(),
            file.path().string() + " stays.");
  }
  if (stored.isEnrolled) {
    const auto answer = service.ask("GET", "/api/v1/enrollment/status/" + stored.device);
    require(answer.body.find(R"("status":"completed")") != std::string::npos,
            "The service does not know the device.");
  }
  return stored;
}

std::string between(const std::string& text, const std::string& mark, char ending) {
  const auto start = text.find(mark);
  const auto end = start == std::string::npos ? start : text.find(ending, start + mark.size());
  return end == std::string::npos ? std::string()
                                  : text.substr(start + mark.size(), end - start - mark.size());
}

}  // namespace quillmar::endurance
