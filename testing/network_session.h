#pragma once

#include <memory>
#include <string>
#include <utility>

#include "platform/common/curl_http_session.h"
#include "testing/settling_http_session.h"
#include "testing/test_application.h"

namespace quillmar {

// A session over the real network; virtual time waits for its requests.
class NetworkSession final : public HttpSession {
 public:
  NetworkSession(const std::string& caFile, VirtualDispatch& time)
      : network_(CurlHttpSession::Options{.extraCaFile = caFile}), settling_(network_, &time) {}

  void dataTask(HttpRequest request, Completion completion) override {
    settling_.dataTask(std::move(request), std::move(completion));
  }
  void beginBatch() override { settling_.beginBatch(); }
  void endBatch() override { settling_.endBatch(); }

 private:
  CurlHttpSession network_;
  SettlingHttpSession settling_;
};

// For a service at `root` whose certificate is signed by an authority in `caFile`.
inline TestApplication::Network realNetwork(std::string root, std::string caFile) {
  return {
      .makeSession = [caFile = std::move(caFile)](
                         VirtualDispatch& time) { return std::make_unique<NetworkSession>(caFile, time); },
      .root = std::move(root)};
}

}  // namespace quillmar
