#include "console/activity_log.h"

#include <algorithm>
#include <functional>

#include "console/root_domain.h"
#include "foundation/ascii.h"
#include "presentation/relative_timestamp.h"

namespace quillmar {
namespace {

// The longest DNS name. Longer texts are truncated, so that a few answers can't fill the memory.
constexpr std::size_t longestName = 253;
// Stands for an empty name.
constexpr std::string_view rootName = ".";
constexpr std::string_view ellipsis = "…";

bool isContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80; }

std::string_view startOf(std::string_view text) {
  std::size_t length = longestName - ellipsis.size();
  while (length > 0 && isContinuation(text[length])) {
    --length;
  }
  return text.substr(0, length);
}

}  // namespace

std::size_t ActivityLog::add(std::uint32_t device, const std::vector<DNSLog>& page) {
  const std::size_t before = entries_.size();
  for (const DNSLog& log : page) {
    if (isFull()) {
      break;
    }
    if (isNew(log.id)) {
      entries_.push_back({.id = log.id,
                          .time = timeOf(log),
                          .name = intern(log.domain),
                          .device = device,
                          .wasBlocked = log.wasBlocked});
    }
  }
  return entries_.size() - before;
}

bool ActivityLog::isNew(std::int64_t id) {
  const std::hash<std::int64_t> hash;
  return byId_.findOrAdd(
             hash(id), [&](std::uint32_t other) { return entries_[other].id == id; },
             [&](std::uint32_t other) { return hash(entries_[other].id); }) == entries_.size();
}

std::uint32_t ActivityLog::intern(std::string_view domain) {
  lowerName_ = domain.size() <= longestName ? domain : startOf(domain);
  std::ranges::transform(lowerName_, lowerName_.begin(), asciiLowercased);
  if (domain.empty()) {
    lowerName_ = rootName;
  }
  if (domain.size() > longestName) {
    lowerName_ += ellipsis;
  }
  const std::uint32_t name = names_.add(lowerName_);
  if (name == siteOfName_.size()) {
    siteOfName_.push_back(sites_.add(rootDomain(lowerName_, siteText_)));
  }
  return name;
}

Date ActivityLog::timeOf(const DNSLog& log) const {
  return parsedTimestamp(log.timestamp, styles_).value_or(unreadable);
}

DNSLog ActivityLog::recordOf(const Entry& entry) const {
  DNSLog log;
  log.id = entry.id;
  log.domain = name(entry.name);
  log.wasBlocked = entry.wasBlocked;
  log.timestamp = formatISO8601(entry.time);
  return log;
}

}  // namespace quillmar
