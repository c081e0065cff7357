#include "platform/linux/bus_calls.h"

namespace quillmar {

sdbus::Error busWentAway() {
  return sdbus::Error("org.freedesktop.DBus.Error.Disconnected", "The system's message bus went away.");
}

void BusCalls::left() {
  bus_ = nullptr;
  for (const auto& [id, failed] : std::exchange(pending_, {})) {
    failed(busWentAway());
  }
  objects_.clear();
}

void BusCalls::answered(std::uint64_t id, sdbus::MethodReply& reply, const sdbus::Error* error,
                        const Then& then) {
  if (error) {
    fail(id, *error);
    return;
  }
  auto call = pending_.extract(id);
  try {
    then(reply);
  } catch (const sdbus::Error& unreadable) {
    call.mapped()(unreadable);
  }
}

void BusCalls::fail(std::uint64_t id, const sdbus::Error& error) {
  if (const auto call = pending_.extract(id)) {
    call.mapped()(error);
  }
}

sdbus::IProxy& BusCalls::lastingObject(const Method& method) {
  auto& known = objects_[method.service + method.path];
  if (!known) {
    known = sdbus::createProxy(*bus_, method.service, method.path);
  }
  return *known;
}

}  // namespace quillmar
