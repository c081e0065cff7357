// What an authorised request through the service client costs the processor, against a bare libcurl handle
// that does nothing but fetch the same answer: both over one kept-alive HTTPS connection, one request after
// the other. The service runs in a process of its own, so that the times are the client's alone. A caller
// that sleeps until its answer has come adds two changes of threads; that is measured apart, since no screen
// does so.

#include <curl/curl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "bench/measure.h"
#include "client/network_service.h"
#include "platform/linux/asio_dispatch.h"
#include "platform/linux/curl_http_session.h"
#include "sandbox/service.h"
#include "tests/support/memory_settings_store.h"

namespace quillmar::bench {
namespace {

constexpr int requestsARound = 200;
constexpr int rounds = 41;

[[noreturn]] void giveUp(const std::string& cause) {
  std::fprintf(stderr, "request: %s\n", cause.c_str());
  std::quick_exit(1);
}

// The stand-in service in a child process, which ends with this one's end of the pipe.
class ServiceProcess {
 public:
  ServiceProcess() {
    std::array<int, 2> toParent{};
    std::array<int, 2> toChild{};
    if (pipe(toParent.data()) != 0 || pipe(toChild.data()) != 0) {
      giveUp("no pipe");
    }
    process_ = fork();
    if (process_ == 0) {
      close(toChild[1]);
      serve(toParent[1], toChild[0]);
    }
    close(toParent[1]);
    close(toChild[0]);
    life_ = toChild[1];
    std::array<char, 4096> text{};
    const auto size = read(toParent[0], text.data(), text.size());
    const std::string addresses(text.data(), size > 0 ? static_cast<std::size_t>(size) : 0);
    const auto space = addresses.find(' ');
    if (space == std::string::npos) {
      giveUp("the service did not start");
    }
    url = addresses.substr(0, space);
    caFile = addresses.substr(space + 1);
  }
  ServiceProcess(const ServiceProcess&) = delete;
  ServiceProcess& operator=(const ServiceProcess&) = delete;
  ~ServiceProcess() {
    close(life_);
    waitpid(process_, nullptr, 0);
  }

  std::string url;
  std::string caFile;

 private:
  [[noreturn]] static void serve(int parent, int life) {
    {
      const auto service = sandbox::Service::start({});
      if (service) {
        const std::string addresses = (*service)->secureUrl() + ' ' + (*service)->caFile().string();
        if (write(parent, addresses.data(), addresses.size()) > 0) {
          pollfd closed{life, POLLIN, 0};
          poll(&closed, 1, -1);
        }
      }
    }
    _exit(0);
  }

  pid_t process_ = -1;
  int life_ = -1;
};

// One call at a time, waited for.
template <class T>
class Waiting {
 public:
  Completion<T> completion() {
    return [this](Result<T> result) {
      const std::scoped_lock lock(mutex_);
      result_ = std::move(result);
      changed_.notify_one();
    };
  }
  T value() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return result_.has_value(); });
    if (!result_->ok()) {
      giveUp(result_->error().localizedDescription());
    }
    return std::move(*std::exchange(result_, std::nullopt)).value();
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::optional<Result<T>> result_;
};

// Log lines cost what the adapter of the standard output makes of them, which is not measured here.
class SilentLog final : public Log {
 public:
  void print(std::string_view /*line*/) override {}
  void system(std::string_view /*line*/) override {}
};

class BareHandle {
 public:
  BareHandle(const std::string& url, const std::string& caFile, const std::string& token) {
    headers_.reset(curl_slist_append(nullptr, ("Authorization: Bearer " + token).c_str()));
    curl_easy_setopt(handle_.get(), CURLOPT_URL, url.c_str());
    curl_easy_setopt(handle_.get(), CURLOPT_CAINFO, caFile.c_str());
    curl_easy_setopt(handle_.get(), CURLOPT_HTTPHEADER, headers_.get());
    curl_easy_setopt(handle_.get(), CURLOPT_WRITEFUNCTION, &BareHandle::onBody);
    curl_easy_setopt(handle_.get(), CURLOPT_WRITEDATA, &body_);
  }

  const std::string& fetch() {
    body_.clear();
    if (const auto code = curl_easy_perform(handle_.get()); code != CURLE_OK) {
      giveUp(curl_easy_strerror(code));
    }
    return body_;
  }

 private:
  static std::size_t onBody(char* bytes, std::size_t size, std::size_t count, void* body) {
    static_cast<std::string*>(body)->append(bytes, size * count);
    return size * count;
  }

  std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> handle_{curl_easy_init(), &curl_easy_cleanup};
  std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)> headers_{nullptr, &curl_slist_free_all};
  std::string body_;
};

// Requests one after the other without a change of threads between them: each is started by the answer to
// the one before.
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
  curl_global_init(CURL_GLOBAL_DEFAULT);
  CurlHttpSession::Options options;
  options.caFile = process.caFile;
  CurlHttpSession session(options);
  MemorySettingsStore settings;
  SilentLog log;
  settings.set(NetworkService::apiURLKey, process.url);
  AsioDispatch dispatch;
  const auto service = NetworkService::make(session, settings, log, dispatch, Deployments::all(process.url));

  Waiting<AuthResponse> account;
  service->registerAccount({.email = "zoe@example.org",
                            .password = "correct horse",
                            .phone = "+61400000000",
                            .name = "Zoe Lee",
                            .region = std::nullopt},
                           account.completion());
  const std::string token = account.value().token;

  const HttpRequest request{
      .method = "GET", .url = *service->baseURL() + "/children", .headers = {}, .body = {}};
  Waiting<NetworkService::Answer> answer;
  const auto fetchByUs = [&] {
    service->performRequest(request, false, answer.completion());
    return answer.value();
  };
  BareHandle bare(request.url, process.caFile, token);
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
  Chain chain(*service, request);
  const auto times =
      race(rounds, {[&] { chain.run(); }, repeatedly(fetchByUs), repeatedly([&] { bare.fetch(); })});
  std::printf(
      "request: %.2fx a bare libcurl handle (%.0f µs of processor time against %.0f), %.2fx where another "
      "thread sleeps for each answer\n",
      times[0] / times[2], times[0].count() / requestsARound * 1e6, times[2].count() / requestsARound * 1e6,
      times[1] / times[2]);
  return 0;
}

}  // namespace
}  // namespace quillmar::bench

int main() { return quillmar::bench::run(); }
