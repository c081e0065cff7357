#include "programs/agent/options.h"

#include <algorithm>
#include <array>
#include <span>

#include "platform/linux/data_directory.h"

namespace quillmar::agent {
namespace {

using Words = std::span<const std::string>;

struct CommandWord {
  Command command;
  std::string_view word;
  std::string_view help;
};

constexpr std::string_view overview = R"(Usage: quillmar-agent [OPTION]... COMMAND

Quillmar on a child's device, without a window: this device joins a family
once, and from then on its internet protection is kept running.

Commands:
  enroll [--autostart]  Join a family: shows a code for the parent's app
  run [--verbose]       Keep the protection running until told to stop
  status [--json]       How this device is doing
  sync                  Check in with the service now
  reset [--yes]         Forget the enrollment; asks first
  doctor                What works on this computer, and what to do if not

Options:
  --data-dir DIR        Keep everything in DIR
  --service URL         Use the service at URL for every region
  --ca-file FILE        Trust the certificate authorities in FILE too
  --simulate-tunnel     Simulate the tunnel: nothing is protected
  --help, --version     This text, or the version, and no more
  COMMAND --help        More about a command

First steps:
  quillmar-agent doctor               Is everything there?
  quillmar-agent enroll --autostart   Join, and protect from now on
  quillmar-agent status               See that it works

Exit status: 0 done; 1 failed; 2 wrong usage; 3 this device is not enrolled;
4 this is a parent's device; 5 another program of this installation is in the
way; 6 enrolled, but not protected at the moment; 7 the file of --ca-file
can't be used; 130 cancelled.
)";

constexpr auto commandWords = std::to_array<CommandWord>({
    {Command::enroll, "enroll", R"(Usage: quillmar-agent enroll [--autostart]

Asks the service for an enrollment code and shows it, as text and as a QR code
that the parent's app can scan. Waits until a parent has completed the
enrollment, for ten minutes at most, and ends by itself. Ctrl-C cancels, and so
does closing the terminal: the device is then as it was before.

A computer that was neither a parent's nor a child's becomes a child's device
with this, for good.

  --autostart   Start the protection now and whenever you log in: by the user
                unit quillmar-agent.service where systemd runs, by the
                desktop's autostart elsewhere
)"},
    {Command::run, "run", R"(Usage: quillmar-agent run [--verbose]

Keeps the protection running: checks in with the service every minute and looks
after the tunnel. Writes a line for each event. Ends on Ctrl-C or SIGTERM, and
tells systemd when it is ready and that it is alive.

While the Quillmar window is open, the window does the work and this waits.
A device that is not enrolled yet is waited for as well.

  --verbose     Write every line of the program's log
)"},
    {Command::status, "status", R"(Usage: quillmar-agent status [--json]

Tells how this device is doing, as the running agent or window sees it. The
exit status is 0 if it is enrolled and protected.

  --json        One JSON object, for scripts
)"},
    {Command::sync, "sync", R"(Usage: quillmar-agent sync

Checks in with the service now, and takes back a moved endpoint.
)"},
    {Command::reset, "reset", R"(Usage: quillmar-agent reset [--yes]

Has this device forget its enrollment; it stays a child's device and can be
enrolled again. The service is not told: a parent removes the device from the
family's list. The tunnel stays as it is, and filters on until it is removed in
the system's network settings. Asks first.

  --yes         Don't ask
)"},
    {Command::doctor, "doctor", R"(Usage: quillmar-agent doctor

Says in one line for each part what works on this computer, and what to install
or start where it does not. The exit status is 0 if all that this device needs
is there.
)"},
});

struct Switch {
  std::string_view word;
  std::optional<Command> command;  // nothing: any
  bool Options::*member;
};

constexpr auto switches = std::to_array<Switch>({
    {"--autostart", Command::enroll, &Options::startsWithSession},
    {"--verbose", Command::run, &Options::tellsEverything},
    {"--json", Command::status, &Options::writesJson},
    {"--yes", Command::reset, &Options::isConfirmed},
    {"--simulate-tunnel", std::nullopt, &Options::simulatesTunnel},
});

struct Setting {
  std::string_view word;
  void (*assign)(Options&, std::string);
};

constexpr auto values = std::to_array<Setting>({
    {"--data-dir", [](Options& options, std::string value) { options.dataDirectory = std::move(value); }},
    {"--service", [](Options& options, std::string value) { options.service = std::move(value); }},
    {"--ca-file", [](Options& options, std::string value) { options.caFile = std::move(value); }},
});

Parsed refuse(const std::string& problem) {
  return {.options = {}, .text = problem + "\nTry 'quillmar-agent --help'.", .status = ExitStatus::usage};
}

const CommandWord& described(Command command) {
  return *std::ranges::find(commandWords, command, &CommandWord::command);
}

// The words one after another, with what they have given so far.
class Reader {
 public:
  explicit Reader(Words words) : words_(words) { options_.dataDirectory = dataDirectory(); }

  Parsed read() {
    while (!words_.empty() && !answer_) {
      const std::string& word = words_.front();
      words_ = words_.subspan(1);
      take(word);
    }
    return answer_ ? *answer_ : finish();
  }

 private:
  void take(const std::string& word) {
    if (word == "--help" || word == "-h") {
      asksForHelp_ = true;
    } else if (word == "--version") {
      answer_ = {.options = {}, .text = "quillmar-agent " QUILLMAR_VERSION "\n", .status = ExitStatus::done};
    } else if (!takeSwitch(word) && !takeValue(word) && !takeCommand(word)) {
      answer_ =
          refuse((word.starts_with('-') ? "there is no option '" : "there is no command '") + word + "'.");
    }
  }

  bool takeSwitch(const std::string& word) {
    const auto known = std::ranges::find(switches, word, &Switch::word);
    if (known == switches.end()) {
      return false;
    }
    options_.*known->member = true;
    given_.push_back(&*known);
    return true;
  }

  // "--word value" and "--word=value".
  bool takeValue(const std::string& word) {
    const auto equals = word.find('=');
    const auto known = std::ranges::find(values, std::string_view(word).substr(0, equals), &Setting::word);
    if (known == values.end()) {
      return false;
    }
    if (equals != std::string::npos) {
      known->assign(options_, word.substr(equals + 1));
    } else if (!words_.empty()) {
      known->assign(options_, words_.front());
      words_ = words_.subspan(1);
    } else {
      answer_ = refuse("the option '" + word + "' needs a value.");
    }
    return true;
  }

  bool takeCommand(const std::string& word) {
    const auto known = std::ranges::find(commandWords, word, &CommandWord::word);
    if (known == commandWords.end() || command_) {
      return false;
    }
    command_ = known->command;
    return true;
  }

  Parsed finish() {
    if (asksForHelp_) {
      return {.options = {},
              .text = std::string(command_ ? described(*command_).help : overview),
              .status = ExitStatus::done};
    }
    if (!command_) {
      return refuse("a command is missing.");
    }
    for (const Switch* given : given_) {
      if (given->command && given->command != command_) {
        return refuse("the option '" + std::string(given->word) + "' belongs to '" +
                      std::string(described(*given->command).word) + "'.");
      }
    }
    if (options_.startsWithSession && !isOrdinary()) {
      return refuse("'--autostart' starts the agent without any options, so it can't be used with others.");
    }
    options_.command = *command_;
    return {.options = options_, .text = {}, .status = ExitStatus::done};
  }

  bool isOrdinary() const {
    return !options_.service && options_.caFile.empty() && !options_.simulatesTunnel &&
           options_.dataDirectory == dataDirectory();
  }

  Words words_;
  Options options_;
  std::optional<Command> command_;
  std::vector<const Switch*> given_;
  bool asksForHelp_ = false;
  std::optional<Parsed> answer_;
};

}  // namespace

Parsed parse(const std::vector<std::string>& words) { return Reader(words).read(); }

}  // namespace quillmar::agent
