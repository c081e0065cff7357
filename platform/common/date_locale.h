#pragma once

#include <string>
#include <string_view>

namespace quillmar {

// The ICU id for the name of a locale as an environment gives it ("sr_RS.UTF-8@latin"). One that is meant for
// programs ("C"), and any that ICU has no words for, gives American English.
std::string icuLocale(std::string_view name);

// By what this process's environment wants dates and times to be written.
std::string dateLocale();

}  // namespace quillmar
