#include "foundation/value.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>

namespace quillmar {
namespace {

// Grows without leaving a copy of what it holds behind, which may be a password.
class Output {
 public:
  void operator+=(std::string_view text) {
    makeRoom(text.size());
    text_ += text;
  }
  void operator+=(char c) { *this += std::string_view(&c, 1); }

  std::string take() { return std::move(text_); }

 private:
  void makeRoom(std::size_t more) {
    if (text_.capacity() - text_.size() >= more) {
      return;
    }
    std::string larger;
    larger.reserve(std::max(text_.size() + more, 2 * text_.capacity()));
    larger = text_;
    wipe(text_);
    text_ = std::move(larger);
  }

  std::string text_;
};

void writeString(std::string_view text, Output& out) {
  static constexpr std::string_view hex = "0123456789abcdef";
  out += '"';
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    switch (c) {
      case '"':
        out += "\\\"";
        break;
      case '\\':
        out += "\\\\";
        break;
      case '\b':
        out += "\\b";
        break;
      case '\f':
        out += "\\f";
        break;
      case '\n':
        out += "\\n";
        break;
      case '\r':
        out += "\\r";
        break;
      case '\t':
        out += "\\t";
        break;
      default:
        if (byte < 0x20) {
          out += "\\u00";
          out += hex[byte >> 4U];
          out += hex[byte & 0xFU];
        } else {
          out += c;
        }
    }
  }
  out += '"';
}

template <class Number>
std::string_view written(Number number, std::array<char, 32>& buffer) {
  const char* const end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr;
  return {buffer.data(), static_cast<std::size_t>(end - buffer.data())};
}

void writeInteger(std::int64_t number, Output& out) {
  std::array<char, 32> buffer{};
  out += written(number, buffer);
}

// A fraction or an exponent keeps it from being read back as an integer.
void writeReal(double number, Output& out) {
  std::array<char, 32> buffer{};
  const auto digits = written(number, buffer);
  out += digits;
  out += digits.find_first_of(".e") == std::string_view::npos ? ".0" : "";
}

struct Writer {
  Output& out;

  void operator()(std::monostate) const { out += "null"; }
  void operator()(bool value) const { out += value ? "true" : "false"; }
  void operator()(std::int64_t value) const { writeInteger(value, out); }
  void operator()(double value) const {
    std::isfinite(value) ? writeReal(value, out) : (*this)(std::monostate());
  }
  void operator()(const std::string& value) const { writeString(value, out); }

  void operator()(const Value::List& list) const {
    out += '[';
    for (const char* separator = ""; const auto& element : list) {
      out += separator;
      element.visit(*this);
      separator = ",";
    }
    out += ']';
  }

  void operator()(const Value::Map& map) const {
    out += '{';
    for (const char* separator = ""; const auto& [key, entry] : map) {
      out += separator;
      writeString(key, out);
      out += ':';
      entry.visit(*this);
      separator = ",";
    }
    out += '}';
  }
};

}  // namespace

const Value* Value::find(std::string_view key) const {
  if (const auto* entries = map()) {
    for (const auto& [name, entry] : *entries) {
      if (name == key) {
        return &entry;
      }
    }
  }
  return nullptr;
}

std::string writeJson(const Value& value) {
  Output out;
  value.visit(Writer{out});
  return out.take();
}

}  // namespace quillmar
