#include "platform/common/curl_transfer.h"

#include <netinet/in.h>
#include <strings.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/date_format.h"

namespace quillmar {
namespace {

using Kind = TransportError::Kind;

constexpr int mostRedirects = 16;
constexpr std::size_t mostHeaders =
    std::size_t{256} * 1024;  // libcurl's own limit is higher, and reaching it looks like a lost connection
// Reserved at most before the body arrives, whatever its announced length.
constexpr curl_off_t largestReserve = curl_off_t{1} << 20;

constexpr auto errors = std::to_array<std::pair<CURLcode, Kind>>({
    {CURLE_UNSUPPORTED_PROTOCOL, Kind::badServerResponse},  // HTTP/0.9: the URL's scheme was checked before
    {CURLE_URL_MALFORMAT, Kind::badURL},
    {CURLE_COULDNT_RESOLVE_PROXY, Kind::cannotFindHost},
    {CURLE_COULDNT_RESOLVE_HOST, Kind::cannotFindHost},
    {CURLE_COULDNT_CONNECT, Kind::cannotConnectToHost},
    {CURLE_WEIRD_SERVER_REPLY, Kind::badServerResponse},
    {CURLE_PARTIAL_FILE, Kind::networkConnectionLost},
    {CURLE_WRITE_ERROR, Kind::badServerResponse},    // over our size limit
    {CURLE_OUT_OF_MEMORY, Kind::badServerResponse},  // a header line over libcurl's limit
    {CURLE_OPERATION_TIMEDOUT, Kind::timedOut},
    {CURLE_SSL_CONNECT_ERROR, Kind::secureConnectionFailed},
    {CURLE_GOT_NOTHING, Kind::networkConnectionLost},
    {CURLE_SEND_ERROR, Kind::networkConnectionLost},
    {CURLE_RECV_ERROR, Kind::networkConnectionLost},
    {CURLE_SSL_CERTPROBLEM, Kind::secureConnectionFailed},
    {CURLE_SSL_CIPHER, Kind::secureConnectionFailed},
    {CURLE_PEER_FAILED_VERIFICATION, Kind::serverCertificateUntrusted},
    {CURLE_BAD_CONTENT_ENCODING, Kind::badServerResponse},
    {CURLE_FILESIZE_EXCEEDED, Kind::badServerResponse},
    {CURLE_USE_SSL_FAILED, Kind::secureConnectionFailed},
    {CURLE_SSL_CACERT_BADFILE, Kind::secureConnectionFailed},
    {CURLE_SSL_SHUTDOWN_FAILED, Kind::secureConnectionFailed},
    {CURLE_SSL_ISSUER_ERROR, Kind::serverCertificateUntrusted},
    {CURLE_HTTP2, Kind::networkConnectionLost},
    {CURLE_HTTP2_STREAM, Kind::networkConnectionLost},
    {CURLE_SSL_INVALIDCERTSTATUS, Kind::serverCertificateUntrusted},
    {CURLE_PROXY, Kind::cannotConnectToHost},
});

Kind kindOf(CURLcode code) {
  const auto known = std::ranges::find(errors, code, &std::pair<CURLcode, Kind>::first);
  return known == errors.end() ? Kind::networkConnectionLost : known->second;
}

const char* textOrNull(const std::string& text) { return text.empty() ? nullptr : text.c_str(); }

constexpr auto networkIsMissing = std::to_array<int>({ENETUNREACH, ENETDOWN});

// Which methods turn into a GET without a body.
enum class BecomesGet { none, post, all };
constexpr auto redirectRules = std::to_array<std::pair<int, BecomesGet>>({{301, BecomesGet::post},
                                                                          {302, BecomesGet::post},
                                                                          {303, BecomesGet::all},
                                                                          {307, BecomesGet::none},
                                                                          {308, BecomesGet::none}});

constexpr auto methodsWithBody = std::to_array<std::string_view>({"POST", "PUT", "PATCH"});
constexpr auto headersOfBody =
    std::to_array<const char*>({"Content-Type", "Content-Length", "Content-Encoding"});

// libcurl adds them by itself; a name without a value removes one.
constexpr auto headersOfLibcurl = std::to_array<const char*>({"Accept", "Expect", "Content-Type"});

bool isHeader(const std::string& name, const char* known) { return strcasecmp(name.c_str(), known) == 0; }

// A line break would start another header.
bool isSafe(const std::string& text) {
  return text.find_first_of(std::string_view("\r\n\0", 3)) == std::string::npos;
}

bool isLoopback(const sockaddr& address) {
  if (address.sa_family == AF_INET) {
    const auto& v4 = reinterpret_cast<const sockaddr_in&>(address);
    return ntohl(v4.sin_addr.s_addr) >> 24U == 127;
  }
  return address.sa_family == AF_INET6 &&
         IN6_IS_ADDR_LOOPBACK(&reinterpret_cast<const sockaddr_in6&>(address).sin6_addr);
}

}  // namespace

CurlTransfer::CurlTransfer(HttpRequest request, HttpSession::Completion completion,
                           const TransferSettings& settings, CurlConnections& connections)
    : request_(std::move(request)),
      completion_(std::move(completion)),
      settings_(settings),
      connections_(connections),
      start_(settings.now()) {}

CurlTransfer& CurlTransfer::of(CURL* handle) {
  void* self = nullptr;
  curl_easy_getinfo(handle, CURLINFO_PRIVATE, &self);
  return *static_cast<CurlTransfer*>(self);
}

Result<void> CurlTransfer::setTarget(Result<HttpTarget> target) {
  if (!target) {
    return target.error();
  }
  if (target.value().isPlain() && !target.value().isLoopback()) {
    return Error(TransportError{Kind::appTransportSecurityRequiresSecureConnection, {}});
  }
  target_.emplace(std::move(target).value());
  return success();
}

void CurlTransfer::begin(EasyHandle easyHandle, On on) {
  handle_ = std::move(easyHandle);
  CURL* handle = handle_.get();
  curl_easy_reset(handle);
  body_.clear();
  connected_ = false;
  reused_ = false;
  unfit_ = false;
  isHttp2_ = false;
  headersEnded_ = false;
  headerSize_ = 0;
  socket_ = CURL_SOCKET_BAD;
  sent_ = 0;

  curl_easy_setopt(handle, CURLOPT_PRIVATE, this);
  curl_easy_setopt(handle, CURLOPT_CURLU, target_->handle());
  // The same in text: libcurl would compose it from the parts, character by character.
  curl_easy_setopt(handle, CURLOPT_URL, target_->text().c_str());
  curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(handle, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_2TLS));
  curl_easy_setopt(handle, CURLOPT_HTTP09_ALLOWED, 0L);
  curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 0L);
  curl_easy_setopt(handle, CURLOPT_FRESH_CONNECT, on == On::newConnection ? 1L : 0L);
  curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(handle, CURLOPT_QUICK_EXIT, 1L);  // don't wait for a resolver that hangs
  curl_easy_setopt(handle, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
  if (target_->isLoopback()) {
    curl_easy_setopt(handle, CURLOPT_PROXY, "");
  }

  curl_easy_setopt(handle, CURLOPT_SSL_VERIFYPEER, 1L);
  curl_easy_setopt(handle, CURLOPT_SSL_VERIFYHOST, 2L);
  curl_easy_setopt(handle, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
  curl_easy_setopt(handle, CURLOPT_CAPATH, textOrNull(settings_.caDirectory));
  curl_easy_setopt(handle, CURLOPT_CAINFO, textOrNull(settings_.caFile));
  if (!settings_.certificates.empty()) {
    curl_blob certificates{
        const_cast<char*>(settings_.certificates.data()),  // NOLINT: a C interface that only reads
        settings_.certificates.size(), CURL_BLOB_NOCOPY};
    curl_easy_setopt(handle, CURLOPT_CAINFO_BLOB, &certificates);
  }

  curl_easy_setopt(handle, CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(settings_.sizeLimit));
  curl_easy_setopt(handle, CURLOPT_HEADERFUNCTION, &CurlTransfer::onHeader);
  curl_easy_setopt(handle, CURLOPT_HEADERDATA, this);
  curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, &CurlTransfer::onBody);
  curl_easy_setopt(handle, CURLOPT_WRITEDATA, this);
  curl_easy_setopt(handle, CURLOPT_PREREQFUNCTION, &CurlTransfer::onConnected);
  curl_easy_setopt(handle, CURLOPT_PREREQDATA, this);
  curl_easy_setopt(handle, CURLOPT_NOPROGRESS, 0L);
  curl_easy_setopt(handle, CURLOPT_XFERINFOFUNCTION, &CurlTransfer::onProgress);
  curl_easy_setopt(handle, CURLOPT_XFERINFODATA, this);
  curl_easy_setopt(handle, CURLOPT_OPENSOCKETFUNCTION, &CurlTransfer::openSocket);
  curl_easy_setopt(handle, CURLOPT_OPENSOCKETDATA, this);
  curl_easy_setopt(handle, CURLOPT_CLOSESOCKETFUNCTION, &CurlTransfer::closeSocket);
  curl_easy_setopt(handle, CURLOPT_CLOSESOCKETDATA, &connections_);
  setUpMethod();
  setUpHeaders();
}

void CurlTransfer::setUpMethod() {
  CURL* handle = handle_.get();
  const std::string& method = request_.method;
  if (request_.body || std::ranges::find(methodsWithBody, method) != methodsWithBody.end()) {
    const std::string_view body = request_.body ? std::string_view(*request_.body) : std::string_view("");
    curl_easy_setopt(handle, CURLOPT_POST, 1L);
    curl_easy_setopt(handle, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
    curl_easy_setopt(handle, CURLOPT_POSTFIELDS, body.data());
  } else if (method == "HEAD") {
    curl_easy_setopt(handle, CURLOPT_NOBODY, 1L);
  } else {
    curl_easy_setopt(handle, CURLOPT_HTTPGET, 1L);
  }
  curl_easy_setopt(handle, CURLOPT_CUSTOMREQUEST, method.c_str());
}

void CurlTransfer::setUpHeaders() {
  std::vector<std::string> lines;
  lines.reserve(headersOfLibcurl.size() + request_.headers.size());
  for (const char* header : headersOfLibcurl) {
    lines.push_back(std::string(header) + ':');
  }
  for (const auto& [name, value] : request_.headers) {
    if (isSafe(name) && isSafe(value)) {
      std::string& line = lines.emplace_back();
      line.reserve(name.size() + 2 + value.size());
      line.append(name).append(value.empty() ? ";" : ": ").append(value);
    }
  }
  headers_.assign(std::move(lines));
  curl_easy_setopt(handle_.get(), CURLOPT_HTTPHEADER, headers_.list());
}

CurlTransfer::Clock::time_point CurlTransfer::deadline() const {
  return std::min(lastProgress_ + request_.timeout, start_ + settings_.longestTransfer);
}

int CurlTransfer::status() const {
  long status = 0;
  curl_easy_getinfo(handle_.get(), CURLINFO_RESPONSE_CODE, &status);
  return static_cast<int>(status);
}

std::optional<Date> CurlTransfer::date() const {
  curl_header* header = nullptr;
  if (curl_easy_header(handle_.get(), "Date", 0, CURLH_HEADER, -1, &header) != CURLHE_OK) {
    return std::nullopt;
  }
  return parseHTTPDate(header->value);
}

std::string CurlTransfer::redirectLocation() const {
  const char* location = nullptr;
  curl_easy_getinfo(handle_.get(), CURLINFO_REDIRECT_URL, &location);
  return location ? location : "";
}

CURLcode CurlTransfer::end(CURLcode code) {
  connections_.wasUsed(socket_, settings_.now());
  return code == CURLE_OK && !headersEnded_ ? CURLE_GOT_NOTHING : code;
}

bool CurlTransfer::needsNewConnection(CURLcode code) const {
  const bool endedSilently =
      reused_ && headerSize_ == 0 && kindOf(code) == Kind::networkConnectionLost && request_.method == "GET";
  return unfit_ || (code != CURLE_OK && endedSilently);
}

bool CurlTransfer::isRedirect() const {
  const auto isKnown = [status = status()](const auto& rule) { return rule.first == status; };
  return std::ranges::any_of(redirectRules, isKnown) && !redirectLocation().empty();
}

Result<void> CurlTransfer::redirect() {
  if (++redirects_ > mostRedirects) {
    return Error(TransportError{Kind::httpTooManyRedirects, {}});
  }
  auto target = HttpTarget::parseRedirect(redirectLocation());
  if (!target) {
    return target.error();
  }
  if (!target.value().hasSameOrigin(*target_)) {
    std::erase_if(request_.headers,
                  [](const auto& header) { return isHeader(header.first, "Authorization"); });
  }
  const auto becomesGet =
      std::ranges::find(redirectRules, status(), &std::pair<int, BecomesGet>::first)->second;
  if (becomesGet == BecomesGet::all || (becomesGet == BecomesGet::post && request_.method == "POST")) {
    request_.method = "GET";
    request_.body.reset();
    std::erase_if(request_.headers, [](const auto& header) {
      return std::ranges::any_of(headersOfBody,
                                 [&](const char* known) { return isHeader(header.first, known); });
    });
  }
  return setTarget(std::move(target));
}

void CurlTransfer::complete(CURLcode code, bool hasNetwork) {
  if (code != CURLE_OK) {
    fail(errorOf(code, hasNetwork));
  } else {
    completion_({.data = std::move(body_), .response = Response{status(), date()}, .error = std::nullopt});
  }
}

void CurlTransfer::fail(const TransportError& error) {
  completion_({.data = std::nullopt, .response = std::nullopt, .error = error});
}

TransportError CurlTransfer::errorOf(CURLcode code, bool hasNetwork) const {
  const Kind kind = kindOf(code);
  if (kind == Kind::serverCertificateUntrusted) {
    return {kind, target_->host()};
  }
  if (kind == Kind::cannotFindHost || kind == Kind::cannotConnectToHost) {
    long cause = 0;
    curl_easy_getinfo(handle_.get(), CURLINFO_OS_ERRNO, &cause);
    const bool unreachable = std::ranges::find(networkIsMissing, cause) != networkIsMissing.end();
    if (!target_->isLoopback() && (unreachable || !hasNetwork)) {
      return {Kind::notConnectedToInternet, {}};
    }
  }
  return {kind, {}};
}

std::size_t CurlTransfer::onHeader(char* bytes, std::size_t size, std::size_t count, void* self) {
  auto& transfer = *static_cast<CurlTransfer*>(self);
  transfer.madeProgress();
  return transfer.takesHeader({bytes, size * count}) ? size * count : 0;
}

// If a server claims HTTP/2 without ALPN, libcurl would send all requests on this connection.
bool CurlTransfer::takesHeader(std::string_view line) {
  headerSize_ += line.size();
  const bool isStatus = line.starts_with("HTTP/");
  if (isStatus && !line.starts_with("HTTP/1") && !isHttp2_) {
    return false;
  }
  headersEnded_ = !isStatus && (headersEnded_ || line == "\r\n" || line == "\n");
  return headerSize_ <= mostHeaders;
}

std::size_t CurlTransfer::onBody(char* bytes, std::size_t size, std::size_t count, void* self) {
  auto& transfer = *static_cast<CurlTransfer*>(self);
  transfer.madeProgress();
  std::string& body = transfer.body_;
  if (body.size() + size * count > transfer.settings_.sizeLimit) {
    return 0;
  }
  if (body.empty()) {
    curl_off_t expected = 0;
    curl_easy_getinfo(transfer.handle_.get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &expected);
    body.reserve(static_cast<std::size_t>(std::clamp(expected, curl_off_t{0}, largestReserve)));
  }
  body.append(bytes, size * count);
  return size * count;
}

int CurlTransfer::onConnected(void* self, char*, char* localAddress, int, int localPort) {
  auto& transfer = *static_cast<CurlTransfer*>(self);
  transfer.madeProgress();
  return transfer.mayBeSent(localAddress, localPort) ? CURL_PREREQFUNC_OK : CURL_PREREQFUNC_ABORT;
}

// libcurl calls this again before it repeats a request by itself.
bool CurlTransfer::mayBeSent(const char* localAddress, int localPort) {
  if (std::exchange(connected_, true)) {
    return false;
  }
  long newConnections = 0;
  curl_easy_getinfo(handle_.get(), CURLINFO_NUM_CONNECTS, &newConnections);
  reused_ = newConnections == 0;
  isHttp2_ = speaksHttp2(handle_.get());
  if (!isHttp2_) {
    socket_ = connections_.find(localAddress, localPort);
    unfit_ = reused_ && !isFitForReuse();
  }
  return !unfit_;
}

// On HTTP/1.1 unrequested bytes would be read as the next answer, and servers close connections that are idle
// for long. HTTP/2 numbers its answers and reports which requests it did not process.
bool CurlTransfer::isFitForReuse() const {
  const bool idleForLong = settings_.now() - connections_.lastUse(socket_) > settings_.longestIdle;
  return !hasUnreadInput(handle_.get(), socket_) && (request_.method == "GET" || !idleForLong);
}

int CurlTransfer::onProgress(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t sent) {
  auto& transfer = *static_cast<CurlTransfer*>(self);
  if (sent != transfer.sent_) {
    transfer.sent_ = sent;
    transfer.madeProgress();
  }
  return 0;
}

// Plain HTTP is allowed only to this machine, whatever address a name resolves to.
curl_socket_t CurlTransfer::openSocket(void* self, curlsocktype, curl_sockaddr* address) {
  auto& transfer = *static_cast<CurlTransfer*>(self);
  transfer.madeProgress();
  if (transfer.target_->isPlain() && !isLoopback(address->addr)) {
    return CURL_SOCKET_BAD;
  }
  return transfer.connections_.open(*address, transfer.settings_.now());
}

int CurlTransfer::closeSocket(void* connections, curl_socket_t socket) {
  static_cast<CurlConnections*>(connections)->close(socket);
  return 0;
}

}  // namespace quillmar
