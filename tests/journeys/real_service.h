#pragma once

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "sandbox/service.h"
#include "testing/network_session.h"
#include "testing/test_application.h"

namespace quillmar {

// The stand-in service on free ports of this machine.
class RealService {
 public:
  explicit RealService(sandbox::Clock clock = sandbox::systemClock(), const sandbox::Options& options = {})
      : service_(start(options, std::move(clock))) {}

  sandbox::Service* operator->() const { return service_.get(); }

  // Over TLS; the certificate is verified with the service's own CA.
  TestApplication::Network network() const {
    return realNetwork(service_->secureUrl(), service_->caFile().string());
  }

  // Over plain HTTP/1.1, whereas TLS negotiates HTTP/2.
  TestApplication::Network plainNetwork() const {
    return realNetwork(service_->url(), service_->caFile().string());
  }

  // The number of these requests since the last `clearRequests`.
  std::ptrdiff_t count(const std::string& method, const std::string& target) const {
    const auto requests = service_->requests();
    return std::ranges::count_if(requests, [&](const sandbox::Request& request) {
      return request.method == method && request.target == target;
    });
  }

 private:
  static std::unique_ptr<sandbox::Service> start(const sandbox::Options& options, sandbox::Clock clock) {
    auto started = sandbox::Service::start(options, std::move(clock));
    if (!started) {
      throw std::runtime_error(started.failure());
    }
    return std::move(*started);
  }

  std::unique_ptr<sandbox::Service> service_;
};

}  // namespace quillmar
