#include <boost/asio/signal_set.hpp>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "tunnel/options.h"
#include "tunnel/worker/server.h"

namespace {

using namespace quillmar::tunnel;

void write(const std::string& text) {
  std::fputs(text.c_str(), stdout);
  std::fflush(stdout);
}

void tell(const std::string& line) { write(line + '\n'); }

ExitStatus complain(const std::string& problem, ExitStatus status) {
  std::fputs(("quillmar-tunnel: " + problem + '\n').c_str(), stderr);
  return status;
}

std::string textOf(const boost::asio::ip::tcp::endpoint& address) {
  std::ostringstream text;
  text << address;
  return text.str();
}

ExitStatus serve(boost::asio::io_context& context, const Options& options) {
  auto tls = TlsClient::make(options.caFile);
  if (const auto* problem = std::get_if<std::string>(&tls)) {
    return complain(*problem + '.', ExitStatus::failed);
  }
  auto sockets = bindSockets(context, options.listen);
  if (const auto* error = std::get_if<boost::system::error_code>(&sockets)) {
    return complain(textOf(options.listen) + " can't be listened on: " + error->message() + '.',
                    ExitStatus::failed);
  }
  const auto address = std::get<Sockets>(sockets).tcp.local_endpoint();
  std::vector<Sockets> listening;
  listening.push_back(std::get<Sockets>(std::move(sockets)));
  Server server(
      context, std::move(listening),
      {std::get<std::unique_ptr<TlsClient>>(std::move(tls)), std::make_unique<SystemBootstrap>(context)},
      tell);
  server.take(options.endpoint);

  boost::asio::signal_set endings(context, SIGINT, SIGTERM);
  endings.async_wait([&](const boost::system::error_code&, int) { context.stop(); });
  tell("Answers at " + textOf(address) + ", asks " + options.endpoint.authority + '.');
  server.run();
  return ExitStatus::done;
}

ExitStatus run(const std::vector<std::string>& words) {
  const auto parsed = parse(words);
  if (!parsed.options) {
    if (parsed.status != ExitStatus::done) {
      return complain(parsed.text, parsed.status);
    }
    write(parsed.text);
    return ExitStatus::done;
  }
  std::signal(SIGPIPE, SIG_IGN);  // a closed connection is seen where it is written to
  boost::asio::io_context context(1);
  const auto status = serve(context, *parsed.options);
  // The context would wait for the system's resolver, which can't be told to stop.
  std::_Exit(static_cast<int>(status));
}

}  // namespace

int main(int count, char** words) { return static_cast<int>(run({words + 1, words + count})); }
