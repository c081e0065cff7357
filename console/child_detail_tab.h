#pragma once

#include <array>

#include "foundation/raw_enum.h"

namespace quillmar {

enum class ChildDetailTab { realTime, sitesBlocked, sitesAllowed };

template <>
inline constexpr std::array rawNames<ChildDetailTab> =
    rawCases<ChildDetailTab>({{ChildDetailTab::realTime, "Real-Time"},
                              {ChildDetailTab::sitesBlocked, "Sites Blocked"},
                              {ChildDetailTab::sitesAllowed, "Sites Allowed"}});

}  // namespace quillmar
