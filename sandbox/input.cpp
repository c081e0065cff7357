#include "sandbox/input.h"

#include <limits>

namespace quillmar::sandbox {
namespace {

constexpr std::size_t longestText = 2000;

std::string quoted(std::string_view key) { return "“" + std::string{key} + "”"; }

std::string joined(const std::vector<std::string>& items, std::string_view between, std::string_view last) {
  std::string text;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (i > 0) {
      text += i + 1 == items.size() ? last : between;
    }
    text += items[i];
  }
  return text;
}

}  // namespace

const Json* Input::find(std::string_view key) const {
  const auto found = object_.find(std::string{key});
  return found == object_.end() || found->is_null() ? nullptr : &*found;
}

const Json* Input::findRequired(std::string_view key) {
  const auto* const value = find(key);
  if (value == nullptr) {
    missing_.push_back(quoted(key));
  }
  return value;
}

void Input::wrongType(std::string_view key, std::string_view expected) {
  wrong_.push_back(quoted(key) + " has to be " + std::string{expected});
}

std::string Input::text(std::string_view key) {
  return findRequired(key) == nullptr ? std::string{} : optionalText(key).value_or("");
}

bool Input::flag(std::string_view key) {
  return findRequired(key) != nullptr && optionalFlag(key).value_or(false);
}

std::optional<std::string> Input::optionalText(std::string_view key) {
  const auto* const value = find(key);
  if (value == nullptr) {
    return std::nullopt;
  }
  const auto* const text = value->get_ptr<const std::string*>();
  if (text == nullptr) {
    wrongType(key, "a text");
    return std::nullopt;
  }
  require(text->size() <= longestText, quoted(key) + " is too long.");
  return *text;
}

std::optional<bool> Input::optionalFlag(std::string_view key) {
  const auto* const value = find(key);
  if (value == nullptr) {
    return std::nullopt;
  }
  const auto* const flag = value->get_ptr<const bool*>();
  if (flag != nullptr) {
    return *flag;
  }
  wrongType(key, "true or false");
  return std::nullopt;
}

std::optional<std::int64_t> Input::optionalInteger(std::string_view key) {
  const auto* const value = find(key);
  if (value == nullptr) {
    return std::nullopt;
  }
  const auto* const natural = value->get_ptr<const std::uint64_t*>();
  const bool fits = natural == nullptr || *natural <= std::uint64_t(std::numeric_limits<std::int64_t>::max());
  if (value->is_number_integer() && fits) {
    return value->get<std::int64_t>();
  }
  wrongType(key, "a whole number");
  return std::nullopt;
}

std::optional<double> Input::optionalNumber(std::string_view key) {
  const auto* const value = find(key);
  if (value == nullptr) {
    return std::nullopt;
  }
  if (value->is_number()) {
    return value->get<double>();
  }
  wrongType(key, "a number");
  return std::nullopt;
}

void Input::require(bool holds, std::string_view otherwise) {
  if (!holds && !broken_) {
    broken_ = otherwise;
  }
}

std::optional<Answer> Input::refusal() const {
  std::vector<std::string> faults;
  if (!missing_.empty()) {
    faults.push_back("the request lacks " + joined(missing_, ", ", " and "));
  }
  faults.insert(faults.end(), wrong_.begin(), wrong_.end());
  if (!faults.empty()) {
    auto text = joined(faults, "; ", "; ") + ".";
    if (text.front() == 't') {
      text.front() = 'T';
    }
    return sandbox::refusal(400, text);
  }
  if (broken_) {
    return sandbox::refusal(422, *broken_);
  }
  return std::nullopt;
}

}  // namespace quillmar::sandbox
