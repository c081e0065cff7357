#include "programs/quillmar/options.h"

#include <QCommandLineParser>

#include "platform/linux/data_directory.h"

namespace quillmar {

Options parseOptions(const QCoreApplication& application) {
  QCommandLineParser parser;
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
  parser.process(application);
  if (!parser.positionalArguments().isEmpty()) {
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
