#include "ui/notice_switch.h"

#include <string>
#include <string_view>

#include "platform/common/state_file.h"

namespace quillmar::ui {
namespace {

constexpr std::string_view row = "notices";
constexpr std::string_view off = "off";

}  // namespace

bool wantsNotices(const StateFile& file) { return file.value(row) != off; }

void keepWishForNotices(const StateFile& file, bool wanted) {
  file.write({{std::string(row), std::string(wanted ? "on" : off)}});
}

}  // namespace quillmar::ui
