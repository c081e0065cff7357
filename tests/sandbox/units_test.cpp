#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>
#include <thread>

#include "sandbox/dns/rules.h"
#include "sandbox/http/certificates.h"
#include "sandbox/service.h"
#include "sandbox/time.h"
#include "tests/sandbox/support/household.h"

namespace quillmar::sandbox::test {
namespace {

TEST(Times, are_written_with_three_digits_of_a_second) {
  EXPECT_EQ(iso8601(timeOf(0)), "1970-01-01T00:00:00.000Z");
  EXPECT_EQ(iso8601(timeOf(1'791'498'660'007)), "2026-10-08T22:31:00.007Z");
  EXPECT_EQ(iso8601(timeOf(951'825'599'999)), "2000-02-29T11:59:59.999Z");
}

TEST(Times, are_written_in_the_http_form) {
  EXPECT_EQ(httpDate(timeOf(0)), "Thu, 01 Jan 1970 00:00:00 GMT");
  EXPECT_EQ(httpDate(timeOf(1'475'965'860'999)), "Sat, 08 Oct 2016 22:31:00 GMT");
}

TEST(Times, are_read_in_every_form_of_the_standard_that_has_a_zone) {
  const auto expected = timeOf(1'791'498'660'000);
  for (const auto* text :
       {"2026-10-08T22:31:00Z", "2026-10-08T22:31:00.000Z", "2026-10-09T08:31:00+10:00",
        "2026-10-09T08:31:00+1000", "2026-10-08T14:31:00-08", "2026-10-08T22:31:00.0000004Z"}) {
    EXPECT_EQ(parseIso8601(text), expected) << text;
  }
  EXPECT_EQ(parseIso8601("2026-10-08T22:31:00.25Z"), expected + std::chrono::milliseconds{250});
}

TEST(Times, are_not_read_from_anything_else) {
  for (const auto* text :
       {"", "2026", "2026-10-08", "2026-10-08T22:31:00", "2026-10-08 22:31:00Z", "2026-10-08T22:31:00.Z",
        "2026-13-08T22:31:00Z", "2026-02-30T22:31:00Z", "2026-10-08T24:00:00Z", "2026-10-08T22:60:00Z",
        "2026-10-08T22:31:60Z", "2026-10-08T22:31:00Zx", "2026-10-08T22:31:00+", "2026-10-08T22:31:00+24:00",
        "-026-10-08T22:31:00Z", "2026-1-08T22:31:00Z", "2026-10-08T-1:31:00Z", "+2026-10-08T22:31:00Z"}) {
    EXPECT_EQ(parseIso8601(text), std::nullopt) << text;
  }
}

TEST(Rules, cover_a_name_and_its_sub_domains_but_no_name_that_only_ends_alike) {
  const Rules rules{.blocked = {"ads.example"}};
  EXPECT_TRUE(blocks(rules, "ads.example"));
  EXPECT_TRUE(blocks(rules, "x.ads.example"));
  EXPECT_FALSE(blocks(rules, "xads.example"));
  EXPECT_FALSE(blocks(rules, "example"));
  EXPECT_FALSE(blocks(rules, ""));
}

TEST(Rules, let_the_longer_entry_decide_and_block_on_a_tie) {
  const Rules rules{.blocked = {"example", "c.b.example", "draw.test"},
                    .allowed = {"b.example", "draw.test"}};
  EXPECT_TRUE(blocks(rules, "a.example"));
  EXPECT_FALSE(blocks(rules, "b.example"));
  EXPECT_FALSE(blocks(rules, "a.b.example"));
  EXPECT_TRUE(blocks(rules, "a.c.b.example"));
  EXPECT_TRUE(blocks(rules, "draw.test"));
}

TEST(Rules, allow_only_allowed_and_default_sites_while_the_internet_is_blocked) {
  const Rules rules{.isBlocked = true, .blocked = {"mail.google.com"}, .allowed = {"school.test"}};
  EXPECT_TRUE(blocks(rules, "site.test"));
  EXPECT_FALSE(blocks(rules, "www.school.test"));
  EXPECT_FALSE(blocks(rules, "www.google.com"));
  EXPECT_TRUE(blocks(rules, "mail.google.com"));
  EXPECT_TRUE(blocks(rules, "google.com.evil.test"));
}

TEST(Services, run_independently_in_one_process) {
  const auto first = Service::start({});
  const auto second = Service::start({});
  ASSERT_TRUE(first && second);
  EXPECT_NE((*first)->port(), (*second)->port());
  const std::string body =
      R"({"email":"ann@example.com","password":"secret","phone":"0412345678","name":"Ann"})";
  EXPECT_EQ((*first)->ask("POST", "/api/v1/auth/register", body).status, 201);
  EXPECT_EQ((*second)->ask("POST", "/api/v1/auth/register", body).status, 201);
}

TEST(Services, cannot_share_a_port) {
  const auto first = Service::start({});
  ASSERT_TRUE(first);
  const auto second = Service::start({.port = (*first)->port()});
  ASSERT_FALSE(second);
  EXPECT_EQ(second.failure().substr(0, 5), "Port ");
}

std::string contents(const std::filesystem::path& file) {
  std::ostringstream text;
  text << std::ifstream{file}.rdbuf();
  return text.str();
}

TEST(Certificates, are_reused_and_replaced_if_damaged_or_for_another_address) {
  const std::filesystem::path directory = testing::TempDir() + "quillmar-certificates";
  std::filesystem::create_directories(directory);
  const auto first = certificatesIn(directory);
  ASSERT_TRUE(first);
  const auto authority = contents(first->authority);
  ASSERT_TRUE(certificatesIn(directory));
  EXPECT_EQ(contents(first->authority), authority);
  for (const auto& damaged : {first->certificate, first->key, first->authority}) {
    std::filesystem::remove(damaged);
    ASSERT_TRUE(certificatesIn(directory));
    EXPECT_NE(contents(first->authority), authority);
    EXPECT_EQ(
        runCommand({"openssl", "verify", "-x509_strict", "-CAfile", first->authority, first->certificate})
            .status,
        0);
  }
  ASSERT_TRUE(certificatesIn(directory, "192.0.2.1"));
  EXPECT_EQ(runCommand({"openssl", "verify", "-x509_strict", "-verify_ip", "192.0.2.1", "-CAfile",
                        first->authority, first->certificate})
                .status,
            0);
  std::ofstream{first->certificate} << "no certificate";
  ASSERT_TRUE(certificatesIn(directory));
  EXPECT_EQ(runCommand({"openssl", "verify", "-x509_strict", "-CAfile", first->authority, first->certificate})
                .status,
            0);
  std::filesystem::remove_all(directory);
}

TEST(Certificates, cannot_be_created_without_a_directory) { EXPECT_FALSE(certificatesIn("/proc/nowhere")); }

class CrowdTest : public ServiceTest {};

TEST_F(CrowdTest, many_requests_at_once_each_get_their_own_answer) {
  static constexpr int crowd = 6;
  static constexpr int calls = 40;
  const auto token = givenAccount("ann@example.com");
  std::vector<std::thread> threads;
  for (int i = 0; i < crowd; ++i) {
    threads.emplace_back([&, i] {
      for (int j = 0; j < calls; ++j) {
        const auto name = std::to_string(i) + "-" + std::to_string(j);
        const auto made = given("POST", "/children", token, {{"name", name}});
        EXPECT_EQ(made.at("name"), name);
      }
    });
  }
  EXPECT_EQ(curl({"--parallel", "--parallel-max", "40", "--header", "Authorization: Bearer " + token,
                  "--output", "/dev/null", service().secureUrl() + "/api/v1/family?[1-200]"})
                .exitStatus,
            0);
  for (auto& thread : threads) thread.join();
  const auto children = given("GET", "/children", token).at("children");
  std::set<int> orders;
  for (const auto& child : children) orders.insert(child.at("display_order").get<int>());
  EXPECT_EQ(children.size(), std::size_t{crowd * calls});
  EXPECT_EQ(orders.size(), std::size_t{crowd * calls}) << "no two took the same place";
}

}  // namespace
}  // namespace quillmar::sandbox::test
