#include "sandbox/guesses.h"

namespace quillmar::sandbox {
namespace {

// Older attempts are forgotten, so that invented addresses don't fill the memory.
constexpr std::chrono::minutes memory{15};
constexpr std::size_t mostAddresses = 10'000;

}  // namespace

std::optional<std::chrono::seconds> Guesses::pauseFor(const std::string& address, Time now) const {
  const auto found = tried_.find(address);
  if (found == tried_.end() || found->second.times < free) {
    return std::nullopt;
  }
  const auto left = std::chrono::ceil<std::chrono::seconds>(found->second.last + pause - now);
  return left.count() > 0 ? std::optional{left} : std::nullopt;
}

void Guesses::wrong(const std::string& address, Time now) {
  std::erase_if(tried_, [now](const auto& entry) { return entry.second.last + memory < now; });
  if (tried_.size() >= mostAddresses) {
    tried_.clear();
  }
  auto& tried = tried_[address];
  ++tried.times;
  tried.last = now;
}

}  // namespace quillmar::sandbox
