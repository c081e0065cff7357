#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <functional>
#include <string>
#include <vector>

namespace quillmar {

// The signals that an adapter listens to while connected to a bus. Bus thread only.
class BusSignals {
 public:
  using Heard = std::function<void(sdbus::Message&)>;

  void joined(sdbus::IConnection& bus) { bus_ = &bus; }
  void left();

  // `rule` is a match rule without its type. Anyone can send this program a signal, so `heard` checks the
  // sender. A signal with unexpected arguments is ignored.
  void watch(const std::string& rule, Heard heard);
  // Tells each change of the owner of a service's name: the new owner's own name, or nothing.
  void watchOwner(const std::string& service, std::function<void(const std::string& owner)> changed);
  // Its present owner; empty if the service does not run.
  std::string ownerOf(const std::string& service);

 private:
  sdbus::IConnection* bus_ = nullptr;
  std::vector<sdbus::Slot> matches_;
};

}  // namespace quillmar
