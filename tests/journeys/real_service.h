#pragma once

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>

#include "platform/linux/curl_http_session.h"
#include "sandbox/service.h"
#include "tests/support/settling_http_session.h"
#include "tests/support/test_application.h"

namespace quillmar {

// A session over the real network that the machine's virtual time waits for.
class NetworkSession final : public HttpSession {
 public:
  NetworkSession(const std::string& caFile, VirtualDispatch& time)
      : network_(CurlHttpSession::Options{.extraCaFile = caFile}), settling_(network_, &time) {}

  void dataTask(HttpRequest request, Completion completion) override {
    settling_.dataTask(std::move(request), std::move(completion));
  }

 private:
  CurlHttpSession network_;
  SettlingHttpSession settling_;
};

// The stand-in service on free ports of this machine.
class RealService {
 public:
  RealService() : service_(start()) {}

  sandbox::Service* operator->() const { return service_.get(); }

  // Over TLS, verified against the service's own authority.
  TestApplication::Network network() const {
    return {.makeSession = [ca = service_->caFile().string()](
                               VirtualDispatch& time) { return std::make_unique<NetworkSession>(ca, time); },
            .root = service_->secureUrl()};
  }

  // How often the service was asked for this since the last `clearRequests`.
  std::ptrdiff_t count(const std::string& method, const std::string& target) const {
    const auto requests = service_->requests();
    return std::ranges::count_if(requests, [&](const sandbox::Request& request) {
      return request.method == method && request.target == target;
    });
  }

 private:
  static std::unique_ptr<sandbox::Service> start() {
    auto started = sandbox::Service::start({});
    if (!started) {
      throw std::runtime_error(started.failure());
    }
    return std::move(*started);
  }

  std::unique_ptr<sandbox::Service> service_;
};

}  // namespace quillmar
