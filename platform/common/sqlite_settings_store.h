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

// The settings in `settings.db` of a private directory. All values are held in memory too, so a read costs no
// disk access; what another process wrote is seen by the next read. A write is handed to the kernel before it
// returns and costs no sync; `synchronize` costs one. A damaged file is set aside as
// `settings.db.damaged-TIME`. While the file can't be opened or written, values live in memory, and every
// later read or write tries to save all of them, as does the end.
class SqliteSettingsStore final : public SettingsStore {
 public:
  static constexpr std::string_view fileName = "settings.db";

  // Whether there is certainly no file in the directory, which may be absent too.
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
  // False where there is a file at the start from which nothing can be learnt.
  bool isReadable() const;

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace quillmar
