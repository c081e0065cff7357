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

// The result of a curl call.
struct Reply {
  int exitStatus = -1;  // curl's own
  int status = 0;
  std::string contentType{};
  double seconds = 0;  // from the start of the request to the end of its answer
  std::string body{};

  [[nodiscard]] Json json() const { return Json::parse(body, nullptr, false); }
  [[nodiscard]] std::string error() const;
};

// Starts a service for each test, with a clock that the test moves, and calls it through curl.
class ServiceTest : public testing::Test {
 protected:
  ServiceTest();
  ~ServiceTest() override;

  void advance(std::chrono::milliseconds duration) { now_ += duration.count(); }
  [[nodiscard]] Time now() const { return timeOf(now_); }

  // Over TLS, verified with the CA file. The path is relative to /api/v1, except /sandbox and /dns-query.
  Reply ask(const std::string& method, const std::string& path, const std::string& token = {},
            const std::string& body = {}, const std::vector<std::string>& options = {});
  Reply curl(const std::vector<std::string>& options, const std::string& input = {});

  // A set-up call, without curl; a refusal fails the test.
  Json given(const std::string& method, const std::string& path, const std::string& token = {},
             const Json& body = {});

  // Each is created by calls of the service.
  std::string givenAccount(const std::string& email, const std::string& name = "Ann Fielding");  // its token
  std::string givenMember(const std::string& token, const std::string& email);                   // its token
  std::string givenChild(const std::string& token, const std::string& name = "Mia");             // its id
  std::string givenDevice(const std::string& token, const std::optional<std::string>& childId = std::nullopt);
  // The DNS endpoint of a new device in a new account whose child may not visit this domain.
  std::string givenEndpointBlocking(const std::string& domain);
  std::string memberId(const std::string& token, const std::string& email);

  Service& service() { return *service_; }
  void restart(const Options& options);

 private:
  std::atomic<std::int64_t> now_;
  std::unique_ptr<Service> service_;
};

inline constexpr const char* password = "correct horse";

}  // namespace quillmar::sandbox::test
