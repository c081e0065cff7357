#pragma once

#include <string>
#include <string_view>

#include "client/records/device.h"
#include "foundation/date_format.h"

// What every screen says of a device, with one definition each.
namespace quillmar {

// What the service said, else whether the device is in use at all.
bool effectiveOnline(const Device& device);
// The name that the parent gave, else the one from enrollment.
std::string deviceDisplayName(const Device& device);
// "Online now", or "Last seen 5 min ago".
std::string lastSeenText(const Device& device, Date now, const DateStyles& styles);

// "iPhone", "Mac"; a type that is not known is capitalized.
std::string deviceTypeLabel(const Device& device);
// The name of its picture.
std::string_view deviceIconName(const Device& device);

}  // namespace quillmar
