#include "tests/contracts/doh_endpoint_contract.h"

#include <csignal>
#include <fstream>
#include <optional>

#include "sandbox/http/certificates.h"
#include "testing/temporary_directory.h"
#include "tests/sandbox/support/household.h"
#include "tests/sandbox/support/loopback.h"
#include "tests/sandbox/support/run_command.h"

namespace quillmar::tunnel {
namespace {

class StandInHarness final : public DohEndpointHarness, private sandbox::test::ServiceTest {
 public:
  std::string url() override { return url_; }
  std::string caFile() override { return service().caFile().string(); }
  void breakConnections() override {
    service().misbehave({.dropCount = 1, .drop = sandbox::Drop::beforeAnswer});
  }

 private:
  void TestBody() override {}

  const std::string url_ = givenEndpointBlocking("ads.example");
};

// dnsdist with rules that answer everything; it has no server behind it.
class DnsdistHarness final : public DohEndpointHarness {
 public:
  DnsdistHarness() : port_(std::to_string(sandbox::test::freePort())) {
    const auto certificates = sandbox::certificatesIn(directory_.path());
    EXPECT_TRUE(certificates);
    caFile_ = certificates->authority.string();
    std::ofstream(settings()) << "setSecurityPollSuffix('')\n"
                              << "setLocal('127.0.0.1:" << sandbox::test::freePort() << "')\n"
                              << "addDOHLocal('127.0.0.1:" << port_ << "', '"
                              << certificates->certificate.string() << "', '" << certificates->key.string()
                              << "', '/dns-query')\n"
                              << "addAction('ads.example', RCodeAction(DNSRCode.NXDOMAIN))\n"
                              << "addAction(QTypeRule(DNSQType.A), SpoofAction({'192.0.2.7'}, {ttl=60}))\n"
                              << "addAction(AllRule(), RCodeAction(DNSRCode.NOERROR))\n";
    start();
  }
  std::string url() override { return "https://localhost:" + port_ + "/dns-query"; }
  std::string caFile() override { return caFile_; }
  void breakConnections() override {
    program_->end(SIGKILL);
    start();
  }

 private:
  std::string settings() const { return (directory_.path() / "dnsdist.conf").string(); }
  // Its sockets are bound when it prints the line about its warranty.
  void start() {
    program_.emplace(
        std::vector<std::string>{"dnsdist", "--supervised", "--disable-syslog", "-C", settings()});
    const auto said = program_->readUntil("ABSOLUTELY NO WARRANTY");
    EXPECT_THAT(said, testing::HasSubstr("ABSOLUTELY NO WARRANTY"));
  }

  const TemporaryDirectory directory_;
  const std::string port_;
  std::string caFile_;
  std::optional<sandbox::test::RunningProgram> program_;
};

INSTANTIATE_TEST_SUITE_P(StandIn, DohEndpointContract,
                         testing::Values(factory<DohEndpointHarness, StandInHarness>("StandIn")));
INSTANTIATE_TEST_SUITE_P(Dnsdist, DohEndpointContract,
                         testing::Values(factory<DohEndpointHarness, DnsdistHarness>("Dnsdist")));

}  // namespace
}  // namespace quillmar::tunnel
