#pragma once

#include <filesystem>

#include "sandbox/service.h"

namespace quillmar::test {

// Enrolls a device with the service and leaves what the program would have stored, without its waiting for a
// parent. Throws where the service refuses.
void enrollDevice(sandbox::Service& service, const std::filesystem::path& dataDirectory);

// How often devices have checked in.
std::ptrdiff_t checkinsAt(const sandbox::Service& service);

}  // namespace quillmar::test
