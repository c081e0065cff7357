#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <functional>
#include <optional>
#include <string>

namespace quillmar::doctor {

// Asks on the bus at this address, "unix:path=" and a socket. Returns the error; nullopt if it was answered.
std::optional<sdbus::Error> ask(const std::string& busAddress,
                                const std::function<void(sdbus::IConnection&)>& question);

}  // namespace quillmar::doctor
