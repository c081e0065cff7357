#include "tunnel/options.h"

#include <string_view>

#include "tunnel/network/sockets.h"

namespace quillmar::tunnel {
namespace {

using command_line::to;

constexpr std::string_view about =
    "Carries this machine's DNS to one endpoint over HTTPS (RFC 8484), and nowhere else.";

constexpr std::string_view notes = R"(Exit status: 0 done; 1 failed; 2 wrong usage.
)";

constexpr std::string_view aboutRun =
    R"(Owns the bus name live.quillmar.quillmar.PacketTunnel, and protects the machine
when NetworkManager connects a VPN of that type: all DNS, whatever server it is
for, goes to the connection's dohEndpoint, or nowhere. Asks NetworkManager to
connect at start. Runs in the foreground until SIGINT or SIGTERM, then removes
its rules and its device. Writes a line for each event. Needs root.

The endpoint's address is kept in the directory STATE_DIRECTORY of the
environment, or in /var/lib/quillmar-tunnel.
)";

constexpr std::string_view aboutRelease =
    R"(Removes the rules and the device of 'run', also after it was killed. If it runs,
it ends its connection. Not an error if there is nothing to remove. Needs root;
works without NetworkManager.
)";

constexpr std::string_view aboutServe =
    R"(Answers the DNS questions that come to an address by asking an endpoint over
HTTPS. Runs in the foreground until SIGINT or SIGTERM, and writes a line for
each event. Needs no rights beyond its port.

A name in the URL is looked up by the system's own resolver, which must not use
this program. An address, or localhost, needs no resolver.

Any user who can list this machine's processes sees the URL.
)";

bool takeEndpoint(Options& options, std::string_view text) {
  const auto endpoint = parseEndpoint(std::string(text));
  options.endpoint = endpoint.value_or(Endpoint());
  return endpoint.has_value();
}

bool takeListen(Options& options, std::string_view text) {
  const auto address = parseListenAddress(std::string(text));
  options.listen = address.value_or(boost::asio::ip::tcp::endpoint());
  return address.has_value();
}

}  // namespace

command_line::Program programFor(Options& options) {
  const auto choose = [&options](Command command) {
    return [&options, command] { options.command = command; };
  };
  return {
      .name = "quillmar-tunnel",
      .about = about,
      .version = QUILLMAR_VERSION,
      .commands = {{"run", "Protect this machine as a VPN service of NetworkManager", aboutRun,
                    choose(Command::run)},
                   {"release", "Remove the rules and the device of 'run'", aboutRelease,
                    choose(Command::release)},
                   {"serve", "Answer at an address, without changing this machine's DNS", aboutServe,
                    choose(Command::serve)}},
      .needsCommand = true,
      .options =
          {
              {"--endpoint",
               "URL",
               "Ask this https URL",
               [&options](std::string_view text) { return takeEndpoint(options, text); },
               "serve",
               {},
               true},
              {"--listen", "ADDRESS", "Answer there, over UDP and TCP (127.0.0.1:53)",
               [&options](std::string_view text) { return takeListen(options, text); }, "serve"},
              {"--ca-file", "FILE", "Trust the certificate authorities in FILE too", to(options.caFile)},
          },
      .notes = notes,
  };
}

Parsed parse(const std::vector<std::string>& words) {
  Options options{.listen = *parseListenAddress("127.0.0.1:53")};
  const auto program = programFor(options);
  if (const auto answer = command_line::read(program, words)) {
    return *answer;
  }
  return options;
}

}  // namespace quillmar::tunnel
