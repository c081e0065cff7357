#pragma once

#include <atomic>
#include <filesystem>
#include <functional>
#include <memory>
#include <random>
#include <string>

#include "bench/endurance/installation.h"
#include "bench/endurance/program.h"

namespace quillmar::endurance {

using Random = std::mt19937_64;

// What is started and killed again and again.
class Mortal {
 public:
  Mortal() = default;
  virtual ~Mortal() = default;
  Mortal(const Mortal&) = delete;
  Mortal& operator=(const Mortal&) = delete;

  // One life, and a look at what it left. False if it ended by itself before its kill.
  virtual bool live() = 0;
  // A last look, at the end of all lives.
  virtual void conclude() {}
};

// Many of a kind are killed side by side.
struct Kind {
  std::string name;
  std::size_t sideBySide;
  std::function<std::unique_ptr<Mortal>(Random random)> make;
  // How often they came as far as `what` in all lives. If never, the kills were too early.
  std::string what;
  std::shared_ptr<std::atomic<long>> times;
};

Kind agents();
Kind windows();
Kind services();
// Needs a network of its own, in which no port can be taken by others.
Kind tunnels();

// Variables that have a program killed at this call to write, sync, send and the like.
Variables killedAt(long call);
// Counts the same calls of a program that is not killed.
class CallCount {
 public:
  explicit CallCount(const Session& session) : file_(session.home() / "calls") {}
  Variables variables() const;
  long read() const;

 private:
  const std::filesystem::path file_;
};
long anyOf(long calls, Random& random);

}  // namespace quillmar::endurance
