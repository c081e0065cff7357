#pragma once

// Shared by the benchmarks against the stand-in service. The service runs in its own process, so only the
// client's time is measured.

#include <curl/curl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "bench/give_up.h"
#include "client/network_service.h"
#include "platform/common/asio_dispatch.h"
#include "platform/common/curl_http_session.h"
#include "sandbox/service.h"
#include "testing/memory_settings_store.h"

namespace quillmar::bench {

// The stand-in service in a child process. It ends when this process closes the pipe.
class ServiceProcess {
 public:
  explicit ServiceProcess(const sandbox::Options& options = {}) {
    std::array<int, 2> toParent{};
    std::array<int, 2> toChild{};
    if (pipe(toParent.data()) != 0 || pipe(toChild.data()) != 0) {
      giveUp("no pipe");
    }
    process_ = fork();
    if (process_ == 0) {
      close(toChild[1]);
      serve(options, toParent[1], toChild[0]);
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
  [[noreturn]] static void serve(const sandbox::Options& options, int parent, int life) {
    {
      const auto service = sandbox::Service::start(options);
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

// Waits for one call at a time.
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

// Waits for a call that is answered on the session's thread.
template <class T>
T waitFor(const std::function<void(Completion<T>)>& call) {
  Waiting<T> answer;
  call(answer.completion());
  return answer.value();
}

// Drops log lines: printing them is not measured.
class SilentLog final : public Log {
 public:
  void print(std::string_view /*line*/) override {}
  void system(std::string_view /*line*/) override {}
};

// The service client, set up as in a program.
class Client {
 public:
  explicit Client(const ServiceProcess& process) : session_(optionsFor(process)) {
    settings_.set(NetworkService::apiURLKey, process.url);
    service = NetworkService::make(session_, settings_, log_, dispatch, Deployments::all(process.url));
  }

 private:
  static CurlHttpSession::Options optionsFor(const ServiceProcess& process) {
    curl_global_init(CURL_GLOBAL_DEFAULT);
    CurlHttpSession::Options options;
    options.extraCaFile = process.caFile;
    return options;
  }

  CurlHttpSession session_;
  MemorySettingsStore settings_;
  SilentLog log_;

 public:
  AsioDispatch dispatch;
  std::shared_ptr<NetworkService> service;
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

  CURL* get() const { return handle_.get(); }
  const std::string& body() const { return body_; }
  void clear() { body_.clear(); }
  const std::string& fetch() {
    clear();
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

}  // namespace quillmar::bench
