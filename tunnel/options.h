#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <optional>
#include <string>
#include <vector>

#include "command_line/command_line.h"
#include "tunnel/network/endpoint.h"

namespace quillmar::tunnel {

// What the program ends with. They are part of its interface.
enum class ExitStatus { done = 0, failed = 1, usage = 2 };

enum class Command { serve, run, release };

struct Options {
  Command command = Command::serve;
  Endpoint endpoint{};                      // to serve
  boost::asio::ip::tcp::endpoint listen{};  // to serve
  std::string caFile{};                     // trusted beside the system's authorities
};

using Parsed = command_line::Parsed<Options, ExitStatus>;

// What is understood, and kept in these options.
command_line::Program programFor(Options& options);

Parsed parse(const std::vector<std::string>& words);

}  // namespace quillmar::tunnel
