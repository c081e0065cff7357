#include "programs/doctor/bus_question.h"

#include <chrono>
#include <future>

#include "platform/linux/bus_thread.h"

namespace quillmar::doctor {
namespace {

constexpr std::chrono::seconds patience{5};

class NothingToKeep final : public BusSession {
  void joined(sdbus::IConnection&) override {}
  void left() override {}
};

}  // namespace

std::optional<sdbus::Error> ask(const std::string& busAddress,
                                const std::function<void(sdbus::IConnection&)>& question) {
  std::promise<std::optional<sdbus::Error>> asked;
  NothingToKeep session;
  BusThread bus(busAddress, patience, session);
  bus.post(
      [&](sdbus::IConnection& connection) {
        question(connection);
        asked.set_value(std::nullopt);
      },
      [&](const sdbus::Error& error) { asked.set_value(error); });
  return asked.get_future().get();
}

}  // namespace quillmar::doctor
