#include "tests/sandbox/contract.h"

#include <algorithm>
#include <iterator>
#include <set>

#include "sandbox/router.h"
#include "tests/sandbox/support/household.h"

namespace quillmar::sandbox::test {
namespace {

using Address = std::pair<std::string, std::string>;

// The path without query, with values replaced by one mark.
std::string shape(std::string path) {
  path = path.substr(0, path.find('?'));
  for (const std::string marked :
       {"{child}", "{device}", "{spare}", "{member}", "{code}", "listed.example"}) {
    for (auto at = path.find(marked); at != std::string::npos; at = path.find(marked))
      path.replace(at, marked.size(), "{}");
  }
  return path;
}

std::set<std::string> keysOf(const Json& object) {
  std::set<std::string> keys;
  for (const auto& [key, value] : object.items()) keys.insert(key);
  return keys;
}

// A family with one record of each kind, and a second family.
class ContractTest : public ServiceTest, public testing::WithParamInterface<ContractCall> {
 protected:
  ContractTest() {
    ann_ = givenAccount("ann@example.com");
    olga_ = givenAccount("olga@example.com", "Olga Other");
    const auto child = givenChild(ann_);
    const auto device = givenDevice(ann_, child);
    for (const std::string& owner : {"/devices/" + device, "/children/" + child}) {
      for (const std::string list : {"/policy/block", "/policy/allow"}) {
        service().ask("POST", "/api/v1" + owner + list, R"({"domain":"listed.example"})", ann_);
      }
    }
    givenMember(ann_, "ben@example.com");
    const auto pending = given("POST", "/enrollment/init", {},
                               {{"device_id", "own id"}, {"device_name", "Tablet"}, {"device_type", "ios"}});
    values_ = {{"{child}", child},
               {"{device}", device},
               {"{spare}", givenDevice(ann_)},
               {"{member}", memberId(ann_, "ben@example.com")},
               {"{code}", given("POST", "/family/invite", ann_, Json::object()).at("invite_code")},
               {"{pending}", pending.at("enrollment_code")}};
    if (GetParam().path == "/home-network/update-ip")
      given("POST", "/home-network", ann_, {{"confirm", true}});
  }

  std::string filledIn(std::string text) const {
    for (const auto& [mark, value] : values_) {
      for (auto at = text.find(mark); at != std::string::npos; at = text.find(mark))
        text.replace(at, mark.size(), value);
    }
    return text;
  }

  Reply askIt(const std::string& token, const std::string& body) {
    return ask(GetParam().method, filledIn(GetParam().path), token, filledIn(body));
  }
  std::string ownToken() const { return GetParam().needsToken ? ann_ : std::string{}; }

  std::string ann_;
  std::string olga_;
  std::map<std::string, std::string> values_;
};

class OwnedThingsTest : public ContractTest {};
class BodyTest : public ContractTest {};

TEST_P(ContractTest, a_good_request_is_answered_with_all_fields_of_the_record) {
  const auto reply = askIt(ownToken(), GetParam().body);
  EXPECT_EQ(reply.status, GetParam().status) << reply.body;
  if (GetParam().keys.empty()) {
    EXPECT_EQ(reply.body, "");
    return;
  }
  EXPECT_EQ(reply.contentType, "application/json");
  EXPECT_EQ(keysOf(reply.json()), std::set(GetParam().keys.begin(), GetParam().keys.end()));
}

TEST_P(ContractTest, without_a_good_token_only_open_calls_are_answered) {
  const auto without = askIt({}, GetParam().body);
  if (!GetParam().needsToken) {
    EXPECT_EQ(without.status, GetParam().status);
    return;
  }
  EXPECT_EQ(without.status, 401);
  EXPECT_NE(without.error(), "");
  EXPECT_EQ(askIt("made up", GetParam().body).status, 401);
  EXPECT_EQ(askIt(ann_, GetParam().body).status, GetParam().status) << "and they left everything as it was";
}

TEST_P(OwnedThingsTest, another_familys_parent_finds_nothing_and_changes_nothing) {
  const auto reply = askIt(olga_, GetParam().body);
  EXPECT_EQ(reply.status, GetParam().foreign) << reply.body;
  EXPECT_NE(reply.error(), "");
  EXPECT_EQ(askIt(ann_, GetParam().body).status, GetParam().status) << "and it left everything as it was";
}

TEST_P(BodyTest, a_bad_body_is_refused_by_name_and_changes_nothing) {
  for (const std::string body : {"{", "[]", "\"text\"", "{\"a\":1}}", "\xff"}) {
    EXPECT_EQ(askIt(ownToken(), body).status, 400) << body;
  }
  const auto reply = askIt(ownToken(), GetParam().badBody);
  EXPECT_EQ(reply.status, 400);
  EXPECT_THAT(reply.error(), testing::HasSubstr(GetParam().complaint));
  EXPECT_EQ(askIt(ownToken(), GetParam().body).status, GetParam().status)
      << "and it left everything as it was";
}

template <class Wanted>
auto callsThat(Wanted wanted) {
  std::vector<ContractCall> found;
  std::ranges::copy_if(contract(), std::back_inserter(found), wanted);
  return testing::ValuesIn(found);
}

std::string nameOf(const testing::TestParamInfo<ContractCall>& call) { return call.param.name; }

INSTANTIATE_TEST_SUITE_P(Calls, ContractTest, testing::ValuesIn(contract()), nameOf);
INSTANTIATE_TEST_SUITE_P(Calls, OwnedThingsTest,
                         callsThat([](const auto& call) { return call.foreign != 0; }), nameOf);
INSTANTIATE_TEST_SUITE_P(Calls, BodyTest, callsThat([](const auto& call) { return !call.badBody.empty(); }),
                         nameOf);

TEST(Routes, are_exactly_those_of_the_contract) {
  std::set<Address> wanted;
  for (const auto& call : contract()) wanted.emplace(call.method, "/api/v1" + shape(call.path));
  std::set<Address> offered;
  for (const auto& route : routes()) {
    if (route.pattern.starts_with("/api/")) offered.emplace(route.method, route.pattern);
  }
  EXPECT_EQ(offered, wanted);
  EXPECT_EQ(offered.size(), 40U);
}

}  // namespace
}  // namespace quillmar::sandbox::test
