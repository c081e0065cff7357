#pragma once

#include <string>
#include <string_view>

#include "client/records/device.h"
#include "foundation/date_format.h"

// The texts that all screens show for a device.
namespace quillmar {

// The service's value, or `isActive` if the service did not say.
bool effectiveOnline(const Device& device);
// The parent's name for the device, else the one from enrollment.
std::string deviceDisplayName(const Device& device);
// "Online now", or "Last seen 5 min ago".
std::string lastSeenText(const Device& device, Date now, const DateStyles& styles);

// "iPhone", "Mac"; an unknown type is capitalized.
std::string deviceTypeLabel(const Device& device);
// The name of the device's icon.
std::string_view deviceIconName(const Device& device);

}  // namespace quillmar
