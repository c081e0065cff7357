#include "sandbox/program.h"

#include <boost/asio/ip/address_v4.hpp>
#include <csignal>
#include <iostream>

#include "command_line/command_line.h"
#include "sandbox/http/client.h"
#include "sandbox/json.h"
#include "sandbox/service.h"

namespace quillmar::sandbox {
namespace {

// The values of the command line.
struct Given {
  Options options{.port = 8790, .tlsPort = 8791};
  bool keepsNothing = false;
  bool approves = false;
  std::string code = {};
};

command_line::Program programFor(Given& given) {
  using namespace command_line;
  constexpr int highestPort = 65535;
  Options& options = given.options;
  return {
      .name = "quillmar-sandbox",
      .about =
          "The stand-in service, on this machine only unless told otherwise. Runs until SIGINT or SIGTERM, "
          "and first writes a line "
          "with its addresses.",
      .commands = {{.name = "approve",
                    .help =
                        "Complete the enrollment of this code at the service on --port, as a parent would",
                    .choose = [&given] { given.approves = true; },
                    .arguments = {{.name = "CODE", .take = to(given.code)}}}},
      .options =
          {
              {"--listen", "ADDRESS", "Answer at this IPv4 address (127.0.0.1), for other machines to reach",
               [&options](std::string_view text) {
                 boost::system::error_code problem;
                 boost::asio::ip::make_address_v4(text, problem);
                 options.address = text;
                 return !problem;
               }},
              {"--port", "PORT", "Answer HTTP there (8790); 0 for any free one",
               within(options.port, 0, highestPort)},
              {"--tls-port", "PORT", "Answer HTTPS there (8791); 0 for any free one",
               within(options.tlsPort, 0, highestPort)},
              {"--data", "DIR", "Keep the database and the certificates in DIR", to(options.data)},
              {"--memory", "", "Keep everything in memory, as without --data", to(given.keepsNothing)},
              {"--seed", "demo|empty", "What a new database starts with (empty)",
               oneOf(options.seed, {{"demo", Seed::demo}, {"empty", Seed::empty}})},
              {"--traffic", "", "Invent DNS queries of the devices that are online", to(options.traffic)},
              {"--upstream", "ADDRESS", "Look up allowed names at the DNS server ADDRESS",
               to(options.upstream)},
          },
  };
}

int complain(const std::string& text) {
  std::cerr << "quillmar-sandbox: " << text << '\n';
  return 1;
}

int approve(int port, const std::string& code) {
  const auto answer = post(port, "/sandbox/approve", Json{{"enrollment_code", code}}.dump());
  if (!answer) {
    return complain(answer.failure());
  }
  const auto body = Json::parse(answer->body, nullptr, false);
  if (answer->status >= 400) {
    return complain(body.is_object() ? body.value("error", "Refused.") : "Refused.");
  }
  std::cout << body.value("message", "") << '\n';
  return 0;
}

int serve(const Options& options) {
  // Blocked before any thread starts, so that the signals wait for the sigwait below.
  sigset_t endings;
  sigemptyset(&endings);
  sigaddset(&endings, SIGTERM);
  sigaddset(&endings, SIGINT);
  sigaddset(&endings, SIGHUP);
  pthread_sigmask(SIG_BLOCK, &endings, nullptr);
  std::signal(SIGPIPE, SIG_IGN);

  const auto service = Service::start(options);
  if (!service) {
    return complain(service.failure());
  }
  std::cout << "quillmar-sandbox " << (*service)->url() << ' ' << (*service)->secureUrl()
            << " ca=" << (*service)->caFile().string() << std::endl;
  int received = 0;
  sigwait(&endings, &received);
  return 0;
}

}  // namespace

int runProgram(const std::vector<std::string>& words) {
  Given given;
  const auto program = programFor(given);
  if (const auto answer = command_line::read(program, words)) {
    return command_line::say(program, *answer);
  }
  if (given.approves) {
    return approve(given.options.port, given.code);
  }
  if (given.keepsNothing && given.options.data) {
    return command_line::say(program,
                             command_line::refusal(program, command_line::Answer::Reason::wrongOption,
                                                   "'--data' and '--memory' exclude each other."));
  }
  return serve(given.options);
}

}  // namespace quillmar::sandbox
