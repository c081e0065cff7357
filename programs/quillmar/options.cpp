#include "programs/quillmar/options.h"

#include "platform/linux/data_directory.h"

namespace quillmar {

using command_line::to;

command_line::Program programFor(Options& options) {
  return {
      .name = "quillmar",
      .about = "Family internet protection: the parent's console and the child's agent.",
      .version = QUILLMAR_VERSION,
      .versionLetter = "-v",
      .commands = {{.name = "doctor",
                    .help =
                        "Report what works on this computer and what to install or start, without a window. "
                        "The exit status is 0 if what this installation needs is there.",
                    .choose = [&options] { options.asksForDoctor = true; }}},
      .options =
          {
              {"--data-dir", "DIR",
               "Keep everything in DIR; a second start with the same one shows the first's window.",
               to(options.dataDirectory)},
              {"--service", "URL", "Use the service at URL for every region.", to(options.service)},
              {"--ca-file", "FILE", "Trust the certificate authorities in FILE too.", to(options.caFile)},
              {"--sandbox", "",
               "Start the stand-in service beside the window and use that; the tunnel is simulated.",
               to(options.startsSandbox)},
              {"--simulate-tunnel", "",
               "Simulate the tunnel: nothing on this computer is changed or protected.",
               to(options.simulatesTunnel)},
          },
      .toolkitOptions =
          {
              {"-platform", "NAME", "The plugin that draws windows, and its options."},
              {"-platformpluginpath", "DIR", "The folder of these plugins."},
              {"-platformtheme", "NAME", "The desktop's theme."},
              {"-plugin", "NAME", "Load this plugin too."},
              {"-style", "NAME", "The style of controls."},
              {"-display", "NAME", "The X server."},
              {"-qwindowgeometry", "SIZE", "The window's size and place, like 400x800+50+50."},
              {"-qwindowicon", "FILE", "The window's icon."},
              {"-qwindowtitle", "TEXT", "The window's title."},
              {"-reverse", "", "Lay everything out from right to left."},
              {"-session", "ID", "The session to be restored."},
              {"-qmljsdebugger", "PORTS", "The ports for a QML debugger."},
          },
  };
}

std::variant<Options, int> readOptions(const std::vector<std::string>& words) {
  // Scripts distinguish an option unknown to this release from a wrong command.
  constexpr int wrongOption = 1;
  Options options{.dataDirectory = dataDirectory()};
  const auto program = programFor(options);
  if (const auto answer = command_line::read(program, words)) {
    const int status = command_line::say(program, *answer);
    return answer->reason == command_line::Answer::Reason::wrongOption ? wrongOption : status;
  }
  options.simulatesTunnel |= options.startsSandbox;
  return options;
}

}  // namespace quillmar
