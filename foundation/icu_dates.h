#pragma once

#include <unicode/locid.h>
#include <unicode/utypes.h>

#include <string>

#include "foundation/date.h"

// Only for sources of this folder: no other folder sees ICU's types.
namespace quillmar {

inline UDate icuDate(Date date) { return static_cast<UDate>(date.time_since_epoch().count()); }

// ICU's factories do not accept a bogus locale.
inline icu::Locale localeNamed(const std::string& name) {
  const icu::Locale locale(name.c_str());
  return locale.isBogus() ? icu::Locale::getRoot() : locale;
}

}  // namespace quillmar
