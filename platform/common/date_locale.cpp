#include "platform/common/date_locale.h"

#include <unicode/localebuilder.h>
#include <unicode/localpointer.h>
#include <unicode/locid.h>
#include <unicode/stringpiece.h>
#include <unicode/ures.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <utility>

namespace quillmar {
namespace {

constexpr std::string_view plainest = "en_US";

// The modifiers that say in which letters a language is written. The others ("euro") concern no dates.
constexpr auto scripts = std::to_array<std::pair<std::string_view, std::string_view>>(
    {{"latin", "Latn"}, {"cyrillic", "Cyrl"}, {"devanagari", "Deva"}, {"iqtelif", "Latn"}});

std::string_view scriptOf(std::string_view modifier) {
  const auto known = std::ranges::find(scripts, modifier, &decltype(scripts)::value_type::first);
  return known == scripts.end() ? std::string_view() : known->second;
}

// What stands before the mark and what behind it; nothing there without one.
std::pair<std::string_view, std::string_view> split(std::string_view text, char mark) {
  const auto at = text.find(mark);
  return at == std::string_view::npos ? std::pair(text, std::string_view())
                                      : std::pair(text.substr(0, at), text.substr(at + 1));
}

icu::StringPiece piece(std::string_view text) { return {text.data(), static_cast<int32_t>(text.size())}; }

// For an unknown language ICU quietly takes the one of the process.
bool isKnown(const icu::Locale& locale) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::LocalUResourceBundlePointer words(ures_open(nullptr, locale.getName(), &status));
  return U_SUCCESS(status) && status != U_USING_DEFAULT_WARNING;
}

std::string_view variable(const char* name) {
  const char* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): nothing here changes it
  return value ? value : "";
}

}  // namespace

std::string icuLocale(std::string_view name) {
  const auto [place, modifier] = split(name, '@');
  const auto [language, region] = split(split(place, '.').first, '_');
  UErrorCode status = U_ZERO_ERROR;
  const auto locale = icu::LocaleBuilder()
                          .setLanguage(piece(language))
                          .setScript(piece(scriptOf(modifier)))
                          .setRegion(piece(region))
                          .build(status);
  const bool isUsable = U_SUCCESS(status) && *locale.getLanguage() != '\0' && isKnown(locale);
  return isUsable ? locale.getName() : std::string(plainest);
}

// By the precedence that POSIX gives them; an empty one counts as absent.
std::string dateLocale() {
  for (const char* name : {"LC_ALL", "LC_TIME"}) {
    if (const auto value = variable(name); !value.empty()) {
      return icuLocale(value);
    }
  }
  return icuLocale(variable("LANG"));
}

}  // namespace quillmar
