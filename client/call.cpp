#include "client/call.h"

#include "foundation/url.h"

namespace quillmar {
namespace {

std::string inPlace(std::string_view place, const std::string& argument) {
  if (place == "{%path}") {
    return percentEncodedForPath(argument);
  }
  return place == "{%query}" ? percentEncodedForQuery(argument) : argument;
}

}  // namespace

std::string filledPath(std::string_view path, std::span<const std::string> arguments) {
  std::string filled;
  for (const auto& argument : arguments) {
    const auto begin = path.find('{');
    const auto end = path.find('}') + 1;
    filled.append(path.substr(0, begin)).append(inPlace(path.substr(begin, end - begin), argument));
    path.remove_prefix(end);
  }
  return filled.append(path);
}

}  // namespace quillmar
