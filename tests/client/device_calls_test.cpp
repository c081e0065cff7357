#include "client/device_calls.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "tests/client/console_answers.h"

namespace quillmar {
namespace {

using namespace std::chrono_literals;
using Ids = std::vector<std::string>;
using Logs = std::vector<DNSLog>;

class DeviceCallsTest : public ClientTest {
 protected:
  std::string sentUrl(std::size_t index = 0) const { return http.requests().at(index).url; }
};

TEST_F(DeviceCallsTest, a_domain_is_percent_encoded_in_the_path) {
  service->send(calls::removeBlockedDomain, {"d1", "a b.example"}, outcome<void>().completion());
  service->send(calls::removeAllowedDomain, {"d1", "bü%?#/x:@"}, outcome<void>().completion());
  EXPECT_EQ(sentUrl(0), "https://au.example/api/v1/devices/d1/policy/block/a%20b.example");
  EXPECT_EQ(sentUrl(1), "https://au.example/api/v1/devices/d1/policy/allow/b%C3%BC%25%3F%23/x:@");
}

TEST_F(DeviceCallsTest, an_id_is_not_encoded_in_the_path) {
  service->send(calls::deleteDevice, {"d/%41"}, outcome<void>().completion());
  EXPECT_EQ(sentUrl(), "https://au.example/api/v1/devices/d/%41");
  auto ended = outcome<void>();
  service->send(calls::deleteDevice, {"d 1"}, ended.completion());
  EXPECT_EQ(ended.error(), NetworkError::invalidResponse());
  EXPECT_THAT(http.requests(), SizeIs(1));
}

TEST_F(DeviceCallsTest, an_update_sends_only_the_fields_that_are_set) {
  service->send(calls::updateDevice, {"d1"}, {.friendlyName = {}, .deviceName = "Tablet"},
                outcome<Device>().completion());
  service->send(calls::updateDevice, {"d1"}, {}, outcome<Device>().completion());
  ASSERT_THAT(http.requests(), SizeIs(2));
  EXPECT_EQ(http.requests()[0].body, R"({"device_name":"Tablet"})");
  EXPECT_EQ(http.requests()[1].body, "{}");
}

TEST_F(DeviceCallsTest, a_domain_in_a_body_is_sent_unchanged) {
  service->send(calls::addBlockedDomain, {"d1"}, {" X.Example"}, outcome<void>().completion());
  EXPECT_EQ(http.requests().at(0).body, R"({"domain":" X.Example"})");
}

TEST_F(DeviceCallsTest, logs_keep_the_order_of_the_answer) {
  const Logs logs{logEntry(2, "2016-10-08T01:00:00Z"), logEntry(1, "2016-10-08T02:00:00Z")};
  http.answer("GET", "/devices/d1/logs?limit=50&offset=100", 200, logsBody(logs));
  auto ended = outcome<DNSLogsResponse>();
  service->send(calls::getDeviceLogs, {"d1", 50, 100}, ended.completion());
  settle();
  EXPECT_EQ(ended.value().logs, logs);
  EXPECT_FALSE(ended.onMainThread());
}

// Logs of several devices.

class RecentDeviceLogsTest : public ClientTest {
 protected:
  Outcome<Logs> fetch(const Ids& devices, Duration since, std::size_t limit) {
    auto ended = outcome<Logs>();
    service->getRecentDeviceLogs(devices, since, limit, ended.completion());
    return ended;
  }
  Outcome<Logs> fetched(const Ids& devices) {
    auto ended = fetch(devices, 60s, 100);
    settle();
    EXPECT_EQ(ended.calls(), 1);
    EXPECT_TRUE(ended.onMainThread());
    return ended;
  }
  void answer(const std::string& device, const Logs& logs) {
    http.answer("GET", "/devices/" + device + "/logs", 200, logsBody(logs));
  }
  void fail(const std::string& device, int status) {
    http.answer("GET", "/devices/" + device + "/logs", status);
  }
  std::vector<std::string> sentUrls() const {
    std::vector<std::string> urls;
    for (const auto& request : http.requests()) {
      urls.push_back(request.url);
    }
    return urls;
  }
  static std::vector<std::int64_t> ids(const Logs& logs) {
    std::vector<std::int64_t> all;
    for (const auto& entry : logs) {
      all.push_back(entry.id);
    }
    return all;
  }
};

TEST_F(RecentDeviceLogsTest, without_devices_it_completes_at_once_and_sends_nothing) {
  removeRoot();
  const auto ended = fetch({}, 60s, 100);
  EXPECT_THAT(ended.value(), IsEmpty());
  EXPECT_TRUE(ended.onMainThread());
  settle();
  EXPECT_EQ(ended.calls(), 1);
  EXPECT_THAT(http.requests(), IsEmpty());
  EXPECT_THAT(printed(), IsEmpty());
}

TEST_F(RecentDeviceLogsTest, without_devices_it_completes_on_the_callers_thread) {
  auto ended = outcome<Logs>();
  platform.dispatch.global(QualityOfService::background).async([&] {
    service->getRecentDeviceLogs({}, 60s, 100, ended.completion());
    EXPECT_EQ(ended.calls(), 1);
  });
  settle();
  EXPECT_FALSE(ended.onMainThread());
}

TEST_F(RecentDeviceLogsTest, devices_are_asked_in_order_and_concurrently) {
  const auto ended = fetch({"d2", "d1", "d3"}, 300s, 100);
  EXPECT_THAT(sentUrls(),
              ElementsAre("https://au.example/api/v1/devices/d2/logs?limit=33&since=2016-10-08T22:26:00Z",
                          "https://au.example/api/v1/devices/d1/logs?limit=33&since=2016-10-08T22:26:00Z",
                          "https://au.example/api/v1/devices/d3/logs?limit=33&since=2016-10-08T22:26:00Z"));
  EXPECT_TRUE(ended.isPending());
}

TEST_F(RecentDeviceLogsTest, the_requests_of_all_devices_leave_together) {
  fetched({"d1", "d2", "d3"});
  EXPECT_THAT(http.batches(), ElementsAre(3));
}

TEST_F(RecentDeviceLogsTest, fractions_of_a_second_are_cut_off) {
  platform.dispatch.advance(999ms);
  fetch({"d1"}, 86400s, 20);
  EXPECT_THAT(sentUrls(),
              ElementsAre("https://au.example/api/v1/devices/d1/logs?limit=20&since=2016-10-07T22:31:00Z"));
}

TEST_F(RecentDeviceLogsTest, with_more_devices_than_entries_each_is_asked_for_none) {
  fetch(Ids(21, "d1"), 60s, 20);
  ASSERT_THAT(http.requests(), SizeIs(21));
  for (const auto& url : sentUrls()) {
    EXPECT_NE(url.find("?limit=0&"), std::string::npos) << url;
  }
}

TEST_F(RecentDeviceLogsTest, the_newest_entries_of_all_devices_come_first) {
  answer("d1", {logEntry(1, "2016-10-08T22:30:30Z"), logEntry(2, "2016-10-08T22:30:10Z")});
  answer("d2", {logEntry(3, "2016-10-08T22:30:40Z"), logEntry(4, "2016-10-08T22:30:20Z")});
  EXPECT_THAT(ids(fetched({"d1", "d2"}).value()), ElementsAre(3, 1, 4, 2));
}

TEST_F(RecentDeviceLogsTest, three_devices_with_a_full_share_give_99_entries) {
  const Logs share(33, logEntry(1, "2016-10-08T22:30:30Z"));
  answer("d1", share);
  answer("d2", share);
  answer("d3", share);
  EXPECT_THAT(fetched({"d1", "d2", "d3"}).value(), SizeIs(99));
}

TEST_F(RecentDeviceLogsTest, entries_beyond_the_limit_are_cut) {
  Logs many;
  for (int second = 0; second < 60; ++second) {
    const auto digits = std::to_string(second + 100).substr(1);
    many.push_back(logEntry(second, "2016-10-08T22:30:" + digits + "Z"));
  }
  answer("d1", many);
  answer("d2", many);
  const auto newest = fetched({"d1", "d2"}).value();
  ASSERT_THAT(newest, SizeIs(100));
  EXPECT_EQ(newest.front().id, 59);
  EXPECT_EQ(newest.back().id, 10);
}

TEST_F(RecentDeviceLogsTest, it_completes_after_the_last_device) {
  http.hold();
  answer("d1", {logEntry(1, "t")});
  answer("d2", {logEntry(2, "t")});
  const auto ended = fetch({"d1", "d2"}, 60s, 100);
  settle();
  http.release(1);
  settle();
  EXPECT_TRUE(ended.isPending());
  http.release(0);
  settle();
  EXPECT_THAT(ended.value(), SizeIs(2));
  EXPECT_EQ(ended.calls(), 1);
}

TEST_F(RecentDeviceLogsTest, entries_of_one_second_are_in_the_order_of_asking_not_of_answering) {
  http.hold();
  answer("d1", {logEntry(1, "t"), logEntry(2, "t")});
  answer("d2", {logEntry(3, "t")});
  const auto ended = fetch({"d2", "d1"}, 60s, 100);
  settle();
  http.release(1);
  settle();
  http.release(0);
  settle();
  EXPECT_THAT(ids(ended.value()), ElementsAre(3, 1, 2));
}

TEST_F(RecentDeviceLogsTest, a_failure_is_ignored_if_another_device_has_entries) {
  fail("d1", 500);
  answer("d2", {logEntry(2, "t")});
  EXPECT_THAT(ids(fetched({"d1", "d2"}).value()), ElementsAre(2));
}

TEST_F(RecentDeviceLogsTest, a_failure_beside_empty_lists_is_returned) {
  answer("d1", {});
  fail("d2", 403);
  answer("d3", {});
  EXPECT_EQ(fetched({"d1", "d2", "d3"}).error(), NetworkError::forbidden());
}

TEST_F(RecentDeviceLogsTest, of_two_failures_the_earlier_is_returned) {
  http.hold();
  fail("d1", 403);
  fail("d2", 404);
  const auto ended = fetch({"d1", "d2"}, 60s, 100);
  settle();
  http.release(1);
  http.release(0);
  settle();
  EXPECT_EQ(ended.error(), NetworkError::notFound());
}

TEST_F(RecentDeviceLogsTest, an_answer_that_does_not_decode_is_as_early_as_it_arrived) {
  http.hold();
  fail("d1", 403);
  http.answer("GET", "/devices/d2/logs", 200, "{}");
  const auto ended = fetch({"d1", "d2"}, 60s, 100);
  settle();
  http.release(1);
  http.release(0);
  settle();
  ASSERT_TRUE(ended.failed());
  EXPECT_NE(ended.error().as<CodingError>(), nullptr);
}

TEST_F(RecentDeviceLogsTest, empty_lists_are_a_success) {
  answer("d1", {});
  answer("d2", {});
  EXPECT_THAT(fetched({"d1", "d2"}).value(), IsEmpty());
}

TEST_F(RecentDeviceLogsTest, an_id_that_is_invalid_in_a_url_fails_only_its_device) {
  answer("d2", {logEntry(2, "t")});
  EXPECT_THAT(ids(fetched({"d 1", "d2"}).value()), ElementsAre(2));
  EXPECT_THAT(http.requests(), SizeIs(1));
  EXPECT_EQ(fetched({"d 1"}).error(), NetworkError::invalidResponse());
}

TEST_F(RecentDeviceLogsTest, a_missing_root_fails_every_device_and_completes_on_the_main_queue) {
  removeRoot();
  EXPECT_EQ(fetched({"d1", "d2"}).error(), NetworkError::noRegionConfigured());
  EXPECT_THAT(http.requests(), IsEmpty());
}

TEST_F(RecentDeviceLogsTest, an_invalid_entry_fails_its_device) {
  http.answer("GET", "/devices/d1/logs", 200, R"({"logs":[{"id":"1"}]})");
  EXPECT_TRUE(fetched({"d1"}).failed());
}

TEST_F(RecentDeviceLogsTest, devices_with_401_at_once_share_one_refresh) {
  http.answer("POST", "/auth/refresh", 200, authBody(newToken));
  for (const std::string device : {"d1", "d2"}) {
    fail(device, 401);
    answer(device, {logEntry(1, "t")});
  }
  EXPECT_THAT(fetched({"d1", "d2"}).value(), SizeIs(2));
  EXPECT_EQ(refreshes(), 1);
}

TEST_F(RecentDeviceLogsTest, two_concurrent_fetches_are_independent) {
  http.answerAlways("GET", "/devices/d1/logs", 200, logsBody({logEntry(1, "t")}));
  http.answerAlways("GET", "/devices/d2/logs", 200, logsBody({logEntry(2, "t")}));
  const auto one = fetch({"d1"}, 60s, 100);
  const auto other = fetch({"d2"}, 60s, 100);
  settle();
  EXPECT_THAT(ids(one.value()), ElementsAre(1));
  EXPECT_THAT(ids(other.value()), ElementsAre(2));
}

}  // namespace
}  // namespace quillmar
