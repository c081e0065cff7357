#include "tunnel/options.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

#include "tunnel/network/sockets.h"

namespace quillmar::tunnel {
namespace {

using Words = std::span<const std::string>;

constexpr std::string_view help = R"(Usage: quillmar-tunnel COMMAND [OPTION]...

Carries this machine's DNS to an endpoint over HTTPS (RFC 8484), and to nobody
else.

Commands:
  run       Be the VPN service that NetworkManager reaches
  release   Take away what 'run' has put up, whatever has become of it
  serve     Answer at an address, and turn nothing there

Options:
  --help     This text, or a command's
  --version  The version, and no more

Exit status: 0 done; 1 failed; 2 wrong usage.
)";

constexpr std::string_view helpOfRun = R"(Usage: quillmar-tunnel run [--ca-file FILE]

Owns the bus name live.quillmar.quillmar.PacketTunnel, and protects the machine
when NetworkManager connects a VPN of that type: all DNS, whatever server it is
for, goes to the connection's dohEndpoint, or nowhere. It has NetworkManager
connect it by itself. Runs in the foreground until SIGINT or SIGTERM, takes then
everything away, and writes a line for each event. Needs root.

The endpoint's address is kept in the directory STATE_DIRECTORY of the
environment, or in /var/lib/quillmar-tunnel.

Options:
  --ca-file FILE  Trust the certificate authorities in FILE too
)";

constexpr std::string_view helpOfRelease = R"(Usage: quillmar-tunnel release

Takes away the rules and the device of 'run': of one that was killed, or of one
that runs, which then ends its connection. What is not there is no problem.
Needs root, and no NetworkManager.
)";

constexpr std::string_view helpOfServe = R"(Usage: quillmar-tunnel serve --endpoint URL [OPTION]...

Answers the DNS questions that come to an address by asking an endpoint over
HTTPS. Runs in the foreground until SIGINT or SIGTERM, and writes a line for
each event. Needs no rights beyond its port.

Options:
  --endpoint URL    Ask this https URL
  --listen ADDRESS  Answer there, over UDP and TCP (127.0.0.1:53)
  --ca-file FILE    Trust the certificate authorities in FILE too

A name in the URL is looked up by the system's own resolver, which must not ask
this program in turn. An address, or localhost, needs no resolver.

Whoever may see this machine's processes sees the URL.
)";

constexpr std::string_view usualListen = "127.0.0.1:53";

// As written, before anything is looked at.
struct Given {
  std::optional<Command> command{};
  bool asksForHelp = false;
  bool asksForVersion = false;
  std::optional<std::string> endpoint{};
  std::optional<std::string> listen{};
  std::optional<std::string> caFile{};
};

struct CommandWord {
  std::string_view word;
  Command command;
  std::string_view help;
};
constexpr auto commands = std::to_array<CommandWord>({
    {"serve", Command::serve, helpOfServe},
    {"run", Command::run, helpOfRun},
    {"release", Command::release, helpOfRelease},
});

struct Setting {
  std::string_view word;
  std::optional<std::string> Given::*member;
  bool ofServe;
  bool ofRun;

  bool isOf(Command command) const {
    return (command == Command::serve && ofServe) || (command == Command::run && ofRun);
  }
};
constexpr auto settings = std::to_array<Setting>({
    {"--endpoint", &Given::endpoint, true, false},
    {"--listen", &Given::listen, true, false},
    {"--ca-file", &Given::caFile, true, true},
});

struct Switch {
  std::string_view word;
  bool Given::*member;
};
constexpr auto switches = std::to_array<Switch>({
    {"--help", &Given::asksForHelp},
    {"-h", &Given::asksForHelp},
    {"--version", &Given::asksForVersion},
});

Parsed refuse(const std::string& problem) {
  return {.text = problem + "\nTry 'quillmar-tunnel --help'.", .status = ExitStatus::usage};
}

// What is wrong with the words, if anything is.
std::optional<std::string> read(Words words, Given& given) {
  while (!words.empty()) {
    const std::string& word = words.front();
    words = words.subspan(1);
    const auto equals = word.find('=');
    const auto known = std::ranges::find(switches, word, &Switch::word);
    const auto command = std::ranges::find(commands, word, &CommandWord::word);
    const auto setting =
        std::ranges::find(settings, std::string_view(word).substr(0, equals), &Setting::word);
    if (known != switches.end()) {
      given.*known->member = true;
    } else if (command != commands.end() && given.command) {
      return "there is no command '" + word + "' beside another one.";
    } else if (command != commands.end()) {
      given.command = command->command;
    } else if (setting == settings.end()) {
      return (word.starts_with('-') ? "there is no option '" : "there is no command '") + word + "'.";
    } else if (equals != std::string::npos) {
      given.*setting->member = word.substr(equals + 1);
    } else if (!words.empty()) {
      given.*setting->member = words.front();
      words = words.subspan(1);
    } else {
      return "the option '" + word + "' needs a value.";
    }
  }
  return std::nullopt;
}

const CommandWord& wordOf(Command command) {
  return *std::ranges::find(commands, command, &CommandWord::command);
}

Parsed understandServe(const Given& given) {
  if (given.endpoint.value_or("").empty()) {
    return refuse("the option '--endpoint' is missing.");
  }
  const auto endpoint = parseEndpoint(*given.endpoint);
  if (!endpoint) {
    return refuse("the endpoint is not an https URL with a host.");
  }
  const std::string listenText = given.listen.value_or(std::string(usualListen));
  const auto listen = parseListenAddress(listenText);
  if (!listen) {
    return refuse("'" + listenText + "' is not an address to listen on.");
  }
  return {.options = Options{Command::serve, *endpoint, *listen, given.caFile.value_or("")}};
}

Parsed understand(const Given& given) {
  if (!given.command) {
    return refuse("a command is missing.");
  }
  for (const auto& setting : settings) {
    if (given.*setting.member && !setting.isOf(*given.command)) {
      const auto word = wordOf(*given.command).word;
      return refuse("'" + std::string(word) + "' has no option '" + std::string(setting.word) + "'.");
    }
  }
  return given.command == Command::serve
             ? understandServe(given)
             : Parsed{.options = Options{.command = *given.command, .caFile = given.caFile.value_or("")}};
}

}  // namespace

Parsed parse(const std::vector<std::string>& words) {
  Given given;
  const auto problem = read(words, given);
  if (problem) {
    return refuse(*problem);
  }
  if (given.asksForHelp) {
    return {.text = std::string(given.command ? wordOf(*given.command).help : help)};
  }
  if (given.asksForVersion) {
    return {.text = "quillmar-tunnel " QUILLMAR_VERSION "\n"};
  }
  return understand(given);
}

}  // namespace quillmar::tunnel
