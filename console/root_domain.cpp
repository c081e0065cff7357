#include "console/root_domain.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "foundation/text.h"

namespace quillmar {
namespace {

constexpr std::size_t longestListedLabel = 4;

constexpr bool isUpper(char c) { return c >= 'A' && c <= 'Z'; }
constexpr bool isAscii(char c) { return static_cast<unsigned char>(c) < 0x80; }
constexpr char lower(char c) { return isUpper(c) ? static_cast<char>(c - 'A' + 'a') : c; }

// A short label as one number, whatever its case: its length and its letters. None of the lists holds a 0.
constexpr std::uint64_t packed(std::string_view label) {
  if (label.size() > longestListedLabel) {
    return 0;
  }
  std::uint64_t number = label.size();
  for (const char c : label) {
    number = number << 8U | static_cast<unsigned char>(lower(c));
  }
  return number;
}

template <std::size_t count>
constexpr auto packedAll(const std::string_view (&labels)[count]) {
  std::array<std::uint64_t, count> numbers{};
  std::ranges::transform(labels, numbers.begin(), packed);
  return numbers;
}

constexpr auto secondLevelLabels =
    packedAll({"com",  "co",  "org", "net", "edu", "gov", "ac",   "or",  "ne",  "go",
               "govt", "gob", "gub", "me",  "web", "in",  "info", "biz", "asn", "id"});
constexpr auto countryLabels =
    packedAll({"au", "uk", "nz", "br", "jp", "cn", "in", "za", "mx", "sg", "hk", "my", "id", "ph",
               "th", "tw", "kr", "vn", "il", "tr", "sa", "ae", "ar", "co", "pe", "ve", "cl", "ec",
               "uy", "py", "bo", "ke", "tz", "ug", "ng", "eg", "pk", "bd", "np", "lk"});

constexpr bool contains(const auto& numbers, std::string_view label) {
  return std::ranges::find(numbers, packed(label)) != numbers.end();
}

// The last labels of a name, the last first; as many of the three as there are.
struct LastLabels {
  std::array<std::string_view, 3> labels;
  std::size_t count = 0;
};

LastLabels lastLabelsOf(std::string_view name) {
  LastLabels last;
  while (last.count < last.labels.size()) {
    name = name.substr(0, name.find_last_not_of('.') + 1);
    if (name.empty()) {
      break;
    }
    const std::size_t begin = name.find_last_of('.') + 1;
    last.labels[last.count++] = name.substr(begin);
    name = name.substr(0, begin);
  }
  return last;
}

bool isBelowCountry(const LastLabels& last) {
  return last.count == 3 && contains(countryLabels, last.labels[0]) &&
         contains(secondLevelLabels, last.labels[1]);
}

std::string_view inLowerCase(std::string_view text, std::string& storage) {
  if (std::ranges::none_of(text, isUpper)) {
    return text;
  }
  storage.assign(text);
  std::ranges::transform(storage, storage.begin(), lower);
  return storage;
}

void join(const LastLabels& last, std::size_t count, std::string& storage) {
  storage.clear();
  for (std::size_t i = count; i-- > 0;) {
    storage += last.labels[i];
    storage += i > 0 ? "." : "";
  }
}

// From the beginning of one label to the end of another in the same name.
std::string_view span(std::string_view first, std::string_view last) {
  return {first.data(), static_cast<std::size_t>(last.data() + last.size() - first.data())};
}

// Of a name whose letters outside ASCII are in lower case already.
std::string_view siteOf(std::string_view name, const LastLabels& last, std::string& storage) {
  if (last.count < 2) {
    return inLowerCase(name, storage);
  }
  const std::size_t count = isBelowCountry(last) ? 3 : 2;
  const std::string_view whole = span(last.labels[count - 1], last.labels[0]);
  if (whole.find("..") == std::string_view::npos) {
    return inLowerCase(whole, storage);
  }
  storage.reserve(whole.size());
  join(last, count, storage);
  std::ranges::transform(storage, storage.begin(), lower);
  return storage;
}

}  // namespace

std::string_view rootDomain(std::string_view name, std::string& storage) {
  const LastLabels last = lastLabelsOf(name);
  const std::string_view relevant = last.count < 2 ? name : span(last.labels[last.count - 1], last.labels[0]);
  if (std::ranges::all_of(relevant, isAscii)) {
    return siteOf(name, last, storage);
  }
  const std::string lowerName = lowercased(name);
  std::string site;
  storage = siteOf(lowerName, lastLabelsOf(lowerName), site);
  return storage;
}

std::string rootDomain(std::string_view name) {
  std::string storage;
  const std::string_view site = rootDomain(name, storage);
  return site.data() == storage.data() ? std::move(storage) : std::string(site);
}

}  // namespace quillmar
