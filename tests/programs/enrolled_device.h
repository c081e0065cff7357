#pragma once

#include <filesystem>

#include "sandbox/service.h"

namespace quillmar::test {

// Enrolls a device with the service and stores what the program would, without waiting for a parent. Throws
// if the service refuses.
void enrollDevice(sandbox::Service& service, const std::filesystem::path& dataDirectory);

// The number of check-ins that the service has received.
std::ptrdiff_t checkinsAt(const sandbox::Service& service);

}  // namespace quillmar::test
