#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/log.h"
#include "platform/settings_store.h"

namespace quillmar {

// The settings in `settings.db` of a private directory. Values are cached, so a read costs no disk access;
// the next read sees what another process wrote. A write reaches the kernel before it returns, without a
// sync; `synchronize` syncs. A damaged file is renamed to `settings.db.damaged-TIME`. If the file can't be
// opened or written, values stay in memory, and each read, each write and the destructor tries to save them.
class SqliteSettingsStore final : public SettingsStore {
 public:
  static constexpr std::string_view fileName = "settings.db";

  // True only if there is certainly no file; the directory may be missing too.
  static bool isAbsentFrom(const std::filesystem::path& directory);

  SqliteSettingsStore(std::filesystem::path directory, Log& log);
  ~SqliteSettingsStore() override;

  std::optional<SettingValue> object(std::string_view key) const override;
  void set(std::string_view key, SettingValue value) override;
  void remove(std::string_view key) override;
  void writeTogether(const std::function<void()>& writes) override;
  void synchronize() override;
  void scrub() override;
  std::map<std::string, SettingValue> all() const override;
  bool hasUnsaved() const;
  // Called on the thread of a write whose values could not be saved; not to call the store.
  void whenUnsaved(std::function<void()> observer);
  // False if a file existed at the start but could not be read.
  bool isReadable() const;

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace quillmar
