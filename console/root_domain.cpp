#include "console/root_domain.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

#include "foundation/ascii.h"
#include "foundation/text.h"

namespace quillmar {
namespace {

constexpr bool isUpper(char c) { return c >= 'A' && c <= 'Z'; }

constexpr std::size_t longestListedLabel = 4;

// Encodes a short label as a number, from its length and its letters, ignoring case. No listed label gives 0.
constexpr std::uint64_t packed(std::string_view label) {
  if (label.size() > longestListedLabel) {
    return 0;
  }
  std::uint64_t number = label.size();
  for (const char c : label) {
    number = number << 8U | static_cast<unsigned char>(asciiLowercased(c));
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
constexpr bool isSecondLevel(std::string_view label) {
  return std::ranges::find(secondLevelLabels, packed(label)) != secondLevelLabels.end();
}

// Two-letter labels are looked up in a table of all combinations.
constexpr std::size_t letterCount = 26;

constexpr std::optional<std::size_t> placeOfTwoLetters(std::string_view label) {
  if (label.size() != 2) {
    return std::nullopt;
  }
  const auto first = static_cast<std::size_t>(asciiLowercased(label[0]) - 'a');
  const auto second = static_cast<std::size_t>(asciiLowercased(label[1]) - 'a');
  return first < letterCount && second < letterCount ? std::optional(first * letterCount + second)
                                                     : std::nullopt;
}

constexpr auto countryLabels = [] {
  std::array<bool, letterCount * letterCount> isListed{};
  for (const std::string_view label :
       {"au", "uk", "nz", "br", "jp", "cn", "in", "za", "mx", "sg", "hk", "my", "id", "ph",
        "th", "tw", "kr", "vn", "il", "tr", "sa", "ae", "ar", "co", "pe", "ve", "cl", "ec",
        "uy", "py", "bo", "ke", "tz", "ug", "ng", "eg", "pk", "bd", "np", "lk"}) {
    isListed[*placeOfTwoLetters(label)] = true;
  }
  return isListed;
}();

constexpr bool isCountry(std::string_view label) {
  const auto place = placeOfTwoLetters(label);
  return place && countryLabels[*place];
}

// Character classes of a label, combined by |.
enum Letter : unsigned { plain = 0, upperCase = 1, notAscii = 2 };

constexpr auto letters = [] {
  std::array<unsigned char, 256> kinds{};
  for (std::size_t byte = 0; byte < kinds.size(); ++byte) {
    kinds[byte] = byte >= 0x80 ? notAscii : isUpper(static_cast<char>(byte)) ? upperCase : plain;
  }
  return kinds;
}();

// The labels that make up a site. The third is set only if the last two are a listed ending.
struct SiteLabels {
  std::string_view third;
  std::string_view second;
  std::string_view last;
  unsigned kinds = plain;  // of all three labels

  explicit constexpr SiteLabels(std::string_view name) {
    last = takeLast(name);
    second = takeLast(name);
    if (isCountry(last) && isSecondLevel(second)) {
      third = takeLast(name);
    }
  }
  // Removes the last label and the dots around it; returns an empty label if there is none.
  constexpr std::string_view takeLast(std::string_view& name) {
    std::size_t end = name.size();
    while (end > 0 && name[end - 1] == '.') {
      --end;
    }
    std::size_t begin = end;
    for (; begin > 0 && name[begin - 1] != '.'; --begin) {
      kinds |= letters[static_cast<unsigned char>(name[begin - 1])];
    }
    const std::string_view label = name.substr(begin, end - begin);
    name = name.substr(0, begin);
    return label;
  }
  // A name of fewer than two labels has no site.
  constexpr bool areEnough() const { return !second.empty(); }
  constexpr std::string_view first() const { return third.empty() ? second : third; }
  constexpr std::size_t joinedSize() const {
    return third.size() + (third.empty() ? 0 : 1) + second.size() + 1 + last.size();
  }
  std::string joined() const {
    std::string site;
    site.reserve(joinedSize());
    for (const auto label : {third, second}) {
      site += label;
      site += label.empty() ? "" : ".";
    }
    site += last;
    return site;
  }
};

// The part of the name that the site is made from.
constexpr std::string_view relevantPart(std::string_view name, const SiteLabels& labels) {
  if (!labels.areEnough()) {
    return name;
  }
  const auto begin = static_cast<std::size_t>(labels.first().data() - name.data());
  const auto end = static_cast<std::size_t>(labels.last.data() - name.data()) + labels.last.size();
  return name.substr(begin, end - begin);
}

// The site of a name, with non-ASCII letters in lower case.
std::string_view siteOf(std::string_view name, const SiteLabels& labels, std::string& storage) {
  const std::string_view relevant = relevantPart(name, labels);
  // The labels are separated by more than one dot.
  const bool isTorn = labels.areEnough() && relevant.size() > labels.joinedSize();
  if (isTorn) {
    storage = labels.joined();
  } else if ((labels.kinds & upperCase) == 0) {
    return relevant;
  } else {
    storage = relevant;
  }
  std::ranges::transform(storage, storage.begin(), asciiLowercased);
  return storage;
}

}  // namespace

std::string_view rootDomain(std::string_view name, std::string& storage) {
  const SiteLabels labels(name);
  if ((labels.kinds & notAscii) == 0) {
    return siteOf(name, labels, storage);
  }
  // Lower-casing a non-ASCII letter may depend on its neighbours, so the whole name is converted.
  const std::string lowerName = lowercased(name);
  std::string site;
  storage = siteOf(lowerName, SiteLabels(lowerName), site);
  return storage;
}

std::string rootDomain(std::string_view name) {
  std::string storage;
  const std::string_view site = rootDomain(name, storage);
  return site.data() == storage.data() ? std::move(storage) : std::string(site);
}

}  // namespace quillmar
