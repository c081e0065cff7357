#pragma once

#include <gtest/gtest.h>

#include <string>

#include "tests/journeys/real_service.h"
#include "tests/sandbox/support/run_command.h"

// DNS over HTTPS lookups by other programs; they verify the service's certificate.
namespace quillmar {

// By kdig. False: the name does not exist.
inline bool kdigResolves(const RealService& service, const std::string& endpoint, const std::string& name) {
  const std::string path = endpoint.substr(endpoint.find("/dns-query"));
  const auto result = sandbox::test::runCommand(
      {"kdig", "@127.0.0.1", "-p", std::to_string(service->tlsPort()), "+https=" + path,
       "+tls-ca=" + service->caFile().string(), "+tls-hostname=localhost", "+retry=0", name});
  EXPECT_EQ(result.status, 0) << result.output << result.errors;
  const bool exists = result.output.find("status: NOERROR") != std::string::npos;
  EXPECT_NE(exists, result.output.find("status: NXDOMAIN") != std::string::npos) << result.output;
  return exists;
}

// By curl, before it fetches a page from that name. False: the name does not exist. The page itself can't be
// reached from the loopback address.
inline bool curlResolves(const RealService& service, const std::string& endpoint, const std::string& name) {
  constexpr int couldNotResolveHost = 6;
  constexpr int couldNotConnect = 7;
  const auto result = sandbox::test::runCommand(
      {"curl", "--silent", "--show-error", "--noproxy", "*", "--doh-url", endpoint, "--cacert",
       service->caFile().string(), "--interface", "127.0.0.1", "http://" + name + '/'});
  EXPECT_TRUE(result.status == couldNotResolveHost || result.status == couldNotConnect)
      << result.status << ' ' << result.errors;
  return result.status == couldNotConnect;
}

}  // namespace quillmar
