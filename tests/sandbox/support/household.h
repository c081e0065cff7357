#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <memory>
#include <string>

#include "sandbox/json.h"
#include "sandbox/service.h"
#include "tests/sandbox/support/run_command.h"

namespace quillmar::sandbox::test {

// What curl brought back.
struct Reply {
  int exitStatus = -1;  // curl's own
  int status = 0;
  std::string contentType{};
  double seconds = 0;  // from the start of the request to the end of its answer
  std::string body{};

  [[nodiscard]] Json json() const { return Json::parse(body, nullptr, false); }
  [[nodiscard]] std::string error() const;
};

// A service of its own for each test, with a clock that stands still until moved, asked through curl.
class ServiceTest : public testing::Test {
 protected:
  ServiceTest();
  ~ServiceTest() override;

  void advance(std::chrono::milliseconds duration) { now_ += duration.count(); }
  [[nodiscard]] Time now() const { return timeOf(now_); }

  // Over TLS, verified against the CA file. The path stands behind /api/v1 unless it begins with /sandbox or
  // /dns-query.
  Reply ask(const std::string& method, const std::string& path, const std::string& token = {},
            const std::string& body = {}, const std::vector<std::string>& options = {});
  Reply curl(const std::vector<std::string>& options, const std::string& input = {});

  // Without curl, for what a test takes for granted; fails the test on a refusal.
  Json given(const std::string& method, const std::string& path, const std::string& token = {},
             const Json& body = {});

  // Each of these is made through the calls of the service.
  std::string givenAccount(const std::string& email, const std::string& name = "Ann Fielding");  // its token
  std::string givenMember(const std::string& token, const std::string& email);                   // its token
  std::string givenChild(const std::string& token, const std::string& name = "Mia");             // its id
  std::string givenDevice(const std::string& token, const std::optional<std::string>& childId = std::nullopt);
  std::string memberId(const std::string& token, const std::string& email);

  Service& service() { return *service_; }
  void restart(const Options& options);

 private:
  std::atomic<std::int64_t> now_;
  std::unique_ptr<Service> service_;
};

inline constexpr const char* password = "correct horse";

}  // namespace quillmar::sandbox::test
