#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace quillmar::machine {

// The network beyond the machine's card, in its own network namespace. It captures every packet that leaves
// the machine, and answers plain DNS at all of its addresses with an address that no endpoint returns.
class Outside {
 public:
  static constexpr const char* answer = "192.0.2.66";

  // The file of the namespace, and the name of its network interface.
  Outside(const std::string& networkNamespace, const std::string& wire);
  ~Outside();
  Outside(const Outside&) = delete;
  Outside& operator=(const Outside&) = delete;

  // Sets the address of this name; an empty one means no reply.
  void give(const std::string& name, const std::string& address);

  // The packets to port 53 or 853 so far, as "udp 53 NAME" or "tcp 853". First waits until the marks that
  // `mark` sends have been captured, so that no earlier packet is missing.
  std::vector<std::string> seenInClear(const std::function<void(const std::string& token)>& mark);
  void forget();
  // Whether this name has been asked for at this UDP port, such as that of LLMNR. Waits until it has. False
  // after a timeout.
  bool seesAsked(std::uint16_t port, const std::string& name);

  // The number of TCP segments to this port that open a connection or carry data.
  int sentTo(std::uint16_t port);
  // Waits until all connections to this port have ended. False after a timeout.
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
  std::set<std::pair<std::uint16_t, std::string>> asked_;  // at other ports than those of DNS
  std::map<std::string, int> marks_;
  std::map<std::uint16_t, Conversation> conversations_;  // by the machine's port
  std::map<std::string, std::string> addresses_;
  int lastMark_ = 0;
  std::thread capturing_;
  std::thread serving_;
};

}  // namespace quillmar::machine
