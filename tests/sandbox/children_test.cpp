#include "tests/sandbox/support/household.h"

namespace quillmar::sandbox::test {
namespace {

using namespace std::chrono_literals;

class ChildrenTest : public ServiceTest {
 protected:
  ChildrenTest() : ann_{givenAccount("ann@example.com")} {}

  Json childrenOf(const std::string& token) { return given("GET", "/children", token).at("children"); }
  Reply changing(const std::string& id, const Json& changes) {
    return ask("PUT", "/children/" + id, ann_, changes.dump());
  }

  std::string ann_;
};

TEST_F(ChildrenTest, a_new_child_has_a_policy_that_blocks_nothing_and_no_devices) {
  const auto child = given("POST", "/children", ann_, {{"name", "Mia"}});
  EXPECT_EQ(child.at("photo_url"), nullptr);
  EXPECT_EQ(child.at("birth_year"), nullptr);
  EXPECT_EQ(child.at("is_active"), true);
  EXPECT_EQ(child.at("created_at"), "2026-10-08T22:31:00.250Z");
  EXPECT_EQ(child.at("devices"), Json::array());
  EXPECT_EQ(child.at("policy").at("is_blocked"), false);
  EXPECT_EQ(child.at("policy").at("block_mode"), "blacklist");
  EXPECT_EQ(child.at("policy").at("child_id"), child.at("id"));
  EXPECT_EQ(child.at("policy").at("family_id"), child.at("family_id"));
}

TEST_F(ChildrenTest, children_come_in_the_order_of_display) {
  const auto first = givenChild(ann_, "First");
  givenChild(ann_, "Second");
  EXPECT_EQ(childrenOf(ann_)[1].at("display_order"), 1);
  EXPECT_EQ(changing(first, {{"display_order", 7}}).status, 200);
  EXPECT_EQ(childrenOf(ann_)[0].at("name"), "Second");
  EXPECT_EQ(childrenOf(ann_)[1].at("name"), "First");
}

TEST_F(ChildrenTest, an_update_changes_only_what_it_names) {
  const auto before =
      given("POST", "/children", ann_, {{"name", "Mia"}, {"birth_year", 2013}, {"photo_url", "p"}});
  advance(1h);
  auto expected = before;
  expected["name"] = "Mia Rose";
  expected["updated_at"] = "2026-10-08T23:31:00.250Z";
  expected.erase("devices");
  expected.erase("policy");
  EXPECT_EQ(changing(before.at("id"), {{"name", "Mia Rose"}}).json(), expected);
  EXPECT_EQ(changing(before.at("id"), {{"name", nullptr}}).json(), expected) << "null counts as absent";
}

TEST_F(ChildrenTest, invalid_values_of_a_child_are_refused) {
  const auto child = givenChild(ann_);
  for (const Json& changes :
       std::vector<Json>{Json{{"name", ""}}, Json{{"name", "\t "}}, Json{{"birth_year", 1899}},
                         Json{{"birth_year", 2027}}, Json{{"birth_year", -5}}}) {
    EXPECT_EQ(changing(child, changes).status, 422) << changes;
  }
  EXPECT_EQ(changing(child, {{"birth_year", 2013.5}}).status, 400);
  EXPECT_EQ(ask("PUT", "/children/" + child, ann_, R"({"birth_year":9223372036854775808})").status, 400);
  EXPECT_EQ(changing(child, {{"birth_year", 1900}}).status, 200);
  EXPECT_EQ(changing(child, {{"birth_year", 2026}}).status, 200);
  EXPECT_EQ(childrenOf(ann_)[0].at("name"), "Mia");
}

TEST_F(ChildrenTest, names_are_stored_unchanged) {
  const std::string name = "Zoë 👨‍👩‍👧 \"O'Neil\" \\ \u0001";
  EXPECT_EQ(given("POST", "/children", ann_, {{"name", name}}).at("name"), name);
  EXPECT_EQ(childrenOf(ann_)[0].at("name"), name);
}

TEST_F(ChildrenTest, a_deleted_childs_devices_are_unlinked) {
  const auto child = givenChild(ann_);
  const auto device = givenDevice(ann_, child);
  EXPECT_EQ(childrenOf(ann_)[0].at("devices")[0].at("id"), device);
  EXPECT_EQ(ask("DELETE", "/children/" + child, ann_).status, 204);
  const auto left = given("GET", "/children", ann_);
  EXPECT_EQ(left.at("children"), Json::array());
  EXPECT_EQ(left.at("unassigned_devices")[0].at("id"), device);
  EXPECT_EQ(left.at("unassigned_devices")[0].at("child_id"), nullptr);
  EXPECT_EQ(ask("DELETE", "/children/" + child, ann_).status, 404);
}

TEST_F(ChildrenTest, a_device_moves_between_children_by_being_unlinked_first) {
  const auto mia = givenChild(ann_, "Mia");
  const auto leo = givenChild(ann_, "Leo");
  const auto device = givenDevice(ann_, mia);
  const auto link = [&](const std::string& child) {
    return ask("POST", "/children/" + child + "/devices", ann_, Json{{"device_id", device}}.dump()).status;
  };
  EXPECT_EQ(link(mia), 204) << "it is linked so already";
  EXPECT_EQ(link(leo), 409);
  EXPECT_EQ(ask("DELETE", "/children/" + leo + "/devices/" + device, ann_).status, 404);
  EXPECT_EQ(ask("DELETE", "/children/" + mia + "/devices/" + device, ann_).status, 204);
  EXPECT_EQ(link(leo), 204);
  EXPECT_EQ(childrenOf(ann_)[0].at("devices"), Json::array());
  EXPECT_EQ(childrenOf(ann_)[1].at("devices")[0].at("child_id"), leo);
}

TEST_F(ChildrenTest, another_familys_device_cannot_be_linked) {
  const auto olga = givenAccount("olga@example.com");
  const auto device = givenDevice(olga);
  const auto child = givenChild(ann_);
  EXPECT_EQ(ask("POST", "/children/" + child + "/devices", ann_, Json{{"device_id", device}}.dump()).status,
            404);
  EXPECT_EQ(given("GET", "/children", olga).at("unassigned_devices")[0].at("child_id"), nullptr);
}

}  // namespace
}  // namespace quillmar::sandbox::test
