#include <QCoreApplication>
#include <QTextStream>
#include <QTimer>
#include <array>
#include <cstddef>
#include <string>

#include "command_line/command_line.h"
#include "platform/common/sqlite_settings_store.h"
#include "platform/linux/system_log.h"
#include "platform/settings.h"
#include "tools/common/start.h"
#include "tools/walk/dns_client.h"

namespace {

constexpr auto names =
    std::to_array<const char*>({"www.school.example", "cdn.games.example", "api.messages.example.co.uk",
                                "video.example", "news.example", "library.example.org"});
constexpr int everyMilliseconds = 3000;

struct Given {
  std::string dataDirectory;
  std::string caFile;
};

quillmar::command_line::Program programFor(Given& given) {
  using namespace quillmar::command_line;
  return {.name = "quillmar-browse",
          .about =
              "Plays the child at a demonstration: as soon as the installation in a data directory is "
              "enrolled, it asks the device's own endpoint for one name after another, as the tunnel would.",
          .options = {
              {.name = "--data-dir",
               .value = "DIR",
               .help = "The data directory of the child's installation",
               .take = to(given.dataDirectory),
               .isNeeded = true},
              quillmar::authorityOption(given.caFile),
          }};
}

}  // namespace

int main(int count, char** arguments) {
  Given given;
  const auto program = programFor(given);
  if (const auto status = quillmar::endsAtOnce(program, count, arguments, given.caFile)) {
    return *status;
  }
  const QCoreApplication application(count, arguments);
  quillmar::SystemLog log("quillmar-browse");
  const quillmar::SqliteSettingsStore settings(given.dataDirectory, log);

  QTimer timer;
  std::size_t next = 0;
  QObject::connect(&timer, &QTimer::timeout, [&] {
    const auto endpoint = settings.read(quillmar::settings::childDohEndpoint);
    if (!endpoint || endpoint->empty()) {
      return;
    }
    const auto* const name = names[next++ % names.size()];
    const bool answered = quillmar::askOverHttps(*endpoint, name, given.caFile);
    QTextStream(stdout) << "The child's device asked for " << name << (answered ? "" : ", and got no answer")
                        << '\n';
  });
  timer.start(everyMilliseconds);
  return QCoreApplication::exec();
}
