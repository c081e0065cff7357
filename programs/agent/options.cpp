#include "programs/agent/options.h"

#include "platform/linux/data_directory.h"

namespace quillmar::agent {
namespace {

using command_line::to;

constexpr std::string_view about =
    "Quillmar on a child's device, without a window: this device joins a family once, and from then on its "
    "internet protection is kept running.";

constexpr std::string_view notes = R"(First steps:
  quillmar-agent doctor               Is everything there?
  quillmar-agent enroll --autostart   Join, and protect from now on
  quillmar-agent status               See that it works

Exit status: 0 done; 1 failed; 2 wrong usage; 3 this device is not enrolled;
4 this is a parent's device; 5 another program of this installation is in the
way; 6 enrolled, but not protected at the moment; 7 the file of --ca-file
can't be used; 130 cancelled.
)";

constexpr std::string_view aboutEnroll =
    R"(Asks the service for an enrollment code and shows it, as text and as a QR code
that the parent's app can scan. Waits until a parent has completed the
enrollment, for ten minutes at most, and ends by itself. Ctrl-C cancels, and so
does closing the terminal: the device is then as it was before.

A computer that was neither a parent's nor a child's becomes a child's device
with this, for good.
)";

constexpr std::string_view aboutRun =
    R"(Keeps the protection running: checks in with the service every minute and looks
after the tunnel. Writes a line for each event. Ends on Ctrl-C or SIGTERM, and
tells systemd when it is ready and that it is alive.

While the Quillmar window is open, the window does the work and this waits.
A device that is not enrolled yet is waited for as well.
)";

constexpr std::string_view aboutStatus =
    R"(Tells how this device is doing, as the running agent or window sees it. The
exit status is 0 if it is enrolled and protected.
)";

constexpr std::string_view aboutSync = R"(Checks in with the service now, and takes back a moved endpoint.
)";

constexpr std::string_view aboutReset =
    R"(Has this device forget its enrollment; it stays a child's device and can be
enrolled again. The service is not told: a parent removes the device from the
family's list. The tunnel stays as it is, and filters on until it is removed in
the system's network settings. Asks first.
)";

constexpr std::string_view aboutDoctor =
    R"(Says in one line for each part what works on this computer, and what to install
or start where it does not. The exit status is 0 if all that this device needs
is there.
)";

bool isOrdinary(const Options& options) {
  return !options.service && options.caFile.empty() && !options.simulatesTunnel &&
         options.dataDirectory == dataDirectory();
}

}  // namespace

command_line::Program programFor(Options& options) {
  const auto choose = [&options](Command command) {
    return [&options, command] { options.command = command; };
  };
  return {
      .name = "quillmar-agent",
      .about = about,
      .version = QUILLMAR_VERSION,
      .commands =
          {
              {"enroll", "Join a family: shows a code for the parent's app", aboutEnroll,
               choose(Command::enroll)},
              {"run", "Keep the protection running until told to stop", aboutRun, choose(Command::run)},
              {"status", "How this device is doing", aboutStatus, choose(Command::status)},
              {"sync", "Check in with the service now", aboutSync, choose(Command::sync)},
              {"reset", "Forget the enrollment; asks first", aboutReset, choose(Command::reset)},
              {"doctor", "What works on this computer, and what to do if not", aboutDoctor,
               choose(Command::doctor)},
          },
      .needsCommand = true,
      .options =
          {
              {"--data-dir", "DIR", "Keep everything in DIR", to(options.dataDirectory)},
              {"--service", "URL", "Use the service at URL for every region", to(options.service)},
              {"--ca-file", "FILE", "Trust the certificate authorities in FILE too", to(options.caFile)},
              {"--simulate-tunnel", "", "Simulate the tunnel: nothing is protected",
               to(options.simulatesTunnel)},
              {"--autostart", "",
               "Start the protection now and whenever you log in: by the user unit quillmar-agent.service "
               "where systemd runs, by the desktop's autostart elsewhere",
               to(options.startsWithSession), "enroll"},
              {"--verbose", "", "Write every line of the program's log", to(options.tellsEverything), "run"},
              {"--json", "", "One JSON object, for scripts", to(options.writesJson), "status"},
              {"--yes", "", "Don't ask", to(options.isConfirmed), "reset"},
          },
      .notes = notes,
  };
}

Parsed parse(const std::vector<std::string>& words) {
  Options options{.dataDirectory = dataDirectory()};
  const auto program = programFor(options);
  if (const auto answer = command_line::read(program, words)) {
    return *answer;
  }
  if (options.startsWithSession && !isOrdinary(options)) {
    return command_line::refusal(
        program, command_line::Answer::Reason::wrongOption,
        "'--autostart' starts the agent without any options, so it can't be used with others.");
  }
  return options;
}

}  // namespace quillmar::agent
