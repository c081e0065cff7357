#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/observable.h"
#include "platform/dispatch.h"
#include "platform/log.h"
#include "platform/settings.h"

namespace quillmar {

class NetworkService;
struct AuthResponse;

// The signed-in parent of this device. Makes no login call itself: screens call the service and pass the
// answer here. A failed refresh never ends a session; only `logout` does.
class AuthState final : public ObservableObject {
 public:
  static constexpr std::string_view tokenTimestampKey = settings::authTokenTimestamp;

  AuthState(SettingsStore& settings, Dispatch& dispatch, Log& log, std::shared_ptr<NetworkService> service);

  Published<bool> isLoggedIn{*this, "isLoggedIn", false};
  Published<std::string> parentId{*this, "parentId"};
  Published<std::string> email{*this, "email"};
  Published<std::string> name{*this, "name"};
  Published<std::string> familyId{*this, "familyId"};

  Derived<std::string> displayName{*this, "displayName",
                                   [this] { return name().empty() ? email() : name(); }};
  Derived<std::string> initials{*this, "initials", [this] { return computeInitials(); }};

  const std::optional<Date>& tokenSavedAt() const { return tokenSavedAt_; }

  void saveLogin(const AuthResponse& response);
  // The login of a parent who joins a family. Does not update the token's time stamp, so the next check
  // refreshes.
  void login(const std::string& token, const std::string& parentId, const std::string& email,
             const std::string& name);
  void refreshTokenIfNeeded();
  void logout();

 private:
  void loadState();
  void openSession(const std::string& parentId, const std::string& email, const std::string& name);
  void storeSession(const std::string& token);
  void refresh();
  std::string computeInitials() const;

  SettingsStore& settings_;
  Dispatch& dispatch_;
  Log& log_;
  const std::shared_ptr<NetworkService> service_;
  std::optional<Date> tokenSavedAt_;
};

}  // namespace quillmar
