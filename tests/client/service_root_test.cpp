#include <array>
#include <string>
#include <string_view>
#include <utility>

#include "client/deployments.h"
#include "tests/client/client_test.h"

namespace quillmar {
namespace {

class ServiceRootTest : public ClientTest {
 protected:
  void storeRegion(std::string_view region) { settings.set(NetworkService::regionKey, std::string(region)); }
  void storeRoot(std::string_view root) { settings.set(NetworkService::apiURLKey, std::string(root)); }
};

TEST_F(ServiceRootTest, there_is_none_without_a_region) {
  removeRoot();
  EXPECT_EQ(service->baseURL(), std::nullopt);
}

TEST_F(ServiceRootTest, there_is_none_for_an_unknown_region) {
  for (const std::string_view region : {"", "Australia", "australia ", "nz", "europe"}) {
    storeRegion(region);
    EXPECT_EQ(service->baseURL(), std::nullopt) << region;
  }
}

TEST_F(ServiceRootTest, there_is_none_for_a_region_that_is_not_text) {
  settings.set(NetworkService::regionKey, true);
  EXPECT_EQ(service->baseURL(), std::nullopt);
}

TEST_F(ServiceRootTest, each_region_has_its_deployment) {
  const auto roots = std::to_array<std::pair<std::string_view, std::string_view>>({
      {"australia", "https://au.example/api/v1"},
      {"newzealand", "https://nz.example/api/v1"},
      {"singapore", "https://sg.example/api/v1"},
  });
  for (const auto& [region, root] : roots) {
    storeRegion(region);
    EXPECT_EQ(service->baseURL(), root);
  }
}

TEST_F(ServiceRootTest, a_stored_root_takes_precedence_over_the_region) {
  storeRoot("https://own.example");
  for (const std::string_view region : {"australia", "singapore", "nowhere"}) {
    storeRegion(region);
    EXPECT_EQ(service->baseURL(), "https://own.example/api/v1");
  }
  removeRoot();
  EXPECT_EQ(service->baseURL(), "https://own.example/api/v1");
}

TEST_F(ServiceRootTest, an_empty_stored_root_is_a_stored_root) {
  storeRoot("");
  EXPECT_EQ(service->baseURL(), "/api/v1");
}

TEST_F(ServiceRootTest, a_stored_root_that_is_not_text_is_ignored) {
  settings.set(NetworkService::apiURLKey, true);
  EXPECT_EQ(service->baseURL(), "https://au.example/api/v1");
}

TEST_F(ServiceRootTest, it_is_read_anew_each_time) {
  storeRoot("https://one.example");
  EXPECT_EQ(service->baseURL(), "https://one.example/api/v1");
  storeRoot("https://two.example");
  EXPECT_EQ(service->baseURL(), "https://two.example/api/v1");
  settings.remove(NetworkService::apiURLKey);
  EXPECT_EQ(service->baseURL(), "https://au.example/api/v1");
}

TEST_F(ServiceRootTest, reading_it_writes_nothing_and_logs_nothing) {
  const int writes = settings.writes();
  EXPECT_NE(service->baseURL(), std::nullopt);
  EXPECT_EQ(settings.writes(), writes);
  EXPECT_THAT(printed(), testing::IsEmpty());
}

TEST_F(ServiceRootTest, the_default_for_enrollment_is_australia_whatever_is_stored) {
  storeRegion("singapore");
  storeRoot("https://own.example");
  EXPECT_EQ(service->defaultEnrollmentURL(), "https://au.example/api/v1");
}

TEST(Deployments, one_root_can_serve_all_regions) {
  const Deployments deployments = Deployments::all("https://one.example");
  for (const std::string_view region : {"australia", "newzealand", "singapore"}) {
    EXPECT_EQ(deployments.root(region), "https://one.example");
  }
  EXPECT_EQ(deployments.root("elsewhere"), std::nullopt);
}

TEST(Deployments, a_build_has_three_roots_of_its_own) {
  const Deployments deployments = Deployments::builtIn();
  EXPECT_TRUE(deployments.australia.starts_with("https://"));
  EXPECT_TRUE(deployments.newzealand.starts_with("https://"));
  EXPECT_TRUE(deployments.singapore.starts_with("https://"));
  EXPECT_NE(deployments.australia, deployments.newzealand);
  EXPECT_NE(deployments.newzealand, deployments.singapore);
}

TEST(NetworkService, the_keys_of_the_root_are_fixed) {
  EXPECT_EQ(NetworkService::regionKey, "com.quillmar.region");
  EXPECT_EQ(NetworkService::apiURLKey, "com.quillmar.apiBaseURL");
}

}  // namespace
}  // namespace quillmar
