#pragma once

#include <memory>

#include "platform/common/sqlite_settings_store.h"
#include "platform/dispatch.h"

namespace quillmar {

// Saves again what a full disk did not take, every five seconds until it does. Otherwise no timer runs.
class SaveRetry {
 public:
  static constexpr Duration period = std::chrono::seconds(5);

  // Both must outlive this.
  SaveRetry(SqliteSettingsStore& settings, Dispatch& dispatch);
  SaveRetry(const SaveRetry&) = delete;
  SaveRetry& operator=(const SaveRetry&) = delete;
  ~SaveRetry();

 private:
  void begin();

  SqliteSettingsStore& settings_;
  Dispatch& dispatch_;
  std::unique_ptr<Timer> timer_;
  const std::shared_ptr<SaveRetry*> self_ = std::make_shared<SaveRetry*>(this);
};

}  // namespace quillmar
