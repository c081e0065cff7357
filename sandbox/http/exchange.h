#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/thread_pool.hpp>
#include <functional>
#include <vector>

#include "sandbox/http/message.h"

namespace quillmar::sandbox {

// Passes requests from the network thread to the handler on a worker thread, and returns each answer after
// its delay.
class Exchange {
 public:
  using Done = std::function<void(Answer)>;

  Exchange(boost::asio::io_context& network, Handler handler, std::size_t workers);
  ~Exchange();

  // Called on the network thread, where `done` is called too.
  void answer(Request request, Done done);

  // Answers with `Delivery::held` wait while `holding` is true. Thread-safe.
  void hold(bool holding);

  boost::asio::io_context& network() { return network_; }

 private:
  struct Held {
    Answer answer;
    Done done;
  };

  void deliver(Answer answer, Done done);
  void deliverInTime(Answer answer, Done done);

  boost::asio::io_context& network_;
  Handler handler_;
  bool holding_ = false;
  std::vector<Held> held_;
  boost::asio::thread_pool workers_;
};

}  // namespace quillmar::sandbox
