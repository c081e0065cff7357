// What becomes of requests on connections that were kept from earlier ones, over each kind of connection.

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

// A server's end of a connection, whatever is spoken there.
class Peer {
 public:
  Peer() = default;
  Peer(const Peer&) = delete;
  Peer& operator=(const Peer&) = delete;
  virtual ~Peer() = default;

  // The path of the next request; nothing when the client has gone.
  virtual std::optional<std::string> next() = 0;
  // These are about the request that came last.
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

// A clock that stands still until it is told to go on.
class ManualClock {
 public:
  using Clock = std::chrono::steady_clock;
  Clock::time_point now() const { return Clock::time_point(Clock::duration(time_)); }
  void advance(Clock::duration by) { time_ += by.count(); }

 private:
  std::atomic<Clock::rep> time_ = Clock::now().time_since_epoch().count();
};

// A server and a session with as many connections to it as were wanted. Each of them answered one request.
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

  // What the server does with each request from now on that comes on a connection of the warm-up. Others are
  // answered "fine".
  void onKept(Behaviour behaviour) { set(onKept_, std::move(behaviour)); }
  // The same on any connection.
  void onEvery(Behaviour behaviour) { set(onEvery_, std::move(behaviour)); }

  // What the server sends after the first answer on each connection, in HTTP/1.1, as soon as that answer has
  // been taken. It reads on afterwards.
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

  // How often a request for this path has reached the server.
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
  // The server first, so that the session ends before it.
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
  // What happens to a request whose kept connection ends before an answer begins.
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

TEST_P(KeptConnections, a_request_that_meets_the_end_of_its_connection_is_not_repeated_unless_it_is_a_get) {
  line.onKept([](Peer& peer, const std::string&) { end(peer); });
  expectOnlyAGetIsRepeated();
  expectNextIsFine();
}

TEST_P(KeptConnections, a_request_that_meets_a_reset_is_not_repeated_unless_it_is_a_get) {
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

TEST_P(KeptConnections, an_answer_that_ends_in_its_body_is_lost_and_nothing_is_repeated) {
  line.onKept([](Peer& peer, const std::string&) {
    peer.cutBody();
    end(peer);
  });
  expectLostAndSentOnce();
  expectNextIsFine();
}

TEST_P(KeptHttp1Connections, an_answer_whose_headers_are_cut_is_none) {
  line.onKept([](Peer& peer, const std::string&) {
    peer.cutHeaders();
    end(peer);
  });
  expectLostAndSentOnce();
  expectNextIsFine();
}

TEST_P(KeptHttp1Connections, a_goodbye_does_not_make_cut_headers_whole) {
  line.onKept([](Peer& peer, const std::string&) {
    peer.cutHeaders();
    sayGoodbye(peer);
  });
  expectLostAndSentOnce();
  expectNextIsFine();
}

// libcurl shows no part of a cut HTTP/2 header, so the connection looks dead before an answer.
TEST_P(KeptHttp2Connections, cut_headers_are_no_answer) {
  line.onKept([](Peer& peer, const std::string&) {
    peer.cutHeaders();
    sayGoodbye(peer);
  });
  expectOnlyAGetIsRepeated();
  expectNextIsFine();
}

TEST_P(KeptHttp2Connections, a_refused_stream_is_not_repeated_unless_it_is_a_get) {
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

// In HTTP/1.1 nothing but their order tells answers apart.

TEST_P(KeptHttp1Connections, a_body_that_goes_on_after_its_length_does_not_reach_the_next_answer) {
  line.onKept([](Peer& peer, const std::string&) {
    peer.connection().send("HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\n");
    peer.connection().send("fine" + httpResponse(200, "smuggled"));
  });
  for (int i = 0; i < kept(); ++i) {
    EXPECT_EQ(line.fetch(method(), "/act").data, "fine");
  }
  expectNextIsFine();
}

TEST_P(KeptHttp1Connections, a_connection_on_which_bytes_came_unasked_is_not_used_again) {
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

TEST_P(KeptHttp1Connections, a_request_that_changes_something_avoids_a_connection_that_was_idle_for_long) {
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

TEST_P(KeptHttp2Connections, however_long_they_were_idle_they_are_used) {
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

// A server that claims HTTP/2 without an agreement on it.
TEST(UnagreedHttp2, is_a_bad_answer_and_holds_up_no_other_request) {
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

TEST(RefusedStream, disturbs_no_other_on_its_connection) {
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
