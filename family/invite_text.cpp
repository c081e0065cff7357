#include "family/invite_text.h"

#include "foundation/text.h"

namespace quillmar {
namespace {

constexpr std::string_view parameter = "code=";
constexpr std::size_t bareCodeLength = 6;

std::string_view upTo(std::string_view end, std::string_view text) { return text.substr(0, text.find(end)); }

// Stops early in a long text.
bool isBareCode(std::string_view text) {
  return characterCount(firstCharacters(text, bareCodeLength + 1)) == bareCodeLength;
}

}  // namespace

std::optional<std::string> parseInviteText(std::string_view text) {
  if (const auto found = text.find(parameter); found != std::string_view::npos) {
    return uppercased(upTo("&", upTo(parameter, text.substr(found + parameter.size()))));
  }
  return isBareCode(text) ? std::optional(uppercased(text)) : std::nullopt;
}

}  // namespace quillmar
