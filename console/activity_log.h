#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "client/records/dns_log.h"
#include "console/interned_texts.h"
#include "foundation/date_format.h"

namespace quillmar {

// The log entries of a child's devices, without repetitions, in the order of their arrival. Compact in
// memory.
class ActivityLog {
 public:
  static constexpr std::size_t capacity = 200'000;
  // Stands for a time that can't be parsed.
  static constexpr Date unreadable = Date::max();

  struct Entry {
    std::int64_t id = 0;
    Date time;
    std::uint32_t name = 0;
    std::uint32_t device = 0;  // the index of the device that was asked
    bool wasBlocked = false;
  };

  explicit ActivityLog(DateStyles styles) : styles_(std::move(styles)) {}

  // Adds the entries with new ids while there is room. Returns their number.
  std::size_t add(std::uint32_t device, const std::vector<DNSLog>& page);

  const std::vector<Entry>& entries() const { return entries_; }
  bool isFull() const { return entries_.size() >= capacity; }
  // In lower case.
  std::string_view name(std::uint32_t index) const { return names_[index]; }
  // The site of a name, as an index and as a text.
  std::uint32_t siteOf(std::uint32_t name) const { return siteOfName_[name]; }
  std::string_view site(std::uint32_t index) const { return sites_[index]; }
  std::uint32_t siteCount() const { return sites_.size(); }
  std::uint32_t nameCount() const { return names_.size(); }

  // The fields that a row shows and acts on. The device's id and the query's type are not stored.
  DNSLog recordOf(const Entry& entry) const;

  // Parsed as by relativeTimestamp; `unreadable` if it is not a time.
  Date timeOf(const DNSLog& log) const;

 private:
  bool isNew(std::int64_t id);
  std::uint32_t intern(std::string_view domain);

  const DateStyles styles_;
  std::vector<Entry> entries_;
  IndexTable byId_;
  InternedTexts names_;
  InternedTexts sites_;
  std::vector<std::uint32_t> siteOfName_;
  std::string lowerName_;
  std::string siteText_;
};

}  // namespace quillmar
