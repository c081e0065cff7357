#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace quillmar::machine {

// The other end of the machine's wire, in a network namespace of its own: sees every packet that leaves the
// machine, and answers plain DNS at any of its addresses, with an address that no endpoint gives.
class Outside {
 public:
  static constexpr const char* answer = "192.0.2.66";

  // The namespace's file, and the wire's end in it.
  Outside(const std::string& networkNamespace, const std::string& wire);
  ~Outside();
  Outside(const Outside&) = delete;
  Outside& operator=(const Outside&) = delete;

  // What this name has, instead; no text is silence.
  void give(const std::string& name, const std::string& address);

  // What left the machine for port 53 or 853 so far, as "udp 53 NAME" or "tcp 853". Waits until what the
  // machine has sent has come, by the marks that `mark` sends.
  std::vector<std::string> seenInClear(const std::function<void(const std::string& token)>& mark);
  void forget();

  // How often the machine has sent something to this TCP port: it began a connection, or said something on
  // one.
  int sentTo(std::uint16_t port);
  // Waits until all its connections to this port have ended; false after a while.
  bool seesAllEnd(std::uint16_t port);

 private:
  struct Conversation {
    std::uint16_t port = 0;
    int sent = 0;
    bool hasEnded = false;
  };

  void capture();
  void serve();
  void take(const std::string& frame);
  void follow(std::string_view segment);

  int packets_ = -1;
  int server_ = -1;
  int stop_ = -1;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<std::string> seen_;
  std::map<std::string, int> marks_;
  std::map<std::uint16_t, Conversation> conversations_;  // by the machine's port
  std::map<std::string, std::string> addresses_;
  int lastMark_ = 0;
  std::thread capturing_;
  std::thread serving_;
};

}  // namespace quillmar::machine
