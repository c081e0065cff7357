#include "tunnel/worker/worker.h"

#include <sys/prctl.h>
#include <sys/socket.h>

#include <array>
#include <csignal>
#include <utility>

#include "tunnel/worker/cage.h"

namespace quillmar::tunnel {
namespace {

std::optional<Begin> receiveBegin() {
  std::array<char, largestWorkerMessage> buffer{};
  const auto size = ::recv(messagesDescriptor, buffer.data(), buffer.size(), 0);
  auto message = decodeToWorker({buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0))});
  auto* const begin = message ? std::get_if<Begin>(&*message) : nullptr;
  return begin != nullptr ? std::optional(std::move(*begin)) : std::nullopt;
}

std::vector<Sockets> takeSockets(boost::asio::io_context& context, unsigned count) {
  namespace ip = boost::asio::ip;
  std::vector<Sockets> all;
  for (int descriptor = firstListenerDescriptor; all.size() < count; descriptor += 2) {
    sockaddr_storage address{};
    socklen_t size = sizeof address;
    ::getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size);
    const bool is6 = address.ss_family == AF_INET6;
    Sockets sockets{UdpSocket(context, is6 ? ip::udp::v6() : ip::udp::v4(), descriptor),
                    TcpAcceptor(context, is6 ? ip::tcp::v6() : ip::tcp::v4(), descriptor + 1)};
    sockets.udp.non_blocking(true);
    all.push_back(std::move(sockets));
  }
  return all;
}

Outgoing outgoing(boost::asio::io_context& context, std::unique_ptr<TlsClient> tls,
                  LinkBootstrap::Servers servers, LinkBootstrap::LastGood lastGood,
                  LinkBootstrap::Reached reached) {
  return {std::move(tls), std::make_unique<LinkBootstrap>(context, std::move(servers), std::move(lastGood),
                                                          std::move(reached))};
}

int giveUp(const std::string& problem) {
  const auto message = encode(FromWorker(Line{"The worker can't begin: " + problem + '.'}));
  ::send(messagesDescriptor, message.data(), message.size(), MSG_NOSIGNAL);
  return 1;
}

}  // namespace

Worker::Worker(boost::asio::io_context& context, int messages, std::vector<Sockets> sockets,
               std::unique_ptr<TlsClient> tls, const Begin& begin)
    : messages_(
          context, messages,
          {.came = [this](std::string_view text) { take(text); }, .isGone = [&context] { context.stop(); }}),
      server_(context, std::move(sockets),
              outgoing(
                  context, std::move(tls),
                  [this](std::function<void(NameServers)> take) {
                    waitForServers_.push_back(std::move(take));
                    say(WantServers{});
                  },
                  begin.lastGood,
                  [this](const std::string& host, const boost::asio::ip::address& address) {
                    say(Reached{host, address});
                  }),
              [this](const std::string& line) { tell(line); }) {
  server_.take(parseEndpoint(begin.url));
}

void Worker::run() {
  messages_.hearOut();
  server_.run();
}

void Worker::take(std::string_view text) {
  const auto message = decodeToWorker(text);
  if (!message) {
    return;
  }
  if (const auto* endpoint = std::get_if<TakeEndpoint>(&*message)) {
    server_.take(parseEndpoint(endpoint->url));
  } else if (const auto* servers = std::get_if<TakeServers>(&*message)) {
    for (const auto& each : std::exchange(waitForServers_, {})) {
      each(servers->servers);
    }
  } else if (std::holds_alternative<NetworkChanged>(*message)) {
    server_.networkChanged();
  } else if (std::holds_alternative<Ping>(*message)) {
    say(Pong{});
  }
}

void Worker::tell(const std::string& line) {
  if (lines_.take(BootClock::now())) {
    say(Line{line});
  }
}

// A lost message is not repeated: lines are not essential, and requests time out.
void Worker::say(const FromWorker& message) { messages_.send(encode(message)); }

bool isWorkersProcess() {
  int kind = 0;
  socklen_t size = sizeof kind;
  return ::getsockopt(messagesDescriptor, SOL_SOCKET, SO_TYPE, &kind, &size) == 0 && kind == SOCK_SEQPACKET;
}

int runWorker() {
  ::prctl(PR_SET_NAME, "quillmar-worker", 0, 0, 0);
  std::signal(SIGPIPE, SIG_IGN);
  const auto begin = receiveBegin();
  if (!begin) {
    return 1;
  }
  boost::asio::io_context context(BOOST_ASIO_CONCURRENCY_HINT_UNSAFE);  // one thread needs no locks
  auto sockets = takeSockets(context, begin->listeners);
  auto tls = TlsClient::make(begin->caFile);
  if (const auto* problem = std::get_if<std::string>(&tls)) {
    return giveUp(*problem);
  }
  Worker worker(context, messagesDescriptor, std::move(sockets),
                std::get<std::unique_ptr<TlsClient>>(std::move(tls)), *begin);
  if (const auto problem = enterCage({begin->user, begin->group}); !problem.empty()) {
    return giveUp(problem);
  }
  worker.run();
  return 0;
}

}  // namespace quillmar::tunnel
