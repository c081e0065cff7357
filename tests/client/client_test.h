#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "client/network_service.h"
#include "client/records/account.h"
#include "client/records/enrollment.h"
#include "foundation/json.h"
#include "testing/fake_platform.h"

namespace quillmar {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Kind = TransportError::Kind;

inline void PrintTo(const Error& error, std::ostream* out) { *out << error.localizedDescription(); }
inline void PrintTo(const NetworkError& error, std::ostream* out) { *out << error.errorDescription(); }

inline constexpr std::string_view malformedText =
    "The data couldn’t be read because it isn’t in the correct format.";
inline constexpr std::string_view missingText = "The data couldn’t be read because it is missing.";
inline constexpr std::string_view unwritableText =
    "The data couldn’t be written because it isn’t in the correct format.";

// Every secret starts with this mark, so one search of the log finds any of them.
inline constexpr std::string_view secretMark = "secret-";
inline const std::string oldToken = "secret-token";
inline const std::string newToken = "secret-token-renewed";
inline const std::string password = "secret-password";
inline const std::string notUtf8 = "Zo\xEB";

inline std::string authBody(const std::string& token) {
  return R"({"token":")" + token + R"(","parent_id":"p1","email":"zoe@example.org","name":"Zoe Lee"})";
}

inline AuthResponse authResponse(const std::string& token) {
  return {.token = token,
          .parentId = "p1",
          .email = "zoe@example.org",
          .phone = {},
          .name = "Zoe Lee",
          .region = {},
          .dohServerId = {},
          .dohBaseURL = {}};
}

inline std::string deviceBody() {
  return R"({"id":"d1","parent_id":"p1","device_name":"Tablet","device_type":"ios",)"
         R"("doh_endpoint":"https://doh.example/d1","is_active":true,"created_at":"c","updated_at":"u"})";
}

inline std::string completedBody() {
  return R"({"message":"done","device":)" + deviceBody() + R"(,"doh_endpoint":"https://doh.example/d1"})";
}

inline std::string manualBody() {
  return R"({"message":"done","device":)" + deviceBody() +
         R"(,"dns_server":"192.0.2.1","setup_instructions":{"platform":"tv","dns_server_ip":"192.0.2.1",)"
         R"("steps":["one","two"]},"note":"n"})";
}

inline const RegisterRequest newAccount{.email = "zoe@example.org",
                                        .password = password,
                                        .phone = "+61400000000",
                                        .name = "Zoe Lee",
                                        .region = std::nullopt};
inline const ManualEnrollmentRequest television{
    .deviceName = "TV", .deviceType = "smart-tv", .deviceIP = std::nullopt, .childId = std::nullopt};

// The outcome of one call. Stays valid however late the call's closure is destroyed.
template <class T>
class Outcome {
 public:
  explicit Outcome(const Dispatch& dispatch) : dispatch_(dispatch) {}

  Completion<T> completion() const {
    return [state = state_, &dispatch = dispatch_](Result<T> result) {
      ++state->calls;
      state->result = std::move(result);
      state->onMainThread = dispatch.isMainThread();
    };
  }

  int calls() const { return state_->calls; }
  bool isPending() const { return state_->calls == 0; }
  bool onMainThread() const { return state_->onMainThread; }
  bool succeeded() const { return !isPending() && state_->result->ok(); }
  bool failed() const { return !isPending() && !state_->result->ok(); }
  // Fails here with a clear message if there is no outcome, or the wrong kind.
  T value() const {
    EXPECT_TRUE(succeeded()) << (isPending() ? "no answer yet" : error().localizedDescription());
    return succeeded() ? state_->result->value() : T();
  }
  Error error() const {
    EXPECT_TRUE(failed()) << (isPending() ? "no answer yet" : "a success");
    return failed() ? state_->result->error() : Error(CodingError{});
  }
  std::string errorText() const { return error().localizedDescription(); }

 private:
  struct State {
    int calls = 0;
    bool onMainThread = false;
    std::optional<Result<T>> result;
  };

  const Dispatch& dispatch_;
  std::shared_ptr<State> state_ = std::make_shared<State>();
};

template <>
inline void Outcome<void>::value() const {
  EXPECT_TRUE(succeeded()) << (isPending() ? "no answer yet" : error().localizedDescription());
}

// Each test gets its own service, with a stored region and token. After each test the whole log is searched
// for secrets.
class ClientTest : public testing::Test {
 protected:
  ClientTest() {
    settings.set(NetworkService::regionKey, "australia");
    settings.set(NetworkService::authTokenKey, oldToken);
  }

  void TearDown() override {
    for (const auto& lines : {log.printed(), log.systemLines()}) {
      for (const auto& line : lines) {
        EXPECT_TRUE(showsABody(line) || line.find(secretMark) == std::string::npos) << line;
      }
    }
    for (const auto& line : log.systemLines()) {
      EXPECT_TRUE(line.starts_with("[NetworkService] getChildren ") ||
                  line.starts_with("[NetworkService] createChild "))
          << line;
    }
  }

  template <class T>
  Outcome<T> outcome() const {
    return Outcome<T>(platform.dispatch);
  }
  void settle() { ASSERT_TRUE(platform.dispatch.settle()); }
  std::vector<std::string> printed() const { return log.printed(); }
  std::optional<std::string> storedToken() const { return settings.string(NetworkService::authTokenKey); }
  void removeRoot() { settings.remove(NetworkService::regionKey); }
  void removeToken() { settings.remove(NetworkService::authTokenKey); }
  void breakRoot() { settings.set(NetworkService::apiURLKey, "https://not a url"); }
  std::size_t refreshes() const { return http.count("POST", "/auth/refresh"); }

  FakePlatform platform;
  MemorySettingsStore& settings = platform.settings;
  RecordingLog& log = platform.log;
  ScriptedHttpSession& http = platform.http;
  std::shared_ptr<NetworkService> service =
      NetworkService::make(http, settings, log, platform.dispatch,
                           {"https://au.example", "https://nz.example", "https://sg.example"});

 private:
  static bool showsABody(std::string_view line) {
    static constexpr auto prefixes = std::to_array<std::string_view>({
        "[NetworkService] Response body: ",
        "[NetworkService] checkin - response: ",
        "[NetworkService] completeEnrollment - response: ",
        "[NetworkService] Manual enrollment response: ",
        "[NetworkService] getChildren - response: ",
        "[NetworkService] createChild - response: ",
    });
    return std::ranges::any_of(prefixes, [&](std::string_view prefix) { return line.starts_with(prefix); });
  }
};

}  // namespace quillmar
