#include "tests/programs/screen_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <thread>
#include <tuple>

namespace quillmar::test {
namespace {

using Place = sdbus::Struct<std::string, sdbus::ObjectPath>;

constexpr auto accessible = "org.a11y.atspi.Accessible";
constexpr auto action = "org.a11y.atspi.Action";
constexpr auto textInterface = "org.a11y.atspi.Text";

std::string accessibilityBus(const std::string& sessionBus) {
  const auto session = sdbus::createSessionBusConnectionWithAddress(sessionBus);
  std::string address;
  sdbus::createProxy(*session, "org.a11y.Bus", "/org/a11y/bus")
      ->callMethod("GetAddress")
      .onInterface("org.a11y.Bus")
      .storeResultsTo(address);
  return address;
}

template <class T>
T ask(sdbus::IProxy& element, const char* interface, const char* method) {
  T answer{};
  element.callMethod(method).onInterface(interface).storeResultsTo(answer);
  return answer;
}

bool has(const std::vector<std::string>& all, const std::string& one) {
  return std::ranges::find(all, one) != all.end();
}

std::vector<std::string> actionsOf(sdbus::IProxy& element) {
  using Action = sdbus::Struct<std::string, std::string, std::string>;
  std::vector<std::string> names;
  for (const auto& each : ask<std::vector<Action>>(element, action, "GetActions")) {
    names.push_back(each.get<0>());
  }
  return names;
}

std::string textOf(sdbus::IProxy& element) {
  constexpr std::int32_t all = -1;
  std::string text;
  element.callMethod("GetText")
      .onInterface(textInterface)
      .withArguments(std::int32_t{0}, all)
      .storeResultsTo(text);
  return text;
}

}  // namespace

bool Element::can(const std::string& wanted) const { return has(actions, wanted); }

std::string written(const Elements& elements) {
  std::string lines;
  for (const auto& element : elements) {
    lines += "  [" + std::to_string(static_cast<std::uint32_t>(element.role)) + "] \"" + element.name + "\"";
    lines += element.description.empty() ? "" : " (" + element.description + ")";
    lines += element.text.empty() ? "" : " \"" + element.text + "\"";
    lines += element.is(State::checked) ? " checked\n" : "\n";
  }
  return lines;
}

ScreenReader::ScreenReader(const std::string& sessionBus)
    : bus_(sdbus::createSessionBusConnectionWithAddress(accessibilityBus(sessionBus))) {}

Elements ScreenReader::listen() const {
  constexpr auto root = "/org/a11y/atspi/accessible/root";
  const auto registry = sdbus::createProxy(*bus_, "org.a11y.atspi.Registry", root);
  Elements elements;
  for (const auto& program : ask<std::vector<Place>>(*registry, accessible, "GetChildren")) {
    const auto windows = sdbus::createProxy(*bus_, program.get<0>(), program.get<1>());
    for (const auto& window : ask<std::vector<Place>>(*windows, accessible, "GetChildren")) {
      read(window, std::nullopt, elements);
    }
  }
  return elements;
}

void ScreenReader::read(const Place& place, std::optional<std::size_t> parent, Elements& elements) const {
  const auto proxy = sdbus::createProxy(*bus_, place.get<0>(), place.get<1>());
  Element element{.program = place.get<0>(), .path = place.get<1>(), .parent = parent};
  const auto states = ask<std::vector<std::uint32_t>>(*proxy, accessible, "GetState");
  element.states = states.at(0) | std::uint64_t{states.at(1)} << 32;
  if (!element.is(State::visible)) {
    return;
  }
  element.role = static_cast<Role>(ask<std::uint32_t>(*proxy, accessible, "GetRole"));
  element.name = proxy->getProperty("Name").onInterface(accessible).get<std::string>();
  element.description = proxy->getProperty("Description").onInterface(accessible).get<std::string>();
  const auto interfaces = ask<std::vector<std::string>>(*proxy, accessible, "GetInterfaces");
  if (has(interfaces, action)) {
    element.actions = actionsOf(*proxy);
  }
  if (has(interfaces, textInterface)) {
    element.text = textOf(*proxy);
  }
  const auto index = elements.size();
  elements.push_back(std::move(element));
  for (const auto& child : ask<std::vector<Place>>(*proxy, accessible, "GetChildren")) {
    read(child, index, elements);
  }
}

// Qt announces neither the end of a transition nor every change, so there is nothing to wait for but the
// state itself.
Elements ScreenReader::listenUntil(const std::string& purpose,
                                   const std::function<bool(const Elements&)>& condition) const {
  using namespace std::chrono_literals;
  const auto farTooLong = std::chrono::steady_clock::now() + 20s;
  Elements heard;
  do {
    try {
      heard = listen();
      if (condition(heard)) {
        return heard;
      }
    } catch (const sdbus::Error&) {
      // An element has gone meanwhile.
    }
    std::this_thread::sleep_for(20ms);
  } while (std::chrono::steady_clock::now() < farTooLong);
  ADD_FAILURE() << purpose << " in vain; heard was\n" << written(heard);
  return heard;
}

void ScreenReader::perform(const Element& element, const std::string& wanted) const {
  const auto index = std::ranges::find(element.actions, wanted) - element.actions.begin();
  sdbus::createProxy(*bus_, element.program, element.path)
      ->callMethod("DoAction")
      .onInterface(action)
      .withArguments(static_cast<std::int32_t>(index));
}

}  // namespace quillmar::test
