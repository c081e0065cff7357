// The input is a request. The first line is "METHOD TARGET"; a T before it adds a valid token. The rest is
// the body. {child}, {device}, {member} and {endpoint} are replaced by existing ids.

#include <array>
#include <memory>
#include <optional>
#include <set>

#include "sandbox/json.h"
#include "sandbox/router.h"
#include "tests/fuzz/fuzz.h"

using namespace quillmar::sandbox;
using quillmar::fuzz::require;

namespace {

constexpr std::size_t requestsBetweenResets = 500;
constexpr Time now{std::chrono::milliseconds{1'791'498'660'250}};

class Household {
 public:
  Household() { moveIn(); }

  Answer ask(std::string_view input) {
    if (++asked_ % requestsBetweenResets == 0) moveIn();
    return answerTo(requestIn(input), *world_);
  }

 private:
  void moveIn() {
    world_.reset();
    database_ = std::move(*Database::open(std::nullopt));
    recorder_.clear();
    faultInjector_.set({});
    world_.emplace(*database_, faultInjector_, recorder_,
                   Addresses{"http://127.0.0.1:8790", "https://127.0.0.1:8791"},
                   [] { return std::chrono::system_clock::time_point{now.time_since_epoch()}; });
    token_ = open(
                 "POST /api/v1/auth/register\n"
                 R"({"email":"a@example.com","password":"secret","phone":"1234567890","name":"A"})")
                 .at("token");
    const auto child = open("TPOST /api/v1/children\n{\"name\":\"Mia\"}");
    const auto device =
        open("TPOST /api/v1/enrollment/manual\n{\"device_name\":\"TV\",\"device_type\":\"smarttv\"}");
    const auto family = open("TGET /api/v1/family\n");
    const std::string endpoint = device.at("device").at("doh_endpoint");
    marks_ = {{{"{child}", child.at("id")},
               {"{device}", device.at("device").at("id")},
               {"{member}", family.at("members")[0].at("id")},
               {"{endpoint}", endpoint.substr(endpoint.rfind('/') + 1)}}};
  }

  Json open(std::string_view input) { return Json::parse(answerTo(requestIn(input), *world_).body); }

  Request requestIn(std::string_view input) const {
    Request request{.secure = true};
    const bool authorised = input.starts_with('T');
    if (authorised) input.remove_prefix(1);
    const auto line = input.substr(0, input.find('\n'));
    request.body = line.size() < input.size() ? filledIn(input.substr(line.size() + 1)) : std::string{};
    request.method = line.substr(0, line.find(' '));
    request.target = request.method.size() < line.size() ? filledIn(line.substr(request.method.size() + 1))
                                                         : std::string{};
    request.headers.emplace_back("Content-Type", "application/dns-message");
    if (authorised) request.headers.emplace_back("Authorization", "Bearer " + token_);
    return request;
  }

  std::string filledIn(std::string_view text) const {
    std::string filled{text};
    for (const auto& [mark, value] : marks_) {
      const auto at = filled.find(mark);
      if (!mark.empty() && at != std::string::npos) filled.replace(at, mark.size(), value);
    }
    return filled;
  }

  std::unique_ptr<Database> database_;
  FaultInjector faultInjector_;
  Recorder recorder_;
  std::optional<World> world_;
  std::string token_;
  std::array<std::pair<std::string, std::string>, 4> marks_;
  std::size_t asked_ = 0;
};

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Household household;
  static const std::set<int> statuses{200, 201, 204, 400, 401, 403, 404, 405, 409, 415, 422};
  const auto answer = household.ask(quillmar::fuzz::textOf(data, size));
  require(statuses.contains(answer.status), "no request breaks the service");
  require((answer.status == 204) == answer.body.empty(), "only 204 says nothing");
  if (answer.contentType != "application/json") return 0;
  const auto body = Json::parse(answer.body, nullptr, false);
  require(body.is_object(), "an answer is a JSON object");
  require(answer.status < 400 || (body.contains("error") && body["error"].is_string()), "a refusal says why");
  return 0;
}
