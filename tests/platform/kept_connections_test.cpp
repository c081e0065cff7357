// Requests on connections that were kept from earlier requests, over each kind of connection.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <fstream>
#include <functional>
#include <latch>
#include <memory>
#include <mutex>
#include <optional>
#include <ostream>
#include <string>
#include <tuple>
#include <vector>

#include "platform/common/curl_http_session.h"
#include "platform/transport_error.h"
#include "testing/temporary_directory.h"
#include "tests/platform/fetching.h"
#include "tests/platform/http2_connection.h"
#include "tests/platform/raw_server.h"
#include "tests/platform/test_authority.h"

namespace quillmar {
namespace {

using namespace std::string_literals;
using Kind = TransportError::Kind;

enum class Wire { plain, tls, http2 };

std::string nameOf(Wire wire) {
  constexpr std::array<const char*, 3> names{"plain", "tls", "http2"};
  return names.at(static_cast<std::size_t>(wire));
}

// The server side of a connection, HTTP/1.1 or HTTP/2.
class Peer {
 public:
  Peer() = default;
  Peer(const Peer&) = delete;
  Peer& operator=(const Peer&) = delete;
  virtual ~Peer() = default;

  // The path of the next request; nullopt if the client closed.
  virtual std::optional<std::string> next() = 0;
  // Each of these handles the latest request.
  virtual void answer(const std::string& body) = 0;
  virtual void cutHeaders() = 0;
  virtual void cutBody() = 0;
  virtual RawConnection& connection() = 0;
};

class Http1Peer final : public Peer {
 public:
  explicit Http1Peer(RawConnection& connection) : connection_(connection) {}
  std::optional<std::string> next() override {
    const auto request = connection_.readRequest();
    if (!request) {
      return std::nullopt;
    }
    const std::size_t path = request->find(' ') + 1;
    return request->substr(path, request->find(' ', path) - path);
  }
  void answer(const std::string& body) override { connection_.send(httpResponse(200, body)); }
  void cutHeaders() override { connection_.send("HTTP/1.1 200 OK\r\nContent-Le"); }
  void cutBody() override { connection_.send("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc"); }
  RawConnection& connection() override { return connection_; }

 private:
  RawConnection& connection_;
};

class Http2Peer final : public Peer {
 public:
  explicit Http2Peer(RawConnection& connection) : connection_(connection), http2_(connection) {}
  std::optional<std::string> next() override {
    const auto request = http2_.readRequest();
    if (!request) {
      return std::nullopt;
    }
    stream_ = request->stream;
    return request->path;
  }
  void answer(const std::string& body) override { http2_.answer(stream_, 200, body); }
  void cutHeaders() override { http2_.beginHeaders(stream_); }
  void cutBody() override { http2_.answerInPart(stream_, "10", "abc"); }
  RawConnection& connection() override { return connection_; }
  Http2Connection& http2() { return http2_; }
  std::int32_t stream() const { return stream_; }

 private:
  RawConnection& connection_;
  Http2Connection http2_;
  std::int32_t stream_ = 0;
};

// A clock that only the test moves.
class ManualClock {
 public:
  using Clock = std::chrono::steady_clock;
  Clock::time_point now() const { return Clock::time_point(Clock::duration(time_)); }
  void advance(Clock::duration by) { time_ += by.count(); }

 private:
  std::atomic<Clock::rep> time_ = Clock::now().time_since_epoch().count();
};

// A server, and a session with the given number of kept connections to it, each after one request.
class Line {
 public:
  using Behaviour = std::function<void(Peer&, const std::string& path)>;

  Line(Wire wire, int kept) : wire_(wire), kept_(kept), allWarm_(wire == Wire::http2 ? 1 : kept) {
    std::ofstream(directory_.path() / "ca.pem") << authority_.certificate();
    if (wire == Wire::http2) {
      agreeOn("h2", tls_.get());
    }
    CurlHttpSession::Options options;
    options.extraCaFile = (directory_.path() / "ca.pem").string();
    options.now = [this] { return clock.now(); };
    session_ = std::make_unique<CurlHttpSession>(options);
    server_ = std::make_unique<RawServer>([this](RawConnection& connection) { serve(connection); },
                                          wire == Wire::plain ? nullptr : tls_.get());
  }

  // Handles the requests on kept connections. All others are answered "fine".
  void onKept(Behaviour behaviour) { set(onKept_, std::move(behaviour)); }
  // Handles the requests on every connection.
  void onEvery(Behaviour behaviour) { set(onEvery_, std::move(behaviour)); }

  // HTTP/1.1: sent on each connection once the client has taken the first answer. The server keeps reading.
  void sendAfterFirstAnswer(std::string bytes) { unasked_ = std::move(bytes); }
  void waitUntilSent() {
    mayBeSent_.count_down();
    allSent_.wait();
  }

  void warmUp() {
    WatchedSession watched(*session_);
    int answered = 0;
    for (int i = 0; i < kept_; ++i) {
      watched.dataTask(get(url("/warm")),
                       [&](const DataTaskResult& result) { answered += result.data == "fine"; });
    }
    ASSERT_TRUE(watched.waitUntil([&] { return answered == kept_; }));
    ASSERT_EQ(server_->connections(), wire_ == Wire::http2 ? 1 : kept_);
  }

  HttpSession& session() { return *session_; }
  RawServer& server() { return *server_; }
  std::string url(const std::string& path) const {
    return server_->url(path, wire_ == Wire::plain ? "127.0.0.1" : "localhost");
  }
  HttpRequest request(const std::string& method, const std::string& path) const {
    HttpRequest made = get(url(path));
    made.method = method;
    if (method == "POST" || method == "PUT") {
      made.body = "{}";
    }
    return made;
  }
  DataTaskResult fetch(const std::string& method, const std::string& path) {
    return quillmar::fetch(*session_, request(method, path));
  }

  // How many requests for this path reached the server.
  std::ptrdiff_t arrivals(const std::string& path) const {
    const std::scoped_lock lock(mutex_);
    return std::ranges::count(arrived_, path);
  }

  ManualClock clock;

 private:
  void serve(RawConnection& connection) {
    if (wire_ == Wire::http2) {
      Http2Peer peer(connection);
      serveRequests(peer);
    } else {
      Http1Peer peer(connection);
      serveRequests(peer);
    }
  }

  void serveRequests(Peer& peer) {
    bool isKept = false;
    while (const auto path = peer.next()) {
      if (*path == "/warm" && wire_ != Wire::http2) {
        allWarm_.arrive_and_wait();
      }
      if (const auto behaviour = take(*path, isKept)) {
        behaviour(peer, *path);
      } else {
        peer.answer("fine");
      }
      if (*path == "/warm" && !unasked_.empty()) {
        mayBeSent_.wait();
        peer.connection().send(unasked_);
        allSent_.count_down();
      }
      isKept = isKept || *path == "/warm";
    }
  }

  void set(Behaviour& which, Behaviour behaviour) {
    const std::scoped_lock lock(mutex_);
    which = std::move(behaviour);
  }

  Behaviour take(const std::string& path, bool isKept) {
    const std::scoped_lock lock(mutex_);
    arrived_.push_back(path);
    return onEvery_ || !isKept ? onEvery_ : onKept_;
  }

  const Wire wire_;
  const int kept_;
  const TestAuthority authority_;
  const TlsContext tls_ = authority_.context();
  const TemporaryDirectory directory_;
  std::latch allWarm_;
  std::string unasked_;
  std::latch mayBeSent_{1};
  std::latch allSent_{kept_};
  mutable std::mutex mutex_;
  Behaviour onKept_;
  Behaviour onEvery_;
  std::vector<std::string> arrived_;
  // Declared first, so that the session is destroyed before it.
  std::unique_ptr<RawServer> server_;
  std::unique_ptr<CurlHttpSession> session_;
};

void end(Peer& peer) { peer.connection().interrupt(); }
void reset(Peer& peer) { peer.connection().reset(); }
void sayGoodbye(Peer& peer) { peer.connection().closeNotify(); }

using Case = std::tuple<Wire, int, std::string>;

std::string nameOf(const testing::TestParamInfo<Case>& test) {
  const auto& [wire, kept, method] = test.param;
  return nameOf(wire) + std::to_string(kept) + method;
}

class KeptConnections : public testing::TestWithParam<Case> {
 protected:
  KeptConnections() : line(std::get<0>(GetParam()), std::get<1>(GetParam())) {}
  void SetUp() override { ASSERT_NO_FATAL_FAILURE(line.warmUp()); }

  Wire wire() const { return std::get<0>(GetParam()); }
  int kept() const { return std::get<1>(GetParam()); }
  const std::string& method() const { return std::get<2>(GetParam()); }
  bool isGet() const { return method() == "GET"; }

  void expectLost(const DataTaskResult& result) {
    EXPECT_EQ(result.error, std::optional<Error>(TransportError{Kind::networkConnectionLost, {}}));
    EXPECT_FALSE(result.data);
    EXPECT_FALSE(result.response);
  }
  void expectLostAndSentOnce() {
    expectLost(line.fetch(method(), "/act"));
    EXPECT_EQ(line.arrivals("/act"), 1);
  }
  // What must happen to a request whose kept connection ends before the answer begins.
  void expectOnlyAGetIsRepeated() {
    if (isGet()) {
      EXPECT_EQ(line.fetch(method(), "/act").data, "fine");
      EXPECT_EQ(line.arrivals("/act"), 2);
    } else {
      expectLostAndSentOnce();
    }
  }
  void expectNextIsFine() {
    line.onKept({});
    EXPECT_EQ(line.fetch(method(), "/next").data, "fine");
    EXPECT_EQ(line.arrivals("/next"), 1);
  }

  Line line;
};

class KeptHttp1Connections : public KeptConnections {};
class KeptHttp2Connections : public KeptConnections {};

TEST_P(KeptConnections, only_a_get_is_repeated_after_its_connection_closed) {
  line.onKept([](Peer& peer, const std::string&) { end(peer); });
  expectOnlyAGetIsRepeated();
  expectNextIsFine();
}

TEST_P(KeptConnections, only_a_get_is_repeated_after_a_reset) {
  line.onKept([](Peer& peer, const std::string&) { reset(peer); });
  expectOnlyAGetIsRepeated();
  expectNextIsFine();
}

TEST_P(KeptConnections, a_get_is_repeated_once_only) {
  line.onEvery([](Peer& peer, const std::string&) { end(peer); });
  expectLost(line.fetch(method(), "/act"));
  EXPECT_EQ(line.arrivals("/act"), isGet() ? 2 : 1);
  line.onEvery({});
  expectNextIsFine();
}

TEST_P(KeptConnections, an_answer_cut_in_its_body_is_an_error_and_not_repeated) {
  line.onKept([](Peer& peer, const std::string&) {
    peer.cutBody();
    end(peer);
  });
  expectLostAndSentOnce();
  expectNextIsFine();
}

TEST_P(KeptHttp1Connections, an_answer_with_cut_headers_is_an_error) {
  line.onKept([](Peer& peer, const std::string&) {
    peer.cutHeaders();
    end(peer);
  });
  expectLostAndSentOnce();
  expectNextIsFine();
}

TEST_P(KeptHttp1Connections, a_close_notify_does_not_complete_cut_headers) {
  line.onKept([](Peer& peer, const std::string&) {
    peer.cutHeaders();
    sayGoodbye(peer);
  });
  expectLostAndSentOnce();
  expectNextIsFine();
}

// libcurl reports no partial HTTP/2 headers, so the connection looks closed before the answer.
TEST_P(KeptHttp2Connections, cut_headers_are_no_answer) {
  line.onKept([](Peer& peer, const std::string&) {
    peer.cutHeaders();
    sayGoodbye(peer);
  });
  expectOnlyAGetIsRepeated();
  expectNextIsFine();
}

TEST_P(KeptHttp2Connections, only_a_get_is_repeated_after_a_refused_stream) {
  line.onKept([](Peer& peer, const std::string&) {
    auto& http2 = dynamic_cast<Http2Peer&>(peer);
    http2.http2().resetStream(http2.stream(), NGHTTP2_REFUSED_STREAM);
  });
  expectOnlyAGetIsRepeated();
  expectNextIsFine();
}

TEST_P(KeptHttp2Connections,
       a_server_that_goes_away_without_looking_gets_no_second_request_unless_it_is_a_get) {
  line.onKept([](Peer& peer, const std::string&) { dynamic_cast<Http2Peer&>(peer).http2().goAway(0); });
  expectOnlyAGetIsRepeated();
  expectNextIsFine();
}

// HTTP/1.1 matches answers to requests by order only.

TEST_P(KeptHttp1Connections, bytes_after_the_body_do_not_reach_the_next_answer) {
  line.onKept([](Peer& peer, const std::string&) {
    peer.connection().send("HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\n");
    peer.connection().send("fine" + httpResponse(200, "smuggled"));
  });
  for (int i = 0; i < kept(); ++i) {
    EXPECT_EQ(line.fetch(method(), "/act").data, "fine");
  }
  expectNextIsFine();
}

TEST_P(KeptHttp1Connections, a_connection_with_unrequested_bytes_is_not_reused) {
  for (const std::string& bytes :
       {httpResponse(200, "smuggled"), "rest"s, "HTTP/1.1 100 Continue\r\n\r\n"s, "\r\n"s}) {
    SCOPED_TRACE(bytes);
    Line spoiled(wire(), kept());
    spoiled.sendAfterFirstAnswer(bytes);
    ASSERT_NO_FATAL_FAILURE(spoiled.warmUp());
    spoiled.waitUntilSent();
    spoiled.onKept([](Peer& peer, const std::string&) { peer.answer("kept"); });
    for (int i = 0; i < kept(); ++i) {
      const std::string path = "/" + std::to_string(i);
      EXPECT_EQ(spoiled.fetch(method(), path).data, "fine");
      EXPECT_EQ(spoiled.arrivals(path), 1);
    }
  }
}

TEST_P(KeptHttp1Connections, only_a_get_reuses_a_long_idle_connection) {
  line.onKept([](Peer& peer, const std::string&) { peer.answer("kept"); });
  const auto longestIdle = CurlHttpSession::Options().longestIdle;
  line.clock.advance(longestIdle);
  EXPECT_EQ(line.fetch(method(), "/act").data, "kept");
  line.clock.advance(longestIdle + std::chrono::seconds(1));
  for (int i = 0; i < kept(); ++i) {
    EXPECT_EQ(line.fetch(method(), "/idle").data, isGet() ? "kept" : "fine");
  }
  EXPECT_EQ(line.arrivals("/idle"), kept());
}

TEST_P(KeptHttp2Connections, are_reused_however_long_they_were_idle) {
  line.onKept([](Peer& peer, const std::string&) { peer.answer("kept"); });
  line.clock.advance(std::chrono::hours(1));
  EXPECT_EQ(line.fetch(method(), "/act").data, "kept");
}

const auto methods = testing::Values("GET", "POST", "PUT", "DELETE");
const auto counts = testing::Values(1, 6);

INSTANTIATE_TEST_SUITE_P(Wires, KeptConnections,
                         testing::Combine(testing::Values(Wire::plain, Wire::tls, Wire::http2), counts,
                                          methods),
                         [](const auto& test) { return nameOf(test); });
INSTANTIATE_TEST_SUITE_P(Wires, KeptHttp1Connections,
                         testing::Combine(testing::Values(Wire::plain, Wire::tls), counts, methods),
                         [](const auto& test) { return nameOf(test); });
INSTANTIATE_TEST_SUITE_P(Wires, KeptHttp2Connections,
                         testing::Combine(testing::Values(Wire::http2), counts, methods),
                         [](const auto& test) { return nameOf(test); });

// A server that claims HTTP/2 without ALPN.
TEST(UnagreedHttp2, is_a_bad_answer_and_delays_no_other_request) {
  for (const Wire wire : {Wire::plain, Wire::tls}) {
    for (const std::string& version : {"HTTP/2"s, "HTTP/2.0"s, "HTTP/3"s}) {
      SCOPED_TRACE(nameOf(wire) + ' ' + version);
      Line line(wire, 1);
      line.onEvery([&](Peer& peer, const std::string& path) {
        if (path == "/claims") {
          peer.connection().send(version + " 200 OK\r\nContent-Length: 4\r\n\r\nfine");
        } else {
          peer.answer("fine");
        }
      });
      WatchedSession watched(line.session());
      std::vector<DataTaskResult> claims;
      std::vector<DataTaskResult> others;
      for (int i = 0; i < 6; ++i) {
        const bool odd = i % 2 != 0;
        watched.dataTask(line.request("POST", odd ? "/other" : "/claims"),
                         [&results = odd ? others : claims](DataTaskResult result) {
                           results.push_back(std::move(result));
                         });
      }
      EXPECT_TRUE(watched.waitUntil([&] { return claims.size() == 3 && others.size() == 3; }));
      for (const auto& result : claims) {
        EXPECT_EQ(result.error, std::optional<Error>(TransportError{Kind::badServerResponse, {}}));
      }
      for (const auto& result : others) {
        EXPECT_EQ(result.data, "fine");
      }
      EXPECT_EQ(line.arrivals("/claims"), 3);
      EXPECT_EQ(line.arrivals("/other"), 3);
    }
  }
}

TEST(RefusedStream, does_not_affect_others_on_its_connection) {
  Line line(Wire::http2, 1);
  ASSERT_NO_FATAL_FAILURE(line.warmUp());
  constexpr std::size_t count = 6;
  std::vector<std::pair<std::int32_t, std::string>> waiting;
  line.onEvery([&](Peer& peer, const std::string& path) {
    auto& connection = dynamic_cast<Http2Peer&>(peer);
    waiting.emplace_back(connection.stream(), path);
    if (waiting.size() < count) {
      return;
    }
    for (const auto& [stream, asked] : waiting) {
      if (asked == "/refused") {
        connection.http2().resetStream(stream, NGHTTP2_REFUSED_STREAM);
      } else {
        connection.http2().answer(stream, 200, "fine");
      }
    }
  });
  WatchedSession watched(line.session());
  std::size_t lost = 0;
  std::size_t answered = 0;
  for (std::size_t i = 0; i < count; ++i) {
    watched.dataTask(line.request("POST", i % 2 == 0 ? "/refused" : "/act"),
                     [&](const DataTaskResult& result) {
                       lost += result.error ? 1 : 0;
                       answered += result.data == "fine" ? 1 : 0;
                     });
  }
  EXPECT_TRUE(watched.waitUntil([&] { return lost + answered == count; }));
  EXPECT_EQ(lost, count / 2);
  EXPECT_EQ(line.arrivals("/refused"), 3);
}

}  // namespace
}  // namespace quillmar
