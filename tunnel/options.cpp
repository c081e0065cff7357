#include "tunnel/options.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

#include "tunnel/network/sockets.h"

namespace quillmar::tunnel {
namespace {

using Words = std::span<const std::string>;

constexpr std::string_view help = R"(Usage: quillmar-tunnel serve --endpoint URL [OPTION]...

Answers this machine's DNS by asking an endpoint over HTTPS (RFC 8484), and
nobody else. Runs in the foreground until SIGINT or SIGTERM, and writes a line
for each event.

Options:
  --endpoint URL    Ask this https URL
  --listen ADDRESS  Answer there, over UDP and TCP (127.0.0.1:53)
  --ca-file FILE    Trust the certificate authorities in FILE too
  --help            This text, and no more
  --version         The version, and no more

A name in the URL is looked up by the system's own resolver, which must not ask
this program in turn. An address, or localhost, needs no resolver.

Whoever may see this machine's processes sees the URL.

Exit status: 0 done; 1 failed; 2 wrong usage.
)";

// As written, before anything is looked at.
struct Given {
  bool serves = false;
  bool asksForHelp = false;
  bool asksForVersion = false;
  std::string endpoint{};
  std::string listen = "127.0.0.1:53";
  std::string caFile{};
};

struct Setting {
  std::string_view word;
  std::string Given::*member;
};
constexpr auto settings = std::to_array<Setting>({
    {"--endpoint", &Given::endpoint},
    {"--listen", &Given::listen},
    {"--ca-file", &Given::caFile},
});

struct Switch {
  std::string_view word;
  bool Given::*member;
};
constexpr auto switches = std::to_array<Switch>({
    {"serve", &Given::serves},
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
    const auto setting =
        std::ranges::find(settings, std::string_view(word).substr(0, equals), &Setting::word);
    if (known != switches.end()) {
      given.*known->member = true;
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

Parsed understand(const Given& given) {
  if (!given.serves) {
    return refuse("a command is missing.");
  }
  if (given.endpoint.empty()) {
    return refuse("the option '--endpoint' is missing.");
  }
  const auto endpoint = parseEndpoint(given.endpoint);
  if (!endpoint) {
    return refuse("the endpoint is not an https URL with a host.");
  }
  const auto listen = parseListenAddress(given.listen);
  if (!listen) {
    return refuse("'" + given.listen + "' is not an address to listen on.");
  }
  return {.options = Options{*endpoint, *listen, given.caFile}};
}

}  // namespace

Parsed parse(const std::vector<std::string>& words) {
  Given given;
  const auto problem = read(words, given);
  if (problem) {
    return refuse(*problem);
  }
  if (given.asksForHelp) {
    return {.text = std::string(help)};
  }
  if (given.asksForVersion) {
    return {.text = "quillmar-tunnel " QUILLMAR_VERSION "\n"};
  }
  return understand(given);
}

}  // namespace quillmar::tunnel
