#include "platform/linux/linux_device_info.h"

#include <unicode/locid.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include <memory>
#include <utility>

namespace quillmar {
namespace {

// The bare "C" locale is meant for programs; people get the plainest one of their own.
std::string defaultLocale() {
  const std::string name = icu::Locale::getDefault().getName();
  return name.empty() || name == "en_US_POSIX" || name == "c" ? "en_US" : name;
}

std::string defaultTimeZone() {
  const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::detectHostTimeZone());
  icu::UnicodeString id;
  std::string text;
  return zone ? zone->getID(id).toUTF8String(text) : "UTC";
}

}  // namespace

LinuxDeviceInfo::LinuxDeviceInfo() : LinuxDeviceInfo(Sources()) {}

LinuxDeviceInfo::LinuxDeviceInfo(Sources sources)
    : sources_(std::move(sources)), locale_(defaultLocale()), timeZone_(defaultTimeZone()) {}

}  // namespace quillmar
