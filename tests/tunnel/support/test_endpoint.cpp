#include "tests/tunnel/support/test_endpoint.h"

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <utility>

#include "sandbox/http/certificates.h"
#include "tests/sandbox/support/loopback.h"
#include "tests/sandbox/support/run_command.h"

namespace quillmar::tunnel::test {
namespace {

constexpr std::size_t mostRequests = 10'000;

struct Use {
  TestEndpoint* endpoint;
  TestPeer* peer;
  const TestEndpoint::Answering* answering;
};

nghttp2_nv field(const std::string& name, const std::string& value) {
  const auto bytes = [](const std::string& text) {
    return reinterpret_cast<std::uint8_t*>(const_cast<char*>(text.data()));
  };
  return {bytes(name), bytes(value), name.size(), value.size(), NGHTTP2_NV_FLAG_NONE};
}

int chooseProtocol(SSL*, const unsigned char** chosen, unsigned char* length, const unsigned char*,
                   unsigned int, void* speaks) {
  static constexpr std::array<unsigned char, 2> http2{'h', '2'};
  if (*static_cast<const std::atomic<TestEndpoint::Speaks>*>(speaks) == TestEndpoint::Speaks::http1) {
    return SSL_TLSEXT_ERR_NOACK;
  }
  *chosen = http2.data();
  *length = http2.size();
  return SSL_TLSEXT_ERR_OK;
}

std::filesystem::path newDirectory() {
  std::string name = (std::filesystem::temp_directory_path() / "quillmar-endpoint-XXXXXX").string();
  return ::mkdtemp(name.data()) != nullptr ? name : std::string();
}

}  // namespace

void TestPeer::answer(std::int32_t stream, const std::string& body, const Fields& more,
                      const std::string& status, const std::string& contentType) {
  streams_[stream].body = body;
  Fields all{{":status", status}};
  if (!contentType.empty()) {
    all.emplace_back("content-type", contentType);
  }
  all.insert(all.end(), more.begin(), more.end());
  std::vector<nghttp2_nv> fields;
  for (const auto& [name, value] : all) {
    fields.push_back(field(name, value));
  }
  nghttp2_data_provider provider{};
  provider.read_callback = [](nghttp2_session*, std::int32_t id, std::uint8_t* buffer, std::size_t room,
                              std::uint32_t* flags, nghttp2_data_source*, void* user) -> ssize_t {
    auto& asked = static_cast<Use*>(user)->peer->streams_[id];
    const auto size = std::min(room, asked.body.size() - asked.sent);
    std::memcpy(buffer, asked.body.data() + asked.sent, size);
    asked.sent += size;
    if (asked.sent == asked.body.size()) {
      *flags |= NGHTTP2_DATA_FLAG_EOF;
    }
    return static_cast<ssize_t>(size);
  };
  nghttp2_submit_response(http, stream, fields.data(), fields.size(), &provider);
}

void TestPeer::reset(std::int32_t stream, std::uint32_t code) {
  nghttp2_submit_rst_stream(http, NGHTTP2_FLAG_NONE, stream, code);
}

void TestPeer::goAway(std::int32_t lastStream) {
  nghttp2_submit_goaway(http, NGHTTP2_FLAG_NONE, lastStream, NGHTTP2_NO_ERROR, nullptr, 0);
}

TestEndpoint::TlsContext TestEndpoint::tlsContext(const std::filesystem::path& certificate,
                                                  const std::filesystem::path& key) {
  TlsContext made{SSL_CTX_new(TLS_server_method()), &SSL_CTX_free};
  SSL_CTX_use_certificate_chain_file(made.get(), certificate.c_str());
  SSL_CTX_use_PrivateKey_file(made.get(), key.c_str(), SSL_FILETYPE_PEM);
  SSL_CTX_set_session_id_context(made.get(), reinterpret_cast<const unsigned char*>("test"), 4);
  SSL_CTX_set_alpn_select_cb(made.get(), chooseProtocol, &speaks_);
  return made;
}

TestEndpoint::TestEndpoint(Answering answering, Speaks speaks)
    : answering_(std::move(answering)), speaks_(speaks), directory_(newDirectory()) {
  const auto certificates = sandbox::certificatesIn(directory_);
  const auto otherDirectory = directory_ / "other";
  std::filesystem::create_directory(otherDirectory);
  const auto others = sandbox::certificatesIn(otherDirectory);
  if (!certificates || !others) {
    throw std::runtime_error("no certificates");
  }
  authority_ = certificates->authority;
  context_ = tlsContext(certificates->certificate, certificates->key);
  untrusted_ = tlsContext(others->certificate, others->key);
  start(INADDR_LOOPBACK);
}

TestEndpoint::TestEndpoint(Answering answering, const std::string& name)
    : answering_(std::move(answering)), speaks_(Speaks::http2), directory_(newDirectory()) {
  authority_ = directory_ / "certificate.pem";
  const auto key = directory_ / "key.pem";
  const auto made = sandbox::test::runCommand(
      {"openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes",
       "-days", "2", "-subj", "/CN=" + name, "-addext", "subjectAltName=DNS:" + name, "-keyout", key.string(),
       "-out", authority_.string()});
  if (made.status != 0) {
    throw std::runtime_error("no certificate: " + made.errors);
  }
  context_ = tlsContext(authority_, key);
  start(INADDR_ANY);
}

void TestEndpoint::start(std::uint32_t at) {
  std::signal(SIGPIPE, SIG_IGN);  // OpenSSL writes without MSG_NOSIGNAL
  listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(at);
  address.sin_port = htons(sandbox::test::freePort(at));  // an explicit port stays bound while not listening
  socklen_t size = sizeof address;
  if (::bind(listener_, reinterpret_cast<const sockaddr*>(&address), size) != 0) {
    throw std::runtime_error("no port");
  }
  port_ = ntohs(address.sin_port);
  acceptAgain();
}

TestEndpoint::~TestEndpoint() {
  refuse();
  disconnectAll();
  for (auto& [number, thread] : threads_) {
    thread.join();
  }
  ::close(listener_);
  std::error_code ignored;
  std::filesystem::remove_all(directory_, ignored);
}

void TestEndpoint::refuse() {
  ::shutdown(listener_, SHUT_RDWR);
  if (accepting_.joinable()) {
    accepting_.join();
  }
}

void TestEndpoint::acceptAgain() {
  if (::listen(listener_, 64) != 0) {
    throw std::runtime_error("no listener");
  }
  accepting_ = std::thread([this] { accept(); });
}

void TestEndpoint::speak(Speaks speaks) {
  speaks_ = speaks;
  disconnectAll();
}

bool TestEndpoint::awaitFreshConnection() {
  constexpr std::chrono::seconds patience{30};
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, patience, [this] { return greetings_ > greetingsAtLastRequest_; });
}

std::string TestEndpoint::url(const std::string& host) const {
  return "https://" + host + ':' + std::to_string(port_) + "/dns-query/secret-token";
}
std::string TestEndpoint::caFile() const { return authority_.string(); }

std::vector<Fields> TestEndpoint::requests() const {
  const std::scoped_lock lock(mutex_);
  return requests_;
}

void TestEndpoint::disconnectAll() {
  const std::scoped_lock lock(mutex_);
  for (const int socket : sockets_) {
    ::shutdown(socket, SHUT_RDWR);
  }
}

void TestEndpoint::accept() {
  for (int socket = 0; (socket = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
    const int on = 1;
    ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    joinEnded();
    const std::scoped_lock lock(mutex_);
    sockets_.insert(socket);
    const int number = ++connections_;
    threads_.emplace(number, std::thread([this, socket, number] {
                       serve(socket);
                       const std::scoped_lock guard(mutex_);
                       ended_.push_back(number);
                     }));
  }
}

void TestEndpoint::joinEnded() {
  std::unique_lock lock(mutex_);
  for (const int number : std::exchange(ended_, {})) {
    auto thread = std::move(threads_.extract(number).mapped());
    lock.unlock();
    thread.join();
    lock.lock();
  }
}

void TestEndpoint::serve(int socket) {
  if (speaks_ == Speaks::plainText) {
    static constexpr std::string_view text = "HTTP/1.1 400 Bad Request\r\nContent-Length: 0\r\n\r\n";
    ::send(socket, text.data(), text.size(), MSG_NOSIGNAL);
  } else if (speaks_ == Speaks::nothing) {
    for (std::array<char, 1024> heard{}; ::recv(socket, heard.data(), heard.size(), 0) > 0;) {
    }
  } else {
    serveTls(socket);
  }
  const std::scoped_lock lock(mutex_);
  sockets_.erase(socket);
  ::close(socket);
}

void TestEndpoint::serveTls(int socket) {
  auto& context = speaks_ == Speaks::otherAuthority ? untrusted_ : context_;
  const std::unique_ptr<SSL, void (*)(SSL*)> tls{SSL_new(context.get()), &SSL_free};
  SSL_set_fd(tls.get(), socket);
  if (SSL_accept(tls.get()) == 1) {
    resumptions_ += SSL_session_reused(tls.get());
    TestPeer peer;
    serveHttp(peer, tls.get());
  }
}

nghttp2_session_callbacks* TestEndpoint::callbacks() {
  nghttp2_session_callbacks* made = nullptr;
  nghttp2_session_callbacks_new(&made);
  const auto asText = [](const std::uint8_t* data, std::size_t size) {
    return std::string(reinterpret_cast<const char*>(data), size);
  };
  static const auto text = asText;
  nghttp2_session_callbacks_set_on_header_callback(
      made, [](nghttp2_session*, const nghttp2_frame* frame, const std::uint8_t* name, std::size_t nameSize,
               const std::uint8_t* value, std::size_t valueSize, std::uint8_t, void* user) {
        static_cast<Use*>(user)->peer->streams_[frame->hd.stream_id].fields.emplace_back(
            text(name, nameSize), text(value, valueSize));
        return 0;
      });
  nghttp2_session_callbacks_set_on_data_chunk_recv_callback(
      made, [](nghttp2_session*, std::uint8_t, std::int32_t stream, const std::uint8_t* data,
               std::size_t size, void* user) {
        static_cast<Use*>(user)->peer->streams_[stream].question += text(data, size);
        return 0;
      });
  nghttp2_session_callbacks_set_on_frame_recv_callback(
      made, [](nghttp2_session*, const nghttp2_frame* frame, void* user) {
        const auto& use = *static_cast<Use*>(user);
        if (frame->hd.type == NGHTTP2_SETTINGS && (frame->hd.flags & NGHTTP2_FLAG_ACK) == 0) {
          use.endpoint->greeted();
        }
        if (frame->hd.type == NGHTTP2_DATA && (frame->hd.flags & NGHTTP2_FLAG_END_STREAM) != 0) {
          (*use.answering)(*use.peer, frame->hd.stream_id, use.peer->streams_[frame->hd.stream_id].question);
        }
        return 0;
      });
  nghttp2_session_callbacks_set_on_stream_close_callback(
      made, [](nghttp2_session*, std::int32_t stream, std::uint32_t, void* user) {
        static_cast<Use*>(user)->peer->streams_.erase(stream);
        return 0;
      });
  return made;
}

void TestEndpoint::greeted() {
  const std::scoped_lock lock(mutex_);
  ++greetings_;
  changed_.notify_all();
}

void TestEndpoint::serveHttp(TestPeer& peer, SSL* tls) {
  const Answering recording = [this](TestPeer& by, std::int32_t stream, const std::string& question) {
    {
      const std::scoped_lock lock(mutex_);
      if (requests_.size() < mostRequests) {
        requests_.push_back(by.streams_[stream].fields);
      }
      greetingsAtLastRequest_ = greetings_;
    }
    answering_(by, stream, question);
  };
  Use use{this, &peer, &recording};
  nghttp2_session_callbacks* const made = callbacks();
  nghttp2_option* options = nullptr;
  nghttp2_option_new(&options);
  nghttp2_option_set_max_send_header_block_length(options, 4'000'000);
  nghttp2_session_server_new2(&peer.http, made, &use, options);
  nghttp2_option_del(options);
  nghttp2_session_callbacks_del(made);
  nghttp2_submit_settings(peer.http, NGHTTP2_FLAG_NONE, nullptr, 0);
  std::array<char, 16384> buffer{};
  for (int size = 0; (size = SSL_read(tls, buffer.data(), buffer.size())) > 0 && !peer.hasHungUp_;) {
    if (nghttp2_session_mem_recv(peer.http, reinterpret_cast<const std::uint8_t*>(buffer.data()),
                                 static_cast<std::size_t>(size)) < 0 ||
        peer.hasHungUp_) {
      break;
    }
    const std::uint8_t* data = nullptr;
    for (ssize_t length = 0; (length = nghttp2_session_mem_send(peer.http, &data)) > 0;) {
      SSL_write(tls, data, static_cast<int>(length));
    }
    if (nghttp2_session_want_read(peer.http) == 0 && nghttp2_session_want_write(peer.http) == 0) {
      break;
    }
  }
  nghttp2_session_del(peer.http);
}

}  // namespace quillmar::tunnel::test
