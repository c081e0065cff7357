// Runs every call against every server fault over a real connection. Checks how the call ends, that nothing
// is sent twice, and that the next call succeeds. Time-outs use the test's own clock.

#include <algorithm>
#include <atomic>
#include <cctype>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/common/curl_http_session.h"
#include "testing/settling_http_session.h"
#include "tests/client/call_table.h"
#include "tests/platform/fetching.h"
#include "tests/platform/raw_server.h"

namespace quillmar {
namespace {

using namespace std::string_literals;

// What the server does after sending the bytes.
enum class Then { closes, resets, waits };

struct Fault {
  std::string name;
  std::string bytes;
  Then then = Then::waits;
  // How every call ends. nullopt: by the call's rules for the status, or with the body of a success.
  std::optional<Kind> kind = std::nullopt;
  int status = 200;
  std::optional<std::string> words = std::nullopt;
  // How many requests reach the server.
  int arrivals = 1;
};

std::string ok(const std::string& body) { return httpResponse(200, body); }
std::string headers(const std::string& lines) { return "HTTP/1.1 200 OK\r\n" + lines + "\r\n"; }
std::string chunked(const std::string& body) { return headers("Transfer-Encoding: chunked\r\n") + body; }
std::string times(int count, const std::string& text) {
  std::string all;
  for (int i = 0; i < count; ++i) {
    all += text;
  }
  return all;
}

constexpr auto lost = Kind::networkConnectionLost;
constexpr auto bad = Kind::badServerResponse;
constexpr int oneMebibyte = 1 << 20;

// The connection ends too early.
std::vector<Fault> ends() {
  return {
      {"nothing and the end", "", Then::closes, lost},
      {"nothing and a reset", "", Then::resets, lost},
      {"one letter", "H", Then::closes, lost},
      {"half the version", "HTTP/1.1", Then::closes, lost},
      {"a status line without its end", "HTTP/1.1 200 OK", Then::closes, lost},
      {"a status line", "HTTP/1.1 200 OK\r\n", Then::closes, lost},
      {"a status line and a reset", "HTTP/1.1 200 OK\r\n", Then::resets, lost},
      {"half a header's name", "HTTP/1.1 200 OK\r\nContent-Le", Then::closes, lost},
      {"half a header's value", "HTTP/1.1 200 OK\r\nContent-Type: appl", Then::closes, lost},
      {"headers without the empty line", "HTTP/1.1 200 OK\r\nContent-Length: 0\r\n", Then::closes, lost},
      {"half of the empty line", "HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r", Then::closes, lost},
      {"a 204 cut in its headers", "HTTP/1.1 204 No Content\r\nX: y", Then::closes, lost},
      {"a 401 cut in its headers", "HTTP/1.1 401 Unauthorized\r\nContent-Le", Then::closes, lost},
      {"a 401 cut in its body", "HTTP/1.1 401 Unauthorized\r\nContent-Length: 9\r\n\r\n{", Then::closes,
       lost},
      {"a 302 cut in its headers", "HTTP/1.1 302 Found\r\nLocation: /else", Then::closes, lost},
      {"a 302 cut after its place", "HTTP/1.1 302 Found\r\nLocation: /else\r\n", Then::closes, lost},
      {"a 500 cut in its headers", "HTTP/1.1 500 Oh\r\nContent-Le", Then::closes, lost},
      {"a 500 cut in its body", "HTTP/1.1 500 Oh\r\nContent-Length: 9\r\n\r\n{", Then::closes, lost},
      {"no byte of the body", headers("Content-Length: 10\r\n"), Then::closes, lost},
      {"half the body", headers("Content-Length: 10\r\n") + "{\"a\"", Then::closes, lost},
      {"half the body and a reset", headers("Content-Length: 10\r\n") + "{\"a\"", Then::resets, lost},
      {"no chunk", chunked(""), Then::closes, lost},
      {"half a chunk's length", chunked("1"), Then::closes, lost},
      {"half a chunk", chunked("5\r\nab"), Then::closes, lost},
      {"no last chunk", chunked("2\r\n{}\r\n"), Then::closes, lost},
      {"a last chunk without its end", chunked("2\r\n{}\r\n0\r\n"), Then::closes, lost},
      // libcurl reports a broken chunk and a broken connection with the same error.
      {"a chunk's length of letters", chunked("zz\r\n{}\r\n"), Then::waits, lost},
      {"a chunk's length without end", chunked(std::string(40, 'f') + "\r\n"), Then::waits, lost},
      {"an interim answer only", "HTTP/1.1 100 Continue\r\n\r\n", Then::closes, lost},
      {"hints only", "HTTP/1.1 103 Early Hints\r\nLink: x\r\n\r\n", Then::closes, lost},
      {"an interim answer and half a status line", "HTTP/1.1 100 Continue\r\n\r\nHTTP/1.", Then::closes,
       lost},
  };
}

std::vector<Fault> nonsense() {
  return {
      {"a word", "hello\r\n", Then::closes, bad},
      {"bytes", "\0\1\2\3\xff\xfe"s, Then::closes, bad},
      {"a page without a head", "<html></html>", Then::closes, bad},
      {"a mail server", "220 mail.example ESMTP\r\n", Then::waits, bad},
      {"a shell server", "SSH-2.0-OpenSSH_9.2\r\n", Then::waits, bad},
      {"a radio", "ICY 200 OK\r\n\r\n", Then::waits, bad},
      {"an alert of TLS", "\x15\x03\x03\0\x02\x02\x28"s, Then::closes, bad},
      {"a version that is none", "HTTP/9.9 200 OK\r\n\r\n", Then::waits, bad},
      {"HTTP/2 that was not agreed on", "HTTP/2 200\r\nContent-Length: 2\r\n\r\n{}", Then::waits, bad},
      {"HTTP/3 that was not agreed on", "HTTP/3 200\r\nContent-Length: 2\r\n\r\n{}", Then::waits, bad},
      {"a status of letters", "HTTP/1.1 abc Oh\r\n\r\n", Then::waits, bad},
      {"a length below zero", headers("Content-Length: -5\r\n"), Then::waits, bad},
      {"a length of letters", headers("Content-Length: ten\r\n"), Then::waits, bad},
      {"a length without end", headers("Content-Length: " + std::string(30, '9') + "\r\n"), Then::waits, bad},
      {"a length over the limit", headers("Content-Length: 8388609\r\n"), Then::waits, bad},
      {"chunks over the limit", chunked(times(9, "100000\r\n" + std::string(oneMebibyte, ' ') + "\r\n")),
       Then::waits, bad},
      {"a body without end over the limit", headers("") + std::string(9 * oneMebibyte, ' '), Then::waits,
       bad},
      {"a long header", "HTTP/1.1 200 OK\r\nX: " + std::string(400'000, 'x') + "\r\n\r\n", Then::waits, bad},
      {"many headers", headers(times(20'000, "X-Header: some value\r\n")), Then::waits, bad},
      {"many interim answers", times(20'000, "HTTP/1.1 100 Continue\r\n\r\n"), Then::waits, bad},
      {"a header with a NUL", headers("X: a\0b\r\n"s), Then::waits, bad},
      {"a header without a colon", headers("Content-Length 2\r\n") + "{}", Then::waits, bad},
  };
}

std::vector<Fault> redirects() {
  const auto to = [](int status, const std::string& place) {
    return "HTTP/1.1 " + std::to_string(status) + " Found\r\nLocation: " + place +
           "\r\nContent-Length: 0\r\n\r\n";
  };
  return {
      {"a turn to another host in clear", to(302, "http://example.com/"), Then::waits,
       Kind::appTransportSecurityRequiresSecureConnection},
      {"a turn to a file", to(307, "file:///etc/passwd"), Then::waits, Kind::unsupportedURL},
      {"a turn to another protocol", to(301, "ftp://127.0.0.1/"), Then::waits, Kind::unsupportedURL},
      {"a turn to no address", to(308, "http://[bad/"), Then::waits, Kind::badURL},
  };
}

std::vector<Fault> silence() {
  constexpr auto late = Kind::timedOut;
  return {
      {"silence", "", Then::waits, late},
      {"silence in the status line", "HTTP/1.1 2", Then::waits, late},
      {"silence in the headers", "HTTP/1.1 200 OK\r\nContent-Le", Then::waits, late},
      {"silence before the body", headers("Content-Length: 2\r\n"), Then::waits, late},
      {"silence in the body", headers("Content-Length: 2\r\n") + "{", Then::waits, late},
      {"silence in a chunk", chunked("5\r\nab"), Then::waits, late},
      {"silence before the last chunk", chunked("2\r\n{}\r\n"), Then::waits, late},
      {"silence after an interim answer", "HTTP/1.1 100 Continue\r\n\r\n", Then::waits, late},
      {"silence in a 401", "HTTP/1.1 401 Unauthorized\r\nContent-Length: 2\r\n\r\n{", Then::waits, late},
  };
}

// Complete but invalid answers. A call without a record ignores the body of a success.
std::vector<Fault> badAnswers() {
  return {
      {"an empty body", ok("")},
      {"a page", ok("<html><body>Sign in to the network</body></html>")},
      {"half a document", ok(R"({"id":"d1","name")")},
      {"a document and more", ok("{}{}")},
      {"a document that is deep", ok(std::string(100'000, '['))},
      {"bytes that are no text", ok("{\"id\":\"\xff\xfe\"}")},
      {"a text", ok("\"fine\"")},
      {"a number", ok("5")},
      {"a list", ok("[]")},
      {"a document of another form", ok("{\"error\":5,\"valid\":\"x\"")},
      {"a body in chunks that is none", chunked("0\r\n\r\n")},
      {"a 500 with a page", httpResponse(500, "<html>"), Then::waits, {}, 500},
      {"a 500 with words", httpResponse(500, R"({"error":"Oh"})"), Then::waits, {}, 500, "Oh"},
      {"a 503 without a body", httpResponse(503, ""), Then::waits, {}, 503},
      {"a 429 with words", httpResponse(429, R"({"error":"Slow"})"), Then::waits, {}, 429, "Slow"},
      {"a 403 with a page", httpResponse(403, "<html>"), Then::waits, {}, 403},
      {"a 404 with a page", httpResponse(404, "<html>"), Then::waits, {}, 404},
      {"a 302 without a place", httpResponse(302, ""), Then::waits, {}, 302},
      {"a status that nobody knows", httpResponse(599, ""), Then::waits, {}, 599},
  };
}

std::vector<Fault> allFaults() {
  std::vector<Fault> all;
  for (const auto& some : {ends(), nonsense(), redirects(), silence(), badAnswers()}) {
    all.insert(all.end(), some.begin(), some.end());
  }
  return all;
}

void PrintTo(const Fault& fault, std::ostream* out) { *out << fault.name; }

std::vector<ContractCall> everyCall() {
  std::vector<ContractCall> all = allCalls();
  all.push_back(refreshCall());
  return all;
}

// Answers every call correctly but one, and counts the requests.
class FaultyServer {
 public:
  // The next request gets this fault, all others get `answer`.
  void arm(const Fault& fault, std::string answer) {
    const std::scoped_lock lock(mutex_);
    fault_ = &fault;
    answer_ = std::move(answer);
    arrivals_ = 0;
    done_ = false;
  }
  // Waits until the fault's bytes are sent.
  void waitUntilDone() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return done_; });
  }
  int arrivals() const {
    const std::scoped_lock lock(mutex_);
    return arrivals_;
  }
  std::string url(std::string_view path) const { return server_.url(path); }

 private:
  struct Turn {
    const Fault* fault = nullptr;
    std::string answer;
  };

  void serve(RawConnection& connection) {
    while (const auto request = connection.readRequest()) {
      const bool isOurs = request->find(" /api/v1/") == std::string::npos;
      const Turn turn = isOurs ? Turn{nullptr, "fine"} : takeTurn();
      if (!turn.fault) {
        connection.send(ok(turn.answer));
      } else if (!misbehave(connection, *turn.fault)) {
        return;
      }
    }
  }

  Turn takeTurn() {
    const std::scoped_lock lock(mutex_);
    ++arrivals_;
    return {std::exchange(fault_, nullptr), answer_};
  }

  // Whether the connection stays open.
  bool misbehave(RawConnection& connection, const Fault& fault) {
    connection.send(fault.bytes);
    if (fault.then == Then::resets) {
      connection.reset();
    } else if (fault.then == Then::closes) {
      connection.closeNotify();
    }
    {
      const std::scoped_lock lock(mutex_);
      done_ = true;
      changed_.notify_all();
    }
    return fault.then == Then::waits;
  }

  mutable std::mutex mutex_;
  std::condition_variable changed_;
  const Fault* fault_ = nullptr;
  std::string answer_;
  int arrivals_ = 0;
  bool done_ = false;
  RawServer server_{[this](RawConnection& connection) { serve(connection); }};
};

// A session that can be recreated, so that it has no open connection.
class RenewableSession final : public HttpSession {
 public:
  RenewableSession(CurlHttpSession::Options options, VirtualDispatch& dispatch)
      : options_(std::move(options)), dispatch_(dispatch) {
    renew();
  }
  void renew() {
    settling_.reset();
    network_ = std::make_unique<CurlHttpSession>(options_);
    settling_.emplace(*network_, &dispatch_);
  }
  void dataTask(HttpRequest request, Completion completion) override {
    settling_->dataTask(std::move(request), std::move(completion));
  }
  void beginBatch() override { settling_->beginBatch(); }
  void endBatch() override { settling_->endBatch(); }

 private:
  const CurlHttpSession::Options options_;
  VirtualDispatch& dispatch_;
  std::unique_ptr<CurlHttpSession> network_;
  std::optional<SettlingHttpSession> settling_;
};

class FaultTable : public ClientTest, public testing::WithParamInterface<Fault> {
 protected:
  FaultTable() {
    service =
        NetworkService::make(session_, settings, log, platform.dispatch, Deployments::all(server.url("")));
  }

  // Runs the call; its first request gets the fault.
  Outcome<void> run(const ContractCall& call) {
    server.arm(GetParam(), call.answer);
    auto ended = outcome<void>();
    call.start(*service, ended.completion());
    server.waitUntilDone();
    if (GetParam().kind == Kind::timedOut) {
      letTimePass();
    }
    settle();
    return ended;
  }
  bool isFine(const ContractCall& call) {
    auto ended = outcome<void>();
    call.start(*service, ended.completion());
    settle();
    return ended.succeeded();
  }
  // Opens a connection that is then kept alive.
  void poke() { EXPECT_EQ(fetch(session_, get(server.url("/poke"))).data, "fine"); }
  // Sends a request before and after: the first ensures that earlier bytes were read, the second wakes the
  // session up.
  void letTimePass() {
    poke();
    time_ += Clock::duration(std::chrono::seconds(61)).count();
    poke();
  }
  // Whether the request is sent again: the fault looks like a dead kept-alive connection.
  bool isRepeated(const ContractCall& call, bool kept) const {
    const bool beganAnAnswer = GetParam().bytes.find('\n') != std::string::npos;
    return kept && call.method == "GET" && GetParam().kind == lost && !beganAnAnswer;
  }

  void expectTold(const ContractCall& call, const Outcome<void>& ended) {
    const Fault& fault = GetParam();
    if (fault.kind) {
      const auto* error = ended.failed() ? ended.error().as<TransportError>() : nullptr;
      ASSERT_TRUE(error) << (ended.failed() ? ended.errorText() : "a success");
      EXPECT_EQ(error->kind, *fault.kind) << ended.errorText();
    } else if (fault.status == 200) {
      EXPECT_EQ(ended.failed() ? ended.errorText() : "", call.answer.empty() ? "" : malformedText);
    } else if (const auto expected = refusal(call, fault.status, fault.words)) {
      EXPECT_EQ(ended.error(), *expected);
    } else {
      EXPECT_EQ(ended.errorText(), fault.words ? missingText : malformedText);
    }
  }

  void expectAllCallsEndWell(bool kept) {
    for (const ContractCall& call : everyCall()) {
      SCOPED_TRACE(call.name + (kept ? " on a kept connection" : " on a new connection"));
      session_.renew();
      if (kept) {
        poke();
      }
      const auto ended = run(call);
      EXPECT_EQ(ended.calls(), 1);
      if (isRepeated(call, kept)) {
        EXPECT_TRUE(ended.succeeded());
        EXPECT_EQ(server.arrivals(), 2);
      } else {
        expectTold(call, ended);
        EXPECT_EQ(server.arrivals(), GetParam().arrivals);
      }
      EXPECT_TRUE(isFine(call)) << "the next call";
    }
  }

  FaultyServer server;

 private:
  using Clock = std::chrono::steady_clock;

  CurlHttpSession::Options options() {
    CurlHttpSession::Options made;
    made.now = [this] { return Clock::time_point(Clock::duration(time_)); };
    return made;
  }

  std::atomic<Clock::rep> time_ = 0;
  RenewableSession session_{options(), platform.dispatch};
};

TEST_P(FaultTable, ends_each_call_with_its_error_on_a_new_connection) { expectAllCallsEndWell(false); }

TEST_P(FaultTable, ends_each_call_with_its_error_on_a_kept_alive_connection) { expectAllCallsEndWell(true); }

INSTANTIATE_TEST_SUITE_P(Faults, FaultTable, testing::ValuesIn(allFaults()), [](const auto& test) {
  std::string name = test.param.name;
  std::ranges::replace_if(
      name, [](char letter) { return std::isalnum(static_cast<unsigned char>(letter)) == 0; }, '_');
  return name;
});

}  // namespace
}  // namespace quillmar
