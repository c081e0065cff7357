#include "identity/auth_state.h"

#include <chrono>
#include <utility>

#include "client/network_service.h"
#include "client/records/account.h"
#include "foundation/secret.h"
#include "foundation/text.h"
#include "identity/initials.h"
#include "platform/hop.h"

namespace quillmar {
namespace {

constexpr auto tokenLife = std::chrono::hours(12);

}  // namespace

AuthState::AuthState(SettingsStore& settings, Dispatch& dispatch, Log& log,
                     std::shared_ptr<NetworkService> service)
    : ObservableObject("AuthState"),
      settings_(settings),
      dispatch_(dispatch),
      log_(log),
      service_(std::move(service)) {
  loadState();
}

void AuthState::loadState() {
  const Secret token(settings_.read(settings::authToken).value_or(""));
  if (token.empty()) {
    log_.print("[AuthState] loadState - no token found, isLoggedIn: false");
    return;
  }
  isLoggedIn = true;
  parentId = settings_.read(settings::parentId).value_or("");
  email = settings_.read(settings::parentEmail).value_or("");
  name = settings_.read(settings::parentName).value_or("");
  familyId = settings_.read(settings::familyId).value_or("");
  tokenSavedAt_ = settings_.read(settings::authTokenTimestamp);
  log_.print("[AuthState] loadState - token found, length: " + std::to_string(characterCount(token.text())) +
             ", isLoggedIn: true");
  refreshTokenIfNeeded();
}

void AuthState::openSession(const std::string& newParentId, const std::string& newEmail,
                            const std::string& newName) {
  isLoggedIn = true;
  parentId = newParentId;
  email = newEmail;
  name = newName;
}

void AuthState::storeSession(const std::string& token) {
  settings_.write(settings::authToken, token);
  settings_.write(settings::parentId, parentId());
  settings_.write(settings::parentEmail, email());
  settings_.write(settings::parentName, name());
}

void AuthState::saveLogin(const AuthResponse& response) {
  openSession(response.parentId, response.email, response.name);
  tokenSavedAt_ = dispatch_.now();
  storeSession(response.token);
  settings_.write(settings::authTokenTimestamp, *tokenSavedAt_);
  settings_.synchronize();
  log_.print("[AuthState] saveLogin - token saved, length: " +
             std::to_string(characterCount(response.token.text())));
}

void AuthState::login(const std::string& token, const std::string& newParentId, const std::string& newEmail,
                      const std::string& newName) {
  openSession(newParentId, newEmail, newName);
  storeSession(token);
  settings_.synchronize();
  log_.print("[AuthState] login - token saved, length: " + std::to_string(characterCount(token)));
}

void AuthState::refreshTokenIfNeeded() {
  if (!isLoggedIn()) {
    return;
  }
  if (!tokenSavedAt_) {
    log_.print("[AuthState] No token timestamp found, attempting refresh");
    refresh();
    return;
  }
  const Duration age = dispatch_.now() - *tokenSavedAt_;
  const auto hours = std::to_string(std::chrono::duration_cast<std::chrono::hours>(age).count());
  if (age > tokenLife) {
    log_.print("[AuthState] Token is " + hours + " hours old, refreshing proactively");
    refresh();
  } else {
    log_.print("[AuthState] Token is " + hours + " hours old, no refresh needed");
  }
}

void AuthState::refresh() {
  auto handle = [this, guard = lifetimeGuard(), &log = log_](const Result<AuthResponse>& refreshed) {
    if (refreshed.ok()) {
      log.print("[AuthState] Token refresh successful");
      if (guard.alive()) {
        saveLogin(refreshed.value());
      }
      return;
    }
    log.print("[AuthState] Token refresh failed: " + refreshed.error().localizedDescription());
    if (refreshed.error() == NetworkError::unauthorized()) {
      log.print("[AuthState] Token expired beyond grace period, user needs to re-login");
    }
  };
  service_->refreshToken(hoppingToMain(dispatch_, std::move(handle)));
}

void AuthState::logout() {
  isLoggedIn = false;
  parentId = std::string();
  email = std::string();
  name = std::string();
  familyId = std::string();
  service_->clearSession();
}

std::string AuthState::computeInitials() const {
  const auto words = nameWords(name());
  return initialsOf(words, words.empty() ? email() : words[0]);
}

}  // namespace quillmar
