#include "sandbox/http/exchange.h"

#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <memory>

namespace quillmar::sandbox {

namespace net = boost::asio;

Exchange::Exchange(net::io_context& network, Handler handler, std::size_t workers)
    : network_{network}, handler_{std::move(handler)}, workers_{workers} {}

Exchange::~Exchange() {
  workers_.stop();
  workers_.join();
}

void Exchange::answer(Request request, Done done) {
  net::post(workers_, [this, request = std::move(request), done = std::move(done)]() mutable {
    net::post(network_, [this, answer = handler_(request), done = std::move(done)]() mutable {
      deliver(std::move(answer), std::move(done));
    });
  });
}

void Exchange::deliver(Answer answer, Done done) {
  if (answer.delivery.held && holding_) {
    held_.push_back({std::move(answer), std::move(done)});
  } else {
    deliverInTime(std::move(answer), std::move(done));
  }
}

void Exchange::deliverInTime(Answer answer, Done done) {
  if (answer.delivery.latency.count() <= 0) {
    return done(std::move(answer));
  }
  auto timer = std::make_shared<net::steady_timer>(network_, answer.delivery.latency);
  timer->async_wait([timer, answer = std::move(answer), done = std::move(done)](auto error) mutable {
    if (!error) {
      done(std::move(answer));
    }
  });
}

void Exchange::hold(bool holding) {
  net::post(network_, [this, holding] {
    holding_ = holding;
    if (holding_) {
      return;
    }
    for (auto& held : std::exchange(held_, {})) {
      deliverInTime(std::move(held.answer), std::move(held.done));
    }
  });
}

}  // namespace quillmar::sandbox
