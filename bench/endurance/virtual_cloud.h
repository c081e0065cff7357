#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "platform/dispatch.h"
#include "platform/http_session.h"
#include "platform/transport_error.h"

namespace quillmar::endurance {

// A cloud service for children's devices, in virtual time. It completes every enrollment at the first poll.
// It keeps no record of devices, so that the heap holds only the agents.
class VirtualCloud final : public HttpSession {
 public:
  static constexpr Duration latency{40};

  explicit VirtualCloud(Dispatch& dispatch) : dispatch_(dispatch) {}

  void dataTask(HttpRequest request, Completion completion) override {
    const bool isCheckin = request.url.ends_with("/device/checkin");
    checkins_ += isCheckin ? 1 : 0;
    ++requests_;
    dispatch_.global(QualityOfService::background)
        .asyncAfter(latency, [this, url = std::move(request.url), completion = std::move(completion)] {
          completion(answer(url));
        });
  }

  // While true, all requests fail.
  bool isAway = false;
  std::string endpoint = "https://dns.example/0000000000000000";

  std::uint64_t checkins() const { return checkins_; }
  std::uint64_t requests() const { return requests_; }

 private:
  DataTaskResult answer(const std::string& url) {
    if (isAway) {
      return {.data = std::nullopt,
              .response = std::nullopt,
              .error = TransportError{TransportError::Kind::cannotConnectToHost, {}}};
    }
    return {.data = bodyFor(url), .response = Response{.status = 200}, .error = std::nullopt};
  }

  std::string bodyFor(const std::string& url) {
    if (url.ends_with("/enrollment/init")) {
      const auto number = std::to_string(++enrolled_);
      return R"({"enrollment_code":"CODE)" + number + R"(","device_id":"device-)" + number +
             R"(","expires_at":"2016-10-09T00:00:00Z"})";
    }
    const std::string where = R"(,"doh_endpoint":")" + endpoint + R"("})";
    if (url.ends_with("/device/checkin")) {
      return R"({"status":"ok")" + where;
    }
    const auto device = url.substr(url.rfind('/') + 1);
    return R"({"status":"completed","api_base_url":"https://au.example","device_id":")" + device + '"' +
           where;
  }

  Dispatch& dispatch_;
  std::uint64_t checkins_ = 0;
  std::uint64_t requests_ = 0;
  std::uint64_t enrolled_ = 0;
};

}  // namespace quillmar::endurance
