#pragma once

#include <QLocalServer>
#include <filesystem>
#include <functional>
#include <optional>

#include "platform/linux/data_directory.h"

namespace quillmar {

// One process for each data directory. The first holds a lock and listens on a socket in that directory,
// which only its owner can enter; a later one knocks there, and the first shows its window.
class SingleInstance {
 public:
  enum class Place { first, second };

  // Where the directory can't be used at all, this is the first: the program runs without it.
  Place take(const std::filesystem::path& directory);
  // Runs on the main thread at each knock.
  void onKnock(std::function<void()> reaction);

 private:
  QLocalServer server_;
  std::optional<InstanceLock> lock_;
};

}  // namespace quillmar
