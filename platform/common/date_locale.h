#pragma once

#include <string>
#include <string_view>

namespace quillmar {

// The ICU id of a POSIX locale name ("sr_RS.UTF-8@latin"). "C", and a locale without ICU data, give American
// English.
std::string icuLocale(std::string_view name);

// The ICU id of this process's locale for dates.
std::string dateLocale();

}  // namespace quillmar
