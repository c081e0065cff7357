#include "platform/linux/linux_device_info.h"

#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include <memory>
#include <utility>

#include "platform/common/date_locale.h"

namespace quillmar {
namespace {

std::string defaultTimeZone() {
  const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::detectHostTimeZone());
  icu::UnicodeString id;
  std::string text;
  return zone ? zone->getID(id).toUTF8String(text) : "UTC";
}

}  // namespace

LinuxDeviceInfo::LinuxDeviceInfo() : LinuxDeviceInfo(Sources()) {}

LinuxDeviceInfo::LinuxDeviceInfo(Sources sources)
    : sources_(std::move(sources)), locale_(dateLocale()), timeZone_(defaultTimeZone()) {}

}  // namespace quillmar
