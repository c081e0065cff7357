#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <optional>
#include <string>
#include <vector>

#include "command_line/command_line.h"
#include "tunnel/network/endpoint.h"

namespace quillmar::tunnel {

// Exit statuses. They are part of the program's interface.
enum class ExitStatus { done = 0, failed = 1, usage = 2 };

enum class Command { serve, run, release };

struct Options {
  Command command = Command::serve;
  Endpoint endpoint{};                      // for serve
  boost::asio::ip::tcp::endpoint listen{};  // for serve
  std::string caFile{};                     // trusted besides the system's authorities
};

using Parsed = command_line::Parsed<Options, ExitStatus>;

// The command line that the program accepts. Reading it fills these options.
command_line::Program programFor(Options& options);

Parsed parse(const std::vector<std::string>& words);

}  // namespace quillmar::tunnel
