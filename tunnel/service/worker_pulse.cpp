#include "tunnel/service/worker_pulse.h"

#include <sys/epoll.h>

#include <array>
#include <utility>

namespace quillmar::tunnel {

WorkerPulse::WorkerPulse(boost::asio::io_context& context, const std::vector<OpenFile>& sockets,
                         Events events, Pace pace)
    : sockets_(sockets),
      events_(std::move(events)),
      pace_(pace),
      questions_(context, ::epoll_create1(EPOLL_CLOEXEC)),
      timer_(context) {
  for (const OpenFile& socket : sockets_) {
    epoll_event nothing{};
    ::epoll_ctl(questions_.native_handle(), EPOLL_CTL_ADD, socket.get(), &nothing);
  }
}

void WorkerPulse::startAnew() {
  timer_.cancel();
  isWaiting_ = false;
  watch();
}

// epoll is used directly, because Asio keeps a descriptor registered and would wake up for each question.
void WorkerPulse::watch() {
  for (const OpenFile& socket : sockets_) {
    epoll_event once{.events = EPOLLIN | EPOLLONESHOT, .data = {}};
    ::epoll_ctl(questions_.native_handle(), EPOLL_CTL_MOD, socket.get(), &once);
  }
  boost::system::error_code ignored;
  questions_.cancel(ignored);
  questions_.async_wait(Descriptor::wait_read, [this](boost::system::error_code error) {
    if (error) {
      return;
    }
    std::array<epoll_event, 8> taken{};
    ::epoll_wait(questions_.native_handle(), taken.data(), taken.size(), 0);
    missed_ = 0;
    ask();
  });
}

void WorkerPulse::ask() {
  isWaiting_ = true;
  timer_.start(pace_.patience, [this] { missed(); });
  events_.ask();
}

void WorkerPulse::missed() {
  if (++missed_ < pace_.mostMissed) {
    return ask();
  }
  isWaiting_ = false;
  events_.isSilent();
}

void WorkerPulse::beat() {
  if (std::exchange(isWaiting_, false)) {
    timer_.start(pace_.rest, [this] { watch(); });
  }
}

}  // namespace quillmar::tunnel
