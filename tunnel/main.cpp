#include <sys/signalfd.h>

#include <boost/asio/error.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <system_error>
#include <utility>
#include <variant>
#include <vector>

#include "command_line/standard_streams.h"
#include "tunnel/link/constants.h"
#include "tunnel/link/neighbours.h"
#include "tunnel/link/open_file.h"
#include "tunnel/link/redirection.h"
#include "tunnel/link/tun_device.h"
#include "tunnel/options.h"
#include "tunnel/service/network_watch.h"
#include "tunnel/service/reached_addresses.h"
#include "tunnel/service/service.h"
#include "tunnel/service/worker_process.h"
#include "tunnel/worker/server.h"
#include "tunnel/worker/worker.h"

namespace {

using namespace quillmar::tunnel;

// The command with which the service starts its worker. It is not for users.
constexpr const char* workersCommand = "worker";

bool write(const std::string& text) {
  return std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0;
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

// Stops the context on SIGINT and SIGTERM. Must be created before any thread. The signals are blocked and
// read from a descriptor, because a signal that interrupts a call of the message bus makes the call fail.
class Endings {
 public:
  explicit Endings(boost::asio::io_context& context) : signals_(context, block()) {
    signals_.async_wait(Descriptor::wait_read, [&context](boost::system::error_code error) {
      if (!error) {
        context.stop();
      }
    });
  }

 private:
  using Descriptor = boost::asio::posix::stream_descriptor;

  static int block() {
    sigset_t signals{};
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
  }

  Descriptor signals_;
};

ExitStatus serve(boost::asio::io_context& context, const Options& options) {
  const Endings endings(context);
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

  tell("Answers at " + textOf(address) + ", asks " + options.endpoint.authority + '.');
  server.run();
  return ExitStatus::done;
}

std::filesystem::path stateDirectory() {
  const char* const named = std::getenv("STATE_DIRECTORY");  // NOLINT(concurrency-mt-unsafe): no thread yet
  return named != nullptr ? named : "/var/lib/quillmar-tunnel";
}

// Sockets bound to the tunnel's addresses, which exist once the device is up: a pair for each address, UDP
// before TCP. Without IPv6 there is one pair.
std::variant<std::vector<OpenFile>, std::string> bindTunnelSockets() {
  boost::asio::io_context context;
  std::vector<OpenFile> all;
  for (const std::string address : {tunnelAddress4, tunnelAddress6}) {
    auto sockets = bindSockets(context, *parseListenAddress(address), Presence::later);
    if (auto* bound = std::get_if<Sockets>(&sockets)) {
      all.emplace_back(bound->udp.release());
      all.emplace_back(bound->tcp.release());
      continue;
    }
    const auto error = std::get<boost::system::error_code>(sockets);
    if (error != boost::asio::error::address_family_not_supported || all.empty()) {
      return address + " can't be listened on: " + error.message();
    }
  }
  return all;
}

ExitStatus runService(boost::asio::io_context& context, const std::string& caFile) {
  const Endings endings(context);
  auto sockets = bindTunnelSockets();
  if (const auto* problem = std::get_if<std::string>(&sockets)) {
    return complain(*problem + '.', ExitStatus::failed);
  }
  auto& listeners = std::get<std::vector<OpenFile>>(sockets);
  const bool hasIp6 = listeners.size() > 2;
  const auto user = workersUser();
  ReachedAddresses addresses(stateDirectory());

  std::optional<Service> service;
  WorkerProcess worker(context,
                       // This version, even if the file has been replaced by another one.
                       {.program = "/proc/self/exe",
                        .words = {"quillmar-tunnel", workersCommand},
                        .listeners = std::move(listeners),
                        .user = user,
                        .caFile = caFile},
                       {.tell = tell,
                        .servers = [&] { return service->nameServers(); },
                        .reached =
                            [&addresses](const std::string& host, const boost::asio::ip::address& address) {
                              if (const auto problem = addresses.keep(host, address); !problem.empty()) {
                                tell(problem + '.');
                              }
                            },
                        .lastGood = [&addresses] { return addresses.all(); }});
  const NetworkWatch network(context, [&worker] {
    forgetUnansweredNeighbours();
    tell("The network has changed.");
    worker.networkChanged();
  });
  try {
    service.emplace(
        context, Service::Machine{.hasIp6 = hasIp6, .passes = user.user},
        [&](const std::string& endpoint) { worker.take(endpoint); }, tell);
    service->run();
  } catch (const sdbus::Error& error) {
    // The redirection stays: losing the bus is no reason to end protection.
    return complain("the message bus: " + error.getMessage() + '.', ExitStatus::failed);
  }
  service->end();
  return ExitStatus::done;
}

// Continues after a failure, so that as much as possible is removed.
ExitStatus release() {
  auto status = ExitStatus::done;
  for (const auto& problem : {releaseRedirection(), removeDevice(deviceName)}) {
    if (!problem.empty()) {
      status = complain(problem + '.', ExitStatus::failed);
    }
  }
  return status;
}

ExitStatus perform(const Options& options) {
  if (options.command == Command::release) {
    return release();
  }
  std::signal(SIGPIPE, SIG_IGN);  // writing to a closed connection returns an error instead
  // The only other thread is the system's resolver. It uses neither sockets nor timers, so these need no
  // locks.
  boost::asio::io_context context(BOOST_ASIO_CONCURRENCY_HINT_UNSAFE_IO);
  const auto status =
      options.command == Command::run ? runService(context, options.caFile) : serve(context, options);
  // Destroying the context would wait for the system's resolver, which can't be cancelled.
  std::_Exit(static_cast<int>(status));
}

ExitStatus run(const std::vector<std::string>& words) {
  const auto parsed = parse(words);
  if (!parsed.options) {
    if (parsed.status != ExitStatus::done) {
      return complain(parsed.text, parsed.status);
    }
    return write(parsed.text)
               ? ExitStatus::done
               : complain("The output can't be written: " + std::generic_category().message(errno) + '.',
                          ExitStatus::failed);
  }
  return perform(*parsed.options);
}

}  // namespace

int main(int count, char** words) {
  const std::vector<std::string> said(words + 1, words + count);
  if (said == std::vector<std::string>{workersCommand} && isWorkersProcess()) {
    std::_Exit(runWorker());
  }
  quillmar::command_line::holdStandardStreams();
  return static_cast<int>(run(said));
}
