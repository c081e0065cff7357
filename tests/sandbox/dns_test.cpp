#include "tests/sandbox/support/datagram_server.h"
#include "tests/sandbox/support/household.h"

namespace quillmar::sandbox::test {
namespace {

using namespace std::chrono_literals;

class DnsTest : public ServiceTest {
 protected:
  DnsTest() { setUp(); }

  void setUp() {
    ann_ = givenAccount("ann@example.com");
    child_ = givenChild(ann_);
    device_ = givenDevice(ann_, child_);
    const std::string endpoint =
        given("GET", "/children/" + child_, ann_).at("devices")[0].at("doh_endpoint");
    path_ = endpoint.substr(endpoint.find("/dns-query"));
  }

  // The output of kdig, which verifies certificate and host name.
  std::string dig(const std::string& name, const std::string& type = "A", const std::string& mode = "https") {
    const auto result =
        runCommand({"kdig", "@127.0.0.1", "-p", std::to_string(service().tlsPort()), "+" + mode + "=" + path_,
                    mode == "https" ? "+nohttps-get" : "+https-get", "+tls-ca=" + service().caFile().string(),
                    "+tls-hostname=localhost", "+retry=0", name, type});
    EXPECT_EQ(result.status, 0) << result.output << result.errors;
    return result.output;
  }
  bool resolves(const std::string& name) {
    const auto output = dig(name);
    EXPECT_NE(output.find("status: NOERROR") == std::string::npos,
              output.find("status: NXDOMAIN") == std::string::npos)
        << output;
    return output.find("status: NOERROR") != std::string::npos;
  }

  void block(const std::string& owner, const std::string& domain) { put(owner, "block", domain); }
  void allow(const std::string& owner, const std::string& domain) { put(owner, "allow", domain); }
  void put(const std::string& owner, const std::string& list, const std::string& domain) {
    service().ask("POST", "/api/v1" + owner + "/policy/" + list, Json{{"domain", domain}}.dump(), ann_);
  }
  void blockTheInternet(bool blocked) {
    given("PUT", "/children/" + child_ + "/policy", ann_,
          {{"is_blocked", blocked}, {"block_mode", "whitelist"}});
  }
  std::string child() const { return "/children/" + child_; }
  std::string device() const { return "/devices/" + device_; }
  Json logs(const std::string& query = "") {
    return given("GET", device() + "/logs" + query, ann_).at("logs");
  }

  std::string ann_;
  std::string child_;
  std::string device_;
  std::string path_;
};

TEST_F(DnsTest, an_allowed_name_has_an_address_for_documentation) {
  EXPECT_THAT(dig("www.site.example"),
              testing::ContainsRegex("www\\.site\\.example\\.[[:space:]]+60[[:space:]]+IN[[:space:]]+A"
                                     "[[:space:]]+(192\\.0\\.2|198\\.51\\.100|203\\.0\\.113)\\."));
  EXPECT_THAT(dig("www.site.example", "AAAA"), testing::ContainsRegex("AAAA[[:space:]]+2001:db8::"));
}

TEST_F(DnsTest, a_name_has_the_same_address_every_time_and_in_any_case) {
  const auto address = [&](const std::string& name) {
    const auto output = dig(name);
    const auto at = output.find("\tA\t", output.find(";; ANSWER"));
    return output.substr(at, output.find('\n', at) - at);
  };
  EXPECT_EQ(address("www.site.example"), address("WWW.Site.EXAMPLE"));
  EXPECT_NE(address("www.site.example"), address("www.another.example"));
}

TEST_F(DnsTest, a_type_without_addresses_has_no_records_and_no_error) {
  const auto output = dig("www.site.example", "TXT");
  EXPECT_THAT(output, testing::HasSubstr("status: NOERROR"));
  EXPECT_THAT(output, testing::HasSubstr("ANSWER: 0"));
}

TEST_F(DnsTest, a_query_may_come_by_get) {
  EXPECT_THAT(dig("www.site.example", "A", "https-get"), testing::HasSubstr("HTTP/2-GET"));
  EXPECT_THAT(dig("www.site.example", "A", "https"), testing::HasSubstr("HTTP/2-POST"));
  EXPECT_EQ(logs().size(), 2U);
}

TEST_F(DnsTest, a_blocked_site_and_its_sub_domains_do_not_exist) {
  block(child(), "ads.example");
  EXPECT_FALSE(resolves("ads.example"));
  EXPECT_FALSE(resolves("a.b.Ads.Example"));
  EXPECT_TRUE(resolves("bads.example"));
  EXPECT_TRUE(resolves("ads.example.org"));
}

TEST_F(DnsTest, an_allowed_part_of_a_blocked_site_resolves) {
  block(child(), "video.example");
  allow(child(), "lessons.video.example");
  EXPECT_TRUE(resolves("www.lessons.video.example"));
  EXPECT_FALSE(resolves("video.example"));
}

TEST_F(DnsTest, a_site_in_both_lists_is_blocked) {
  block(child(), "both.example");
  allow(child(), "both.example");
  EXPECT_FALSE(resolves("www.both.example"));
}

TEST_F(DnsTest, with_the_internet_blocked_only_allowed_and_default_sites_resolve) {
  allow(child(), "school.example");
  blockTheInternet(true);
  EXPECT_FALSE(resolves("www.site.example"));
  EXPECT_TRUE(resolves("school.example"));
  EXPECT_TRUE(resolves("www.school.example"));
  for (const std::string name :
       {"www.apple.com", "www.google.com", "login.microsoftonline.com", "api.quillmar.live"}) {
    EXPECT_TRUE(resolves(name)) << name;
  }
  EXPECT_FALSE(resolves("notapple.com"));
  blockTheInternet(false);
  EXPECT_TRUE(resolves("www.site.example")) << "the mode alone blocks nothing";
}

TEST_F(DnsTest, a_default_site_can_be_blocked) {
  block(child(), "google.com");
  blockTheInternet(true);
  EXPECT_FALSE(resolves("www.google.com"));
}

TEST_F(DnsTest, a_device_obeys_its_own_policy_besides_that_of_its_child) {
  block(device(), "games.example");
  block(child(), "ads.example");
  EXPECT_FALSE(resolves("games.example"));
  EXPECT_FALSE(resolves("ads.example"));
  given("DELETE", child() + "/devices/" + device_, ann_);
  EXPECT_FALSE(resolves("games.example"));
  EXPECT_TRUE(resolves("ads.example")) << "no child, no child's policy";
}

TEST_F(DnsTest, another_childs_policy_has_no_effect) {
  block("/children/" + givenChild(ann_, "Leo"), "ads.example");
  EXPECT_TRUE(resolves("ads.example"));
}

TEST_F(DnsTest, each_query_is_in_the_log_newest_first) {
  block(child(), "ads.example");
  dig("www.site.example");
  advance(1s);
  dig("Pixel.ADS.example", "AAAA");
  const auto written = logs();
  ASSERT_EQ(written.size(), 2U);
  EXPECT_EQ(written[0].at("domain"), "pixel.ads.example");
  EXPECT_EQ(written[0].at("query_type"), "AAAA");
  EXPECT_EQ(written[0].at("was_blocked"), true);
  EXPECT_EQ(written[0].at("timestamp"), "2026-10-08T22:31:01.250Z");
  EXPECT_EQ(written[0].at("device_id"), device_);
  EXPECT_TRUE(written[0].at("id").is_number_integer());
  EXPECT_EQ(written[1].at("domain"), "www.site.example");
  EXPECT_EQ(written[1].at("was_blocked"), false);
}

TEST_F(DnsTest, logs_are_limited_by_limit_offset_and_time) {
  for (const std::string name : {"a.example", "b.example", "c.example"}) {
    dig(name);
    advance(1s);
  }
  const auto names = [&](const std::string& query) {
    std::string text;
    for (const auto& log : logs(query)) text += log.at("domain").get<std::string>().substr(0, 1);
    return text;
  };
  EXPECT_EQ(names(""), "cba");
  EXPECT_EQ(names("?limit=2"), "cb");
  EXPECT_EQ(names("?limit=2&offset=1"), "ba");
  EXPECT_EQ(names("?limit=0"), "");
  EXPECT_EQ(names("?offset=3"), "");
  EXPECT_EQ(names("?limit=33&since=2026-10-08T22:31:01Z"), "cb");
  EXPECT_EQ(names("?since=2026-10-08T22%3A31%3A02.250Z"), "c") << "the moment itself belongs to it";
  EXPECT_EQ(names("?since=2026-10-09T08:31:02+10:00"), "c");
  for (const std::string bad :
       {"?limit=x", "?limit=-1", "?limit=", "?limit=1.5", "?offset=99999999999999999999", "?since=yesterday",
        "?since=2026-13-01T00:00:00Z", "?since=%zz"}) {
    EXPECT_EQ(ask("GET", device() + "/logs" + bad, ann_).status, 400) << bad;
  }
}

TEST_F(DnsTest, a_query_shows_that_the_device_is_online) {
  dig("www.site.example");
  EXPECT_EQ(given("GET", child(), ann_).at("devices")[0].at("is_online"), true);
}

TEST_F(DnsTest, an_unknown_endpoint_is_not_answered) {
  path_ = "/dns-query/0123456789abcdef";
  EXPECT_EQ(ask("GET", path_ + "?dns=AAABAAABAAAAAAAAAWEHZXhhbXBsZQAAAQAB").status, 404);
  EXPECT_EQ(ask("GET", "/dns-query?dns=AAABAAABAAAAAAAAAWEHZXhhbXBsZQAAAQAB").status, 404);
}

TEST_F(DnsTest, a_moved_device_is_answered_at_its_new_endpoint_only) {
  ASSERT_TRUE(service().moveEndpoint(device_));
  EXPECT_EQ(ask("GET", path_ + "?dns=AAABAAABAAAAAAAAAWEHZXhhbXBsZQAAAQAB").status, 404);
  const auto checkin = given("POST", "/device/checkin", {}, {{"device_id", device_}, {"device_type", "ios"}});
  path_ = checkin.at("doh_endpoint").get<std::string>().substr(service().secureUrl().size());
  EXPECT_TRUE(resolves("www.site.example"));
}

TEST_F(DnsTest, an_invalid_query_is_refused_and_not_logged) {
  const std::string question = "AAABAAABAAAAAAAAAWEHZXhhbXBsZQAAAQAB";
  EXPECT_EQ(ask("GET", path_ + "?dns=" + question).status, 200);
  ASSERT_EQ(logs().size(), 1U);
  for (const std::string& bad :
       {std::string{""}, std::string{"?dns="}, std::string{"?dns=AAAB"}, "?dns=" + question + "=",
        "?dns=!" + question, std::string{"?dns=AACBgAABAAAAAAAAAWEHZXhhbXBsZQAAAQAB"},
        "?dns=" + question.substr(0, 30), std::string{"?dns=AAABAAAAAAAAAAAA"}, "?other=" + question}) {
    EXPECT_EQ(ask("GET", path_ + bad).status, 400) << bad;
  }
  const std::vector<std::string> dnsType{"--header", "Content-Type: application/dns-message"};
  EXPECT_EQ(curl({"--request", "POST", "--data-binary", "@-", dnsType[0], dnsType[1],
                  service().secureUrl() + path_},
                 "not DNS")
                .status,
            400);
  EXPECT_EQ(ask("POST", path_, {}, "{}").status, 415);
  EXPECT_EQ(ask("PUT", path_, {}, "{}").status, 405);
  EXPECT_EQ(logs().size(), 1U);
}

TEST_F(DnsTest, there_is_no_dns_without_tls) {
  const auto reply = curl({service().url() + path_ + "?dns=AAABAAABAAAAAAAAAWEHZXhhbXBsZQAAAQAB"});
  EXPECT_EQ(reply.status, 404);
  EXPECT_EQ(logs(), Json::array());
}

TEST_F(DnsTest, an_answer_may_be_cached_for_the_ttl_of_its_records) {
  const auto reply = ask("GET", path_ + "?dns=AAABAAABAAAAAAAAAWEHZXhhbXBsZQAAAQAB", {}, {}, {"--include"});
  EXPECT_THAT(reply.body, testing::HasSubstr("cache-control: max-age=60"));
  EXPECT_EQ(reply.contentType, "application/dns-message");
}

// The question up to its class, turned into an answer with the address 192.0.2.99.
std::vector<std::string> anAddress(std::string_view received) {
  if (received.size() < 12) {
    return {};
  }
  const std::string question(received);
  const auto end = question.find('\0', 12) + 5;
  return {question.substr(0, 2) + std::string("\x81\x80\0\1\0\1\0\0\0\0", 10) +
          question.substr(12, end - 12) + std::string("\xc0\x0c\0\1\0\1\0\0\0\x1e\0\4\xc0\0\2\x63", 16)};
}

TEST_F(DnsTest, with_an_upstream_allowed_names_are_asked_there_and_blocked_ones_are_not) {
  const DatagramServer upstream(anAddress);
  restart({.upstream = "127.0.0.1:" + std::to_string(upstream.port())});
  setUp();
  block(child(), "ads.example");
  EXPECT_THAT(dig("www.site.example"), testing::HasSubstr("192.0.2.99"));
  EXPECT_FALSE(resolves("ads.example"));
  EXPECT_EQ(logs().size(), 2U);
}

TEST_F(DnsTest, an_invalid_upstream_address_is_a_failure_and_not_a_crash) {
  restart({.upstream = "not an address"});
  setUp();
  EXPECT_THAT(dig("www.site.example"), testing::HasSubstr("status: SERVFAIL"));
}

}  // namespace
}  // namespace quillmar::sandbox::test
