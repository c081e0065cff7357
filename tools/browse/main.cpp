#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTextStream>
#include <QTimer>
#include <array>
#include <cstddef>

#include "platform/common/authority_file.h"
#include "platform/common/sqlite_settings_store.h"
#include "platform/linux/system_log.h"
#include "platform/settings.h"
#include "tools/walk/dns_client.h"

namespace {

constexpr auto names =
    std::to_array<const char*>({"www.school.example", "cdn.games.example", "api.messages.example.co.uk",
                                "video.example", "news.example", "library.example.org"});
constexpr int everyMilliseconds = 3000;

}  // namespace

// Plays the child at a demonstration: as soon as the installation in a data directory is enrolled, it asks
// the device's own endpoint for one name after another, as the tunnel would.
int main(int count, char** arguments) {
  const QCoreApplication application(count, arguments);
  QCommandLineParser parser;
  parser.addHelpOption();
  parser.addOption({"data-dir", "The data directory of the child's installation.", "directory"});
  parser.addOption({"ca-file", "The service's certificate authority, as PEM.", "file"});
  parser.process(application);
  if (!parser.isSet("data-dir")) {
    parser.showHelp(2);
  }
  if (const auto problem = quillmar::problemWithAuthorities(parser.value("ca-file").toStdString())) {
    QTextStream(stderr) << "quillmar-browse: " << problem->c_str() << '\n';
    return quillmar::unusableAuthorities;
  }
  quillmar::SystemLog log("quillmar-browse");
  const quillmar::SqliteSettingsStore settings(parser.value("data-dir").toStdString(), log);

  QTimer timer;
  std::size_t next = 0;
  QObject::connect(&timer, &QTimer::timeout, [&] {
    const auto endpoint = settings.read(quillmar::settings::childDohEndpoint);
    if (!endpoint || endpoint->empty()) {
      return;
    }
    const auto* const name = names[next++ % names.size()];
    const bool answered = quillmar::askOverHttps(*endpoint, name, parser.value("ca-file"));
    QTextStream(stdout) << "The child's device asked for " << name << (answered ? "" : ", and got no answer")
                        << '\n';
  });
  timer.start(everyMilliseconds);
  return QCoreApplication::exec();
}
