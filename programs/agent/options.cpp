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
4 this is a parent's device; 5 another program of this installation does the
work and does not answer; 6 enrolled, but not protected at the moment; 7 the
file of --ca-file can't be used; 130 cancelled.
)";

constexpr std::string_view aboutEnroll =
    R"(Asks the service for an enrollment code and shows it, as text and as a QR code
that the parent's app can scan. Waits until a parent has completed the
enrollment, for ten minutes at most, and ends by itself. Ctrl-C cancels, and so
does closing the terminal: nothing is then changed.

A computer that was neither a parent's nor a child's device becomes a child's
device permanently.
)";

constexpr std::string_view aboutRun =
    R"(Keeps the protection running: checks in with the service every minute and
maintains the tunnel. Writes a line for each event. Ends on Ctrl-C or SIGTERM.
Notifies systemd when it is ready, and sends watchdog messages.

While the Quillmar window is open, the window does the work and this waits. If
the device is not enrolled yet, this waits for the enrollment.
)";

constexpr std::string_view aboutStatus =
    R"(Shows the state of the protection, as the running agent or window reports it.
The exit status is 0 if the device is enrolled and protected.
)";

constexpr std::string_view aboutSync =
    R"(Checks in with the service now, and applies an endpoint that has changed.
)";

constexpr std::string_view aboutReset =
    R"(Forgets this device's enrollment. It stays a child's device and can be enrolled
again. The service is not told: a parent removes the device from the family's
list. The tunnel stays unchanged, and continues to filter until it is removed in
the system's network settings. Asks first.
)";

constexpr std::string_view aboutDoctor =
    R"(Reports in one line for each part whether it works on this computer, and
otherwise what to install or start. The exit status is 0 if everything that this
device needs is there.
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
              {"status", "Show the state of the protection", aboutStatus, choose(Command::status)},
              {"sync", "Check in with the service now", aboutSync, choose(Command::sync)},
              {"reset", "Forget the enrollment; asks first", aboutReset, choose(Command::reset)},
              {"doctor", "Report what works on this computer, and what to do if not", aboutDoctor,
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
