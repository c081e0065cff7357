#include "platform/linux/curl_http_session.h"

#include <curl/curl.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <deque>
#include <fstream>
#include <iterator>
#include <limits>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "platform/linux/curl_transfer.h"
#include "platform/linux/file_descriptor.h"
#include "platform/linux/thread_signals.h"

namespace quillmar {
namespace {

using Kind = TransportError::Kind;
using Clock = CurlTransfer::Clock;

constexpr long mostConnectionsToAHost = 6;
constexpr long mostIdleConnections = 16;
constexpr std::size_t mostIdleHandles = 16;

struct MultiCleanup {
  void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
};
using MultiHandle = std::unique_ptr<CURLM, MultiCleanup>;

std::string contentsOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

TransferSettings settingsFrom(const CurlHttpSession::Options& options) {
  TransferSettings settings{options.caFile, {}, options.sizeLimit, options.longestTransfer};
  if (!options.extraCaFile.empty()) {
    settings.certificates = contentsOf(options.caFile) + '\n' + contentsOf(options.extraCaFile);
  }
  return settings;
}

int millisecondsUntil(Clock::time_point moment) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(moment - Clock::now()).count();
  return static_cast<int>(std::clamp<std::int64_t>(left, 0, std::numeric_limits<int>::max()));
}

// An interface gives itself a link-local address even where no network is.
bool leadsSomewhere(const sockaddr& address) {
  if (address.sa_family == AF_INET6) {
    return !IN6_IS_ADDR_LINKLOCAL(&reinterpret_cast<const sockaddr_in6&>(address).sin6_addr);
  }
  return address.sa_family == AF_INET;
}

}  // namespace

class CurlHttpSession::Loop {
 public:
  explicit Loop(Options options) : options_(std::move(options)) {}

  ~Loop() {
    {
      const std::scoped_lock lock(mutex_);
      stopping_ = true;
    }
    wake();
    if (thread_.joinable()) {
      thread_.join();
    }
  }

  void add(HttpRequest request, Completion completion) {
    {
      const std::scoped_lock lock(mutex_);
      incoming_.push_back({std::move(request), std::move(completion)});
      if (!thread_.joinable()) {
        thread_ = std::thread([this] { run(); });
      }
    }
    wake();
  }

 private:
  struct Incoming {
    HttpRequest request;
    Completion completion;
  };

  void wake() const { eventfd_write(wakeUp_.get(), 1); }

  void run() {
    blockSignalsOfThisThread();
    curl_global_init(CURL_GLOBAL_DEFAULT);
    settings_ = settingsFrom(options_);
    multi_.reset(curl_multi_init());
    curl_multi_setopt(multi_.get(), CURLMOPT_MAX_HOST_CONNECTIONS, mostConnectionsToAHost);
    curl_multi_setopt(multi_.get(), CURLMOPT_MAXCONNECTS, mostIdleConnections);
    while (!isStopping()) {
      startIncoming();
      perform();
      expire();
      sleep();
    }
    cancelAll();
    idleHandles_.clear();
    multi_.reset();
  }

  bool isStopping() {
    const std::scoped_lock lock(mutex_);
    return stopping_;
  }

  std::deque<Incoming> takeIncoming() {
    const std::scoped_lock lock(mutex_);
    return std::exchange(incoming_, {});
  }

  void startIncoming() {
    for (auto& [request, completion] : takeIncoming()) {
      auto transfer = std::make_unique<CurlTransfer>(std::move(request), std::move(completion), settings_);
      start(std::move(transfer));
    }
  }

  void start(std::unique_ptr<CurlTransfer> transfer) {
    if (const auto begun = transfer->begin(takeIdleHandle()); !begun) {
      transfer->fail(*begun.error().as<TransportError>());
      return;
    }
    curl_multi_add_handle(multi_.get(), transfer->handle());
    active_.push_back(std::move(transfer));
  }

  void perform() {
    int running = 0;
    curl_multi_perform(multi_.get(), &running);
    int left = 0;
    while (const CURLMsg* message = curl_multi_info_read(multi_.get(), &left)) {
      if (message->msg == CURLMSG_DONE) {
        finish(CurlTransfer::of(message->easy_handle), message->data.result);
      }
    }
  }

  void finish(CurlTransfer& finished, CURLcode code) {
    curl_multi_remove_handle(multi_.get(), finished.handle());
    if (code == CURLE_OK && finished.isRedirect()) {
      follow(finished);
      return;
    }
    const auto transfer = retire(finished);
    transfer->complete(code, code == CURLE_OK || options_.hasNetwork());
    keep(transfer->takeHandle());
  }

  void follow(CurlTransfer& redirected) {
    if (const auto aimed = redirected.redirect(); !aimed) {
      const auto transfer = retire(redirected);
      transfer->fail(*aimed.error().as<TransportError>());
      keep(transfer->takeHandle());
      return;
    }
    curl_multi_add_handle(multi_.get(), redirected.handle());
  }

  void expire() {
    const auto now = Clock::now();
    std::vector<CurlTransfer*> late;
    for (const auto& transfer : active_) {
      if (transfer->deadline() <= now) {
        late.push_back(transfer.get());
      }
    }
    for (CurlTransfer* transfer : late) {
      abandon(*transfer, Kind::timedOut);
    }
  }

  // A completion may add requests, which end here as well.
  void cancelAll() {
    while (!active_.empty()) {
      abandon(*active_.front(), Kind::cancelled);
    }
    for (auto incoming = takeIncoming(); !incoming.empty(); incoming = takeIncoming()) {
      for (auto& [request, completion] : incoming) {
        CurlTransfer(std::move(request), std::move(completion), settings_).fail({Kind::cancelled, {}});
      }
    }
  }

  void abandon(CurlTransfer& abandoned, Kind kind) {
    curl_multi_remove_handle(multi_.get(), abandoned.handle());
    const auto transfer = retire(abandoned);
    transfer->fail({kind, {}});
  }

  std::unique_ptr<CurlTransfer> retire(CurlTransfer& done) {
    const auto found = std::ranges::find(active_, &done, [](const auto& transfer) { return transfer.get(); });
    auto transfer = std::move(*found);
    active_.erase(found);
    return transfer;
  }

  EasyHandle takeIdleHandle() {
    if (idleHandles_.empty()) {
      return EasyHandle(curl_easy_init());
    }
    EasyHandle handle = std::move(idleHandles_.back());
    idleHandles_.pop_back();
    return handle;
  }

  void keep(EasyHandle handle) {
    if (idleHandles_.size() < mostIdleHandles) {
      idleHandles_.push_back(std::move(handle));
    }
  }

  // Until a connection stirs, a request comes or a deadline passes. With nothing under way only a request
  // wakes it.
  void sleep() {
    auto next = Clock::time_point::max();
    for (const auto& transfer : active_) {
      next = std::min(next, transfer->deadline());
    }
    curl_waitfd wakeUp{wakeUp_.get(), CURL_WAIT_POLLIN, 0};
    curl_multi_poll(multi_.get(), &wakeUp, 1,
                    active_.empty() ? std::numeric_limits<int>::max() : millisecondsUntil(next), nullptr);
    eventfd_t count = 0;
    eventfd_read(wakeUp_.get(), &count);
  }

  const Options options_;
  const FileDescriptor wakeUp_{eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};

  std::mutex mutex_;
  std::deque<Incoming> incoming_;
  bool stopping_ = false;
  std::thread thread_;

  // The session's thread only.
  TransferSettings settings_;
  MultiHandle multi_;
  std::vector<EasyHandle> idleHandles_;
  std::vector<std::unique_ptr<CurlTransfer>> active_;
};

CurlHttpSession::CurlHttpSession() : CurlHttpSession(Options()) {}

CurlHttpSession::CurlHttpSession(Options options) : loop_(std::make_unique<Loop>(std::move(options))) {}

CurlHttpSession::~CurlHttpSession() = default;

void CurlHttpSession::dataTask(HttpRequest request, Completion completion) {
  loop_->add(std::move(request), std::move(completion));
}

bool CurlHttpSession::hasNetworkInterface() {
  ifaddrs* list = nullptr;
  if (getifaddrs(&list) != 0) {
    return true;
  }
  const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> owned(list, &freeifaddrs);
  for (const ifaddrs* entry = list; entry; entry = entry->ifa_next) {
    const bool works = (entry->ifa_flags & IFF_RUNNING) != 0 && (entry->ifa_flags & IFF_LOOPBACK) == 0;
    if (works && entry->ifa_addr && leadsSomewhere(*entry->ifa_addr)) {
      return true;
    }
  }
  return false;
}

}  // namespace quillmar
