#include "programs/quillmar/options.h"

#include <QCommandLineParser>
#include <QStringList>
#include <algorithm>
#include <iterator>

#include "platform/linux/data_directory.h"

namespace quillmar {
namespace {

const QStringList doctor{QStringLiteral("doctor")};

void describeOptions(QCommandLineParser& parser) {
  parser.setApplicationDescription("Family internet protection: the parent's console and the child's agent.");
  parser.addHelpOption();
  parser.addVersionOption();
  parser.addOption({"data-dir",
                    "Keep everything in DIR; a second start with the same one shows the first's window.",
                    "DIR"});
  parser.addOption({"service", "Use the service at URL for every region.", "URL"});
  parser.addOption({"ca-file", "Trust the certificate authorities in FILE too.", "FILE"});
  parser.addOption(
      {"sandbox", "Start the stand-in service beside the window and use that; the tunnel is simulated."});
  parser.addOption(
      {"simulate-tunnel", "Simulate the tunnel: nothing on this computer is changed or protected."});
  parser.addPositionalArgument(
      doctor.front(),
      "Say what works on this computer and what to install or start, without a window. "
      "The exit status is 0 if what this installation needs is there.",
      "[doctor]");
}

}  // namespace

bool asksForDoctor(int count, char** arguments) {
  QStringList words;
  std::transform(arguments, arguments + count, std::back_inserter(words),
                 [](const char* word) { return QString::fromLocal8Bit(word); });
  QCommandLineParser parser;
  describeOptions(parser);
  parser.parse(words);
  return parser.positionalArguments() == doctor;
}

Options parseOptions(const QCoreApplication& application) {
  QCommandLineParser parser;
  describeOptions(parser);
  parser.process(application);
  if (const auto words = parser.positionalArguments(); !words.isEmpty() && words != doctor) {
    parser.showHelp(2);
  }
  return {.dataDirectory = parser.isSet("data-dir")
                               ? std::filesystem::path(parser.value("data-dir").toStdString())
                               : dataDirectory(),
          .service =
              parser.isSet("service") ? std::optional(parser.value("service").toStdString()) : std::nullopt,
          .caFile = parser.value("ca-file").toStdString(),
          .startsSandbox = parser.isSet("sandbox"),
          .simulatesTunnel = parser.isSet("sandbox") || parser.isSet("simulate-tunnel")};
}

}  // namespace quillmar
