#include "tunnel/worker/worker.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/post.hpp>
#include <utility>

namespace quillmar::tunnel {
namespace {

std::unique_ptr<Server> makeServer(boost::asio::io_context& context, Worker::Given& given,
                                   WorkerEvents events) {
  // Servers are told on another thread.
  auto servers = [&context, ask = std::move(events.servers)](std::function<void(NameServers)> take) {
    ask([&context, take = std::move(take)](NameServers servers) {
      boost::asio::post(context, [take, servers = std::move(servers)] { take(servers); });
    });
  };
  auto bootstrap = std::make_unique<LinkBootstrap>(context, given.mark, std::move(servers),
                                                   std::move(given.lastGood), std::move(events.reached));
  return std::make_unique<Server>(context, std::move(given.sockets),
                                  Outgoing{std::move(given.tls), std::move(bootstrap), given.mark},
                                  std::move(events.tell));
}

}  // namespace

Worker::Worker(Given given, WorkerEvents events)
    : context_(std::move(given.context)),
      server_(makeServer(*context_, given, std::move(events))),
      thread_([this] {
        const auto work = boost::asio::make_work_guard(*context_);
        server_->run();
      }) {}

Worker::~Worker() {
  context_->stop();
  thread_.join();
}

void Worker::take(std::optional<Endpoint> endpoint) {
  boost::asio::post(*context_, [this, endpoint = std::move(endpoint)] { server_->take(endpoint); });
}

}  // namespace quillmar::tunnel
