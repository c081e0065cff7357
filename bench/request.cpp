// The processor time of an authorised request through the service client, against a bare libcurl handle that
// fetches the same answer. Both send sequential requests over one kept-alive HTTPS connection. Blocking for
// the answer costs two context switches; no screen does that, so it is measured separately. The bare handle
// with a new TLS connection for each request shows the price of not reusing an idle one.

#include <cstdio>
#include <string>

#include "bench/against_service.h"
#include "bench/measure.h"
#include "client/account_calls.h"
#include "client/network_service.h"
#include "client/records/account.h"

namespace quillmar::bench {
namespace {

constexpr int requestsARound = 200;
constexpr int rounds = 41;

// Sequential requests on one thread: each answer starts the next request.
class Chain {
 public:
  Chain(NetworkService& service, HttpRequest request) : service_(service), request_(std::move(request)) {}

  void run() {
    left_ = requestsARound;
    next();
    done_.value();
  }

 private:
  void next() {
    service_.performRequest(request_, false, [this](Result<NetworkService::Answer> answer) {
      if (--left_ == 0 || !answer.ok()) {
        end_(std::move(answer));
      } else {
        next();
      }
    });
  }

  NetworkService& service_;
  const HttpRequest request_;
  int left_ = 0;
  Waiting<NetworkService::Answer> done_;
  const Completion<NetworkService::Answer> end_ = done_.completion();
};

int run() {
  const ServiceProcess process;
  const Client client(process);
  NetworkService& service = *client.service;
  const auto account = waitFor<AuthResponse>([&](auto completion) {
    service.send(calls::registerAccount,
                 {.email = "zoe@example.org",
                  .password = "correct horse",
                  .phone = "+61400000000",
                  .name = "Zoe Lee",
                  .region = std::nullopt},
                 std::move(completion));
  });

  const HttpRequest request{
      .method = "GET", .url = *service.baseURL() + "/children", .headers = {}, .body = {}};
  const auto fetchByUs = [&] {
    return waitFor<NetworkService::Answer>(
        [&](auto completion) { service.performRequest(request, false, std::move(completion)); });
  };
  BareHandle bare(request.url, process.caFile, account.token);
  if (const auto fetched = fetchByUs(); fetched.response.status != 200 || fetched.data != bare.fetch()) {
    giveUp("the two do not fetch the same: " + fetched.data);
  }

  const auto repeatedly = [](auto fetch) {
    return [fetch] {
      for (int i = 0; i < requestsARound; ++i) {
        fetch();
      }
    };
  };
  Chain chain(service, request);
  BareHandle connecting(request.url, process.caFile, account.token);
  curl_easy_setopt(connecting.get(), CURLOPT_FRESH_CONNECT, 1L);
  curl_easy_setopt(connecting.get(), CURLOPT_FORBID_REUSE, 1L);
  const auto times =
      race(rounds, {[&] { chain.run(); }, repeatedly(fetchByUs), repeatedly([&] { bare.fetch(); }),
                    repeatedly([&] { connecting.fetch(); })});
  std::printf(
      "request: %.2fx a bare libcurl handle (%.0f µs of processor time against %.0f), %.2fx where another "
      "thread sleeps for each answer\n",
      times[0] / times[2], times[0].count() / requestsARound * 1e6, times[2].count() / requestsARound * 1e6,
      times[1] / times[2]);
  std::printf("connection: %.1fx a request on a kept-alive connection (%.0f µs against %.0f)\n",
              times[3] / times[2], times[3].count() / requestsARound * 1e6,
              times[2].count() / requestsARound * 1e6);
  return 0;
}

}  // namespace
}  // namespace quillmar::bench

int main() { return quillmar::bench::run(); }
