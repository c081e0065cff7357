#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillmar::test {

// AT-SPI's numbers of roles and states.
enum class Role : std::uint32_t {
  alert = 2,
  checkBox = 7,
  dialog = 16,
  frame = 23,
  label = 29,
  list = 31,
  listItem = 32,
  menuItem = 35,
  pageTab = 37,
  panel = 39,
  password = 40,
  menu = 41,
  button = 43,
  radio = 44,
  text = 61,
  toolBar = 63,
  heading = 83,
};
enum class State : std::uint32_t {
  checked = 4,
  focusable = 11,
  focused = 12,
  visible = 30,
};

// What a screen reader is told of one element of a window.
struct Element {
  bool is(State state) const { return (states >> static_cast<std::uint32_t>(state) & 1) != 0; }
  bool can(const std::string& action) const;

  std::string program;
  std::string path;
  std::optional<std::size_t> parent;  // its index
  Role role{};
  std::uint64_t states = 0;
  std::string name{};
  std::string description{};
  std::string text{};
  std::vector<std::string> actions{};
};
// In the order in which they are read.
using Elements = std::vector<Element>;

std::string written(const Elements& elements);

// A screen reader on the accessibility bus of a session.
class ScreenReader {
 public:
  // Throws sdbus::Error if the session has no accessibility bus.
  explicit ScreenReader(const std::string& sessionBus);

  // Everything that is visible in the windows of all programs.
  Elements listen() const;
  // Listens until the condition holds, and returns what was heard then. Far too long without it is a failure
  // of the test, and returns what was heard last.
  Elements listenUntil(const std::string& purpose,
                       const std::function<bool(const Elements&)>& condition) const;
  void perform(const Element& element, const std::string& action) const;

 private:
  void read(const sdbus::Struct<std::string, sdbus::ObjectPath>& place, std::optional<std::size_t> parent,
            Elements& elements) const;

  std::unique_ptr<sdbus::IConnection> bus_;
};

}  // namespace quillmar::test
