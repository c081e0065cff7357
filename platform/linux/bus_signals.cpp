#include "platform/linux/bus_signals.h"

#include <utility>

#include "platform/linux/bus_names.h"

namespace quillmar {

void BusSignals::left() {
  matches_.clear();
  bus_ = nullptr;
}

void BusSignals::watch(const std::string& rule, Heard heard) {
  matches_.push_back(
      bus_->addMatch("type='signal'," + rule, [heard = std::move(heard)](sdbus::Message& message) {
        try {
          heard(message);
        } catch (const sdbus::Error&) {
          // Its arguments are not the expected ones.
        }
      }));
}

void BusSignals::watchOwner(const std::string& service,
                            std::function<void(const std::string& owner)> changed) {
  const std::string bus(messageBus);
  watch("sender='" + bus + "',interface='" + bus + "',member='NameOwnerChanged',arg0='" + service + "'",
        [service, changed = std::move(changed)](sdbus::Message& message) {
          std::string name;
          std::string before;
          std::string owner;
          message >> name >> before >> owner;
          if (message.getSender() == messageBus && name == service) {
            changed(owner);
          }
        });
}

std::string BusSignals::ownerOf(const std::string& service) {
  try {
    std::string owner;
    sdbus::createProxy(*bus_, messageBus, messageBusPath)
        ->callMethod("GetNameOwner")
        .onInterface(messageBus)
        .withArguments(service)
        .storeResultsTo(owner);
    return owner;
  } catch (const sdbus::Error&) {
    return {};
  }
}

}  // namespace quillmar
