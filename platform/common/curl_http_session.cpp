#include "platform/common/curl_http_session.h"

#include <curl/curl.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "platform/common/curl_connections.h"
#include "platform/common/curl_transfer.h"
#include "platform/common/file_descriptor.h"
#include "platform/common/thread_signals.h"

namespace quillmar {
namespace {

namespace fs = std::filesystem;
using Kind = TransportError::Kind;
using Clock = CurlTransfer::Clock;

constexpr std::ptrdiff_t mostTransfersFromAHost = 6;
constexpr long mostIdleConnections = 16;
constexpr std::size_t mostIdleHandles = 16;
// In milliseconds. libcurl 7.88 sometimes holds back an answer that it has read until the connection's next
// event; polling all transfers finds it.
constexpr int longestSleepAtWork = 1000;

struct MultiCleanup {
  void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
};
using MultiHandle = std::unique_ptr<CURLM, MultiCleanup>;

std::string contentsOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

bool hasHashes(const std::string& directory) {
  std::error_code error;
  for (fs::directory_iterator entry(directory, error), end; !error && entry != end; entry.increment(error)) {
    if (entry->path().extension() == ".0") {
      return true;
    }
  }
  return false;
}

TransferSettings settingsFrom(const CurlHttpSession::Options& options) {
  TransferSettings settings;
  settings.sizeLimit = options.sizeLimit;
  settings.longestTransfer = options.longestTransfer;
  settings.longestIdle = options.longestIdle;
  settings.now = options.now;
  if (hasHashes(options.caDirectory)) {
    settings.caDirectory = options.caDirectory;
    settings.caFile = options.extraCaFile;
  } else if (options.extraCaFile.empty()) {
    settings.caFile = options.caFile;
  } else {
    settings.certificates = contentsOf(options.caFile) + '\n' + contentsOf(options.extraCaFile);
  }
  return settings;
}

int milliseconds(Clock::duration duration) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(duration).count();
  return static_cast<int>(std::clamp<std::int64_t>(left, 0, std::numeric_limits<int>::max()));
}

// An interface gives itself a link-local address even without a network.
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
    wakeForIncoming();
  }

  void beginBatch() {
    const std::scoped_lock lock(mutex_);
    ++batches_;
  }

  void endBatch() {
    {
      const std::scoped_lock lock(mutex_);
      --batches_;
    }
    wakeForIncoming();
  }

 private:
  struct Incoming {
    HttpRequest request;
    Completion completion;
  };
  using Transfers = std::vector<std::unique_ptr<CurlTransfer>>;

  void wake() const { eventfd_write(wakeUp_.get(), 1); }

  void wakeForIncoming() {
    bool isNeeded = false;
    {
      const std::scoped_lock lock(mutex_);
      isNeeded = mayTakeIncoming() && !incoming_.empty() && std::exchange(asleep_, false);
    }
    if (isNeeded) {
      wake();
    }
  }

  void run() {
    blockSignalsOfThisThread();
    curl_global_init(CURL_GLOBAL_DEFAULT);
    settings_ = settingsFrom(options_);
    multi_.reset(curl_multi_init());
    curl_multi_setopt(multi_.get(), CURLMOPT_MAXCONNECTS, mostIdleConnections);
    while (!isStopping()) {
      acceptIncoming();
      expire();
      startWaiting();
      while (takeTurn()) {
      }
      sleep();
    }
    cancelAll();
    idleHandles_.clear();
    multi_.reset();
  }

  // Returns whether another turn is needed at once.
  bool takeTurn() {
    const bool anyFinished = perform();
    return startWaiting() || (anyFinished && !active_.empty());
  }

  bool isStopping() {
    const std::scoped_lock lock(mutex_);
    return stopping_;
  }

  // Called under the lock.
  bool mayTakeIncoming() const { return batches_ == 0 || stopping_; }

  std::vector<Incoming> takeIncoming() {
    const std::scoped_lock lock(mutex_);
    asleep_ = false;
    return mayTakeIncoming() ? std::exchange(incoming_, {}) : std::vector<Incoming>();
  }

  void acceptIncoming() {
    for (auto& [request, completion] : takeIncoming()) {
      auto transfer =
          std::make_unique<CurlTransfer>(std::move(request), std::move(completion), settings_, connections_);
      if (const auto prepared = transfer->prepare(); prepared) {
        waiting_.push_back(std::move(transfer));
      } else {
        transfer->fail(*prepared.error().as<TransportError>());
      }
    }
  }

  // Returns whether any was started.
  bool startWaiting() {
    bool anyStarted = false;
    for (auto& transfer : std::exchange(waiting_, {})) {
      if (mayStart(*transfer)) {
        anyStarted = true;
        transfer->begin(takeIdleHandle());
        curl_multi_add_handle(multi_.get(), transfer->handle());
        active_.push_back(std::move(transfer));
      } else {
        waiting_.push_back(std::move(transfer));
      }
    }
    return anyStarted;
  }

  // The first request to a host goes alone: its handshake shows whether one connection can carry all. libcurl
  // has a limit for this, but version 7.88 loses transfers from its queue.
  bool mayStart(const CurlTransfer& waiting) const {
    std::ptrdiff_t count = 0;
    bool connected = false;
    for (const auto& transfer : active_) {
      if (transfer->hasSameOrigin(waiting)) {
        ++count;
        connected = connected || transfer->isConnected();
      }
    }
    return count == 0 || (connected && count < mostTransfersFromAHost);
  }

  // Returns whether any transfer finished. The others then need another turn: libcurl may have read their
  // answers together with this one, and version 7.88 doesn't process them before the connection's next event.
  bool perform() {
    int running = 0;
    curl_multi_perform(multi_.get(), &running);
    bool anyFinished = false;
    int left = 0;
    while (const CURLMsg* message = curl_multi_info_read(multi_.get(), &left)) {
      if (message->msg == CURLMSG_DONE) {
        anyFinished = true;
        finish(CurlTransfer::of(message->easy_handle), message->data.result);
      }
    }
    return anyFinished;
  }

  void finish(CurlTransfer& finished, CURLcode result) {
    curl_multi_remove_handle(multi_.get(), finished.handle());
    const CURLcode code = finished.end(result);
    if (finished.needsNewConnection(code)) {
      beginAgain(finished, CurlTransfer::On::newConnection);
      return;
    }
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
    beginAgain(redirected, CurlTransfer::On::anyConnection);
  }

  void beginAgain(CurlTransfer& transfer, CurlTransfer::On on) {
    transfer.begin(transfer.takeHandle(), on);
    curl_multi_add_handle(multi_.get(), transfer.handle());
  }

  void expire() {
    const auto now = options_.now();
    const auto isLate = [now](const auto& transfer) { return transfer->deadline() <= now; };
    for (auto* list : {&active_, &waiting_}) {
      for (auto late = std::ranges::find_if(*list, isLate); late != list->end();
           late = std::ranges::find_if(*list, isLate)) {
        abandon(*list, late, Kind::timedOut);
      }
    }
  }

  // Completions may add requests; these are cancelled too.
  void cancelAll() {
    do {
      for (auto* list : {&active_, &waiting_}) {
        while (!list->empty()) {
          abandon(*list, list->begin(), Kind::cancelled);
        }
      }
      acceptIncoming();
    } while (!waiting_.empty());
  }

  void abandon(Transfers& list, Transfers::iterator abandoned, Kind kind) {
    const auto transfer = std::move(*abandoned);
    list.erase(abandoned);
    if (transfer->handle()) {
      curl_multi_remove_handle(multi_.get(), transfer->handle());
    }
    transfer->fail({kind, {}});
  }

  std::unique_ptr<CurlTransfer> retire(const CurlTransfer& done) {
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

  // Until a connection's event, a request or the next deadline. Without transfers only a request wakes it.
  void sleep() {
    if (!fallAsleep()) {
      return;
    }
    curl_waitfd wakeUp{wakeUp_.get(), CURL_WAIT_POLLIN, 0};
    curl_multi_poll(multi_.get(), &wakeUp, 1, timeToNextDeadline(), nullptr);
    if (wakeUp.revents != 0) {
      eventfd_t count = 0;
      eventfd_read(wakeUp_.get(), &count);
    }
  }

  int timeToNextDeadline() const {
    if (active_.empty()) {
      return std::numeric_limits<int>::max();
    }
    auto next = Clock::time_point::max();
    for (const auto* list : {&active_, &waiting_}) {
      for (const auto& transfer : *list) {
        next = std::min(next, transfer->deadline());
      }
    }
    return std::min(milliseconds(next - options_.now()), longestSleepAtWork);
  }

  bool fallAsleep() {
    const std::scoped_lock lock(mutex_);
    asleep_ = (incoming_.empty() || !mayTakeIncoming()) && !stopping_;
    return asleep_;
  }

  const Options options_;
  const FileDescriptor wakeUp_{eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};

  std::mutex mutex_;
  std::vector<Incoming> incoming_;
  bool stopping_ = false;
  bool asleep_ = false;  // who adds work must wake the thread
  int batches_ = 0;
  std::thread thread_;

  // Session's thread only.
  TransferSettings settings_;
  CurlConnections connections_;
  MultiHandle multi_;
  std::vector<EasyHandle> idleHandles_;
  Transfers waiting_;
  Transfers active_;
};

CurlHttpSession::CurlHttpSession() : CurlHttpSession(Options()) {}

CurlHttpSession::CurlHttpSession(Options options) : loop_(std::make_unique<Loop>(std::move(options))) {}

CurlHttpSession::~CurlHttpSession() = default;

void CurlHttpSession::dataTask(HttpRequest request, Completion completion) {
  loop_->add(std::move(request), std::move(completion));
}

void CurlHttpSession::beginBatch() { loop_->beginBatch(); }

void CurlHttpSession::endBatch() { loop_->endBatch(); }

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
