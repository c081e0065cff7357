// Compares the client's rows with the tests' own table of the contract.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <regex>
#include <string>
#include <type_traits>
#include <vector>

#include "client/account_calls.h"
#include "client/child_calls.h"
#include "client/device_calls.h"
#include "client/enrollment_calls.h"
#include "client/family_calls.h"
#include "client/home_network_calls.h"
#include "tests/client/call_table.h"

namespace quillmar {
namespace {

using testing::UnorderedElementsAreArray;

struct Row {
  std::string name;
  std::string method;
  std::string pattern;
  std::string bodyRecord;
  std::string answerRecord;
  bool isAuthorised = false;
  Root root = Root::required;
  Judging judging = Judging::by2xx;

  friend bool operator==(const Row&, const Row&) = default;
};

void PrintTo(const Row& row, std::ostream* out) {
  *out << row.name << ": " << row.method << ' ' << row.pattern << ", " << row.bodyRecord << " -> "
       << row.answerRecord << (row.isAuthorised ? ", authorised" : "") << ", root "
       << static_cast<int>(row.root) << ", judging " << static_cast<int>(row.judging);
}

template <class T>
std::string nameOfRecord() {
  return std::same_as<T, NoBody> || std::same_as<T, void> ? std::string() : std::string(recordName<T>());
}

template <class Body, class Answer, std::size_t places>
Row row(const std::string& name, const CallRow<Body, Answer, places>& call) {
  return {.name = name,
          .method = std::string(call.method),
          .pattern = std::string(call.path),
          .bodyRecord = nameOfRecord<Body>(),
          .answerRecord = nameOfRecord<Answer>(),
          .isAuthorised = call.rules.token == Token::bearer,
          .root = call.rules.root,
          .judging = call.rules.judging};
}

std::vector<Row> rowsOfTheClient() {
  return {
      row("registerAccount", calls::registerAccount),
      row("login", calls::login),
      row("deleteAccount", calls::deleteAccount),
      row("refreshToken", calls::refreshToken),
      row("initEnrollment", calls::initEnrollment),
      row("getEnrollmentStatus", calls::getEnrollmentStatus),
      row("completeEnrollment", calls::completeEnrollment),
      row("manualEnrollment", calls::manualEnrollment),
      row("checkin", calls::checkin),
      row("getChildren", calls::getChildren),
      row("createChild", calls::createChild),
      row("getChild", calls::getChild),
      row("updateChild", calls::updateChild),
      row("deleteChild", calls::deleteChild),
      row("linkDevice", calls::linkDevice),
      row("unlinkDevice", calls::unlinkDevice),
      row("updateChildPolicy", calls::updateChildPolicy),
      row("addChildBlockedDomain", calls::addChildBlockedDomain),
      row("removeChildBlockedDomain", calls::removeChildBlockedDomain),
      row("addChildAllowedDomain", calls::addChildAllowedDomain),
      row("removeChildAllowedDomain", calls::removeChildAllowedDomain),
      row("deleteDevice", calls::deleteDevice),
      row("updateDevice", calls::updateDevice),
      row("getDevicePolicy", calls::getDevicePolicy),
      row("updateDevicePolicy", calls::updateDevicePolicy),
      row("addBlockedDomain", calls::addBlockedDomain),
      row("removeBlockedDomain", calls::removeBlockedDomain),
      row("addAllowedDomain", calls::addAllowedDomain),
      row("removeAllowedDomain", calls::removeAllowedDomain),
      row("getDeviceLogs", calls::getDeviceLogs),
      row("getRecentDeviceLogs", calls::getRecentDeviceLogs),
      row("getHomeNetwork", calls::getHomeNetwork),
      row("createHomeNetwork", calls::createHomeNetwork),
      row("updateHomeNetworkIP", calls::updateHomeNetworkIP),
      row("getFamily", calls::getFamily),
      row("createInvitation", calls::createInvitation),
      row("revokeInvitation", calls::revokeInvitation),
      row("validateInvite", calls::validateInvite),
      row("updateMemberPermissions", calls::updateMemberPermissions),
      row("removeMember", calls::removeMember),
      row("joinFamily", calls::joinFamily),
  };
}

std::vector<Row> rowsOfTheContract() {
  std::vector<ContractCall> calls = allCalls();
  calls.push_back(refreshCall());
  std::vector<Row> rows;
  std::ranges::transform(calls, std::back_inserter(rows), [](const ContractCall& call) {
    return Row{.name = call.name,
               .method = call.method,
               .pattern = call.pattern.empty() ? call.path : call.pattern,
               .bodyRecord = call.bodyRecord,
               .answerRecord = call.answerRecord,
               .isAuthorised = call.token == Token::bearer,
               .root = call.root,
               .judging = call.judging};
  });
  return rows;
}

std::vector<std::string> names(const std::vector<Row>& rows) {
  std::vector<std::string> all;
  std::ranges::transform(rows, std::back_inserter(all), &Row::name);
  return all;
}

std::vector<std::string> namesInTheHeaders() {
  std::vector<std::string> all;
  const std::regex definition(R"(inline constexpr Call(?:Row)?<[^{;]*>\s+(\w+)\s*\{)");
  for (const auto& file : std::filesystem::directory_iterator(QUILLMAR_CLIENT_FOLDER)) {
    if (file.path().filename().string().ends_with("_calls.h")) {
      std::ifstream stream(file.path());
      const std::string text(std::istreambuf_iterator<char>(stream), {});
      std::transform(std::sregex_iterator(text.begin(), text.end(), definition), std::sregex_iterator(),
                     std::back_inserter(all), [](const std::smatch& found) { return found.str(1); });
    }
  }
  return all;
}

TEST(CallRowsTest, the_rows_match_the_contract) {
  EXPECT_THAT(rowsOfTheClient(), UnorderedElementsAreArray(rowsOfTheContract()));
}

TEST(CallRowsTest, every_row_of_the_headers_is_in_the_table) {
  EXPECT_THAT(namesInTheHeaders(), UnorderedElementsAreArray(names(rowsOfTheClient())));
}

// How a path is filled with arguments.

TEST(FilledPathTest, a_placeholder_takes_an_argument_raw_or_encoded) {
  const std::string text = "a b?&/+%é";
  const auto filled = [&](std::string_view path) {
    return filledPath(path, PathArguments<1>(text).values());
  };
  EXPECT_EQ(filled("/x/{}/y"), "/x/a b?&/+%é/y");
  EXPECT_EQ(filled("/x/{%path}/y"), "/x/a%20b%3F&/+%25%C3%A9/y");
  EXPECT_EQ(filled("/x?y={%query}"), "/x?y=a%20b?&/+%25%C3%A9");
}

TEST(FilledPathTest, arguments_are_filled_in_order_and_not_searched_for_placeholders) {
  EXPECT_EQ(filledPath("/{}/{}?a={}", PathArguments<3>("{}", "{%path}", 7).values()), "/{}/{%path}?a=7");
}

TEST(FilledPathTest, a_path_without_placeholders_is_unchanged) {
  EXPECT_EQ(filledPath("/family", PathArguments<0>().values()), "/family");
}

template <std::size_t places, class... Arguments>
constexpr bool fits = std::is_constructible_v<PathArguments<places>, Arguments...>;

TEST(FilledPathTest, a_path_takes_one_argument_per_placeholder) {
  EXPECT_TRUE((fits<2, std::string, int>));
  EXPECT_FALSE((fits<2, std::string>));
  EXPECT_FALSE((fits<2, std::string, std::string, std::string>));
  EXPECT_FALSE((fits<0, std::string>));
}

// Whether a row with this number of placeholders is a constant expression.
template <std::size_t places>
concept IsRow = requires {
  typename std::bool_constant<(CallRow<NoBody, void, places>("GET", "/x/{}/{%path}?y={%query}").path != "")>;
};
template <std::size_t places>
concept IsRowOfAnotherPlace = requires {
  typename std::bool_constant<(CallRow<NoBody, void, places>("GET", "/x/{%host}").path != "")>;
};
template <std::size_t places>
concept IsRowOfAnOpenPlace = requires {
  typename std::bool_constant<(CallRow<NoBody, void, places>("GET", "/x/{").path != "")>;
};

TEST(CallRowsTest, a_row_with_a_wrong_number_of_placeholders_does_not_compile) {
  EXPECT_TRUE(IsRow<3>);
  EXPECT_FALSE(IsRow<2>);
  EXPECT_FALSE(IsRow<4>);
  EXPECT_FALSE(IsRow<0>);
}

TEST(CallRowsTest, a_row_with_an_unknown_placeholder_does_not_compile) {
  EXPECT_FALSE(IsRowOfAnotherPlace<1>);
  EXPECT_FALSE(IsRowOfAnOpenPlace<1>);
}

}  // namespace
}  // namespace quillmar
