// Tunnels under load, at one address each. Nothing is saved, so what counts is that every answer is right and
// that the next one gets the address.

#include <poll.h>

#include <chrono>
#include <csignal>
#include <thread>

#include "bench/endurance/kills.h"
#include "tests/tunnel/support/served_endpoint.h"
#include "tunnel/network/sockets.h"

namespace quillmar::endurance {
namespace {

using namespace tunnel::test;
using tunnel::Channel;

constexpr std::size_t sideBySide = 4;
constexpr int lowestPort = 20'000;
constexpr int longestLife = 60'000;  // microseconds

struct TunnelWorld {
  Session session;
  TestEndpoint endpoint{[](TestPeer& peer, std::int32_t stream, const std::string& question) {
    peer.answer(stream, answerTo(question));
  }};
  std::atomic<long> answers = 0;
  std::atomic<int> nextPort = lowestPort;
};

class Tunnel final : public Mortal {
 public:
  Tunnel(TunnelWorld& world, Random random) : world_(world), random_(random) {}

  bool live() override {
    const auto program = start();
    const auto life = std::chrono::microseconds(std::uniform_int_distribution(0, longestLife)(random_));
    std::string said;
    {
      const std::jthread killer([process = program->process(), life] {
        std::this_thread::sleep_for(life);
        ::kill(process, SIGKILL);
      });
      said = program->readUntil("Answers at");
      while (askOne(*program, Channel::udp)) {
      }
    }
    require(program->end(0) == -SIGKILL, "A tunnel ends by itself: " + said);
    return true;
  }

  void conclude() override {
    const auto program = start();
    const std::string said = program->readUntil("Answers at");
    require(askOne(*program, Channel::udp) && askOne(*program, Channel::tcp),
            "The tunnel does not come back: " + said);
    require(program->end(SIGTERM) == 0, "A tunnel does not end well.");
  }

 private:
  std::unique_ptr<Program> start() const {
    return std::make_unique<Program>(
        Words{QUILLMAR_TUNNEL, "serve", "--endpoint", world_.endpoint.url("127.0.0.1"), "--listen",
              "127.0.0.1:" + std::to_string(port_), "--ca-file", world_.endpoint.caFile()},
        world_.session.variables());
  }

  // False if the program ends before it has answered.
  bool askOne(const Program& program, Channel channel) {
    const auto id = static_cast<std::uint16_t>(++asked_);
    try {
      ClientSocket client(port_, channel);
      client.send(queryText({.name = "n" + std::to_string(asked_) + ".example", .id = id}));
      std::array<pollfd, 2> either{{{client.socket(), POLLIN, 0}, {program.output(), 0, 0}}};
      ::poll(either.data(), either.size(), -1);
      if (either[1].revents != 0) {
        return false;
      }
      const std::string reply = client.receive();
      if (reply.empty()) {
        return false;
      }
      const auto header = tunnel::readHeader(reply);
      require(header && header->id == id && header->rcode() == tunnel::rcode::noError && header->answers == 1,
              "A wrong answer.");
      ++world_.answers;
      return true;
    } catch (const Fault&) {
      throw;
    } catch (const std::runtime_error&) {
      return false;
    }
  }

  TunnelWorld& world_;
  Random random_;
  const int port_ = world_.nextPort++;
  int asked_ = 0;
};

}  // namespace

Kind tunnels() {
  const auto world = std::make_shared<TunnelWorld>();
  return {"Tunnels",
          sideBySide,
          [world](Random random) { return std::make_unique<Tunnel>(*world, random); },
          "answers in their lives",
          {world, &world->answers}};
}

}  // namespace quillmar::endurance
