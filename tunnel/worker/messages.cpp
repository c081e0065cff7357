#include "tunnel/worker/messages.h"

#include <algorithm>
#include <utility>

#include "tunnel/dns/wire.h"

namespace quillmar::tunnel {
namespace {

namespace ip = boost::asio::ip;

// The first number of a message. The two directions use different numbers, so a message sent back to its
// sender is invalid.
enum class Kind : std::uint16_t {
  begin = 1,
  takeEndpoint,
  takeServers,
  networkChanged,
  ping,
  line = 101,
  wantServers,
  reached,
  pong,
};

constexpr std::uint16_t family4 = 4;
constexpr std::uint16_t family6 = 6;

void appendText(std::string& message, std::string_view text, std::size_t longest) {
  text = text.substr(0, longest);
  append16(message, static_cast<std::uint16_t>(text.size()));
  message += text;
}

void appendAddress(std::string& message, const ip::address& address) {
  append16(message, address.is_v4() ? family4 : family6);
  if (address.is_v4()) {
    const auto bytes = address.to_v4().to_bytes();
    message.append(bytes.begin(), bytes.end());
  } else {
    const auto bytes = address.to_v6().to_bytes();
    message.append(bytes.begin(), bytes.end());
    append32(message, static_cast<std::uint32_t>(address.to_v6().scope_id()));
  }
}

void appendKind(std::string& message, Kind kind) { append16(message, static_cast<std::uint16_t>(kind)); }

void appendTo(std::string& message, const Begin& begin) {
  appendKind(message, Kind::begin);
  append32(message, begin.user);
  append32(message, begin.group);
  append16(message, begin.listeners);
  appendText(message, begin.caFile, longestPath);
  appendText(message, begin.url, longestUrl);
  const auto count = std::min(begin.lastGood.size(), mostHosts);
  append16(message, static_cast<std::uint16_t>(count));
  for (auto each = begin.lastGood.begin(); each != std::next(begin.lastGood.begin(), std::ptrdiff_t(count));
       ++each) {
    appendText(message, each->first, longestHost);
    appendAddress(message, each->second);
  }
}

void appendTo(std::string& message, const TakeEndpoint& endpoint) {
  appendKind(message, Kind::takeEndpoint);
  appendText(message, endpoint.url, longestUrl);
}

void appendTo(std::string& message, const TakeServers& servers) {
  appendKind(message, Kind::takeServers);
  const auto count = std::min(servers.servers.size(), mostServers);
  append16(message, static_cast<std::uint16_t>(count));
  for (std::size_t index = 0; index < count; ++index) {
    appendAddress(message, servers.servers[index].address());
    append16(message, servers.servers[index].port());
  }
}

void appendTo(std::string& message, const NetworkChanged& /*changed*/) {
  appendKind(message, Kind::networkChanged);
}

void appendTo(std::string& message, const Ping& /*ping*/) { appendKind(message, Kind::ping); }

void appendTo(std::string& message, const Line& line) {
  appendKind(message, Kind::line);
  appendText(message, line.text, longestLine);
}

void appendTo(std::string& message, const WantServers& /*want*/) { appendKind(message, Kind::wantServers); }

void appendTo(std::string& message, const Reached& reached) {
  appendKind(message, Kind::reached);
  appendText(message, reached.host, longestHost);
  appendAddress(message, reached.address);
}

void appendTo(std::string& message, const Pong& /*pong*/) { appendKind(message, Kind::pong); }

template <class Message>
std::string encoded(const Message& message) {
  std::string text;
  std::visit([&](const auto& each) { appendTo(text, each); }, message);
  return text;
}

// Reads the parts of one message. After the first invalid part all parts are empty.
class Parts {
 public:
  explicit Parts(std::string_view text) : reader_(text, 0) {}

  bool isWhole() const { return isRight_ && reader_.ok() && reader_.atEnd(); }

  Kind kind() { return static_cast<Kind>(reader_.number16()); }
  std::uint32_t number32() { return reader_.number32(); }
  std::uint16_t number16() { return reader_.number16(); }
  std::size_t count(std::size_t most) { return limited(reader_.number16(), most); }
  std::string text(std::size_t longest) {
    return std::string(reader_.bytes(limited(reader_.number16(), longest)));
  }
  ip::address address() {
    switch (reader_.number16()) {
      case family4:
        return ip::address_v4(bytes<ip::address_v4::bytes_type>());
      case family6: {
        const auto sixteen = bytes<ip::address_v6::bytes_type>();
        return ip::address_v6(sixteen, reader_.number32());
      }
      default:
        isRight_ = false;
        return {};
    }
  }
  // Marks the message as invalid unless the condition holds.
  void require(bool condition) { isRight_ = isRight_ && condition; }

 private:
  std::size_t limited(std::size_t number, std::size_t most) {
    require(number <= most);
    return isRight_ ? number : 0;
  }
  template <class Bytes>
  Bytes bytes() {
    Bytes bytes{};
    const auto text = reader_.bytes(bytes.size());
    std::copy(text.begin(), text.end(), bytes.begin());
    return bytes;
  }

  Reader reader_;
  bool isRight_ = true;
};

Begin readBegin(Parts& parts) {
  Begin begin;
  begin.user = parts.number32();
  begin.group = parts.number32();
  begin.listeners = static_cast<std::uint16_t>(parts.count(mostListeners));
  begin.caFile = parts.text(longestPath);
  begin.url = parts.text(longestUrl);
  const auto count = parts.count(mostHosts);
  for (std::size_t index = 0; index < count; ++index) {
    auto host = parts.text(longestHost);
    parts.require(begin.lastGood.empty() || begin.lastGood.rbegin()->first < host);
    begin.lastGood[std::move(host)] = parts.address();
  }
  return begin;
}

TakeServers readServers(Parts& parts) {
  TakeServers servers;
  const auto count = parts.count(mostServers);
  for (std::size_t index = 0; index < count; ++index) {
    const auto address = parts.address();
    servers.servers.emplace_back(address, parts.number16());
  }
  return servers;
}

Reached readReached(Parts& parts) {
  auto host = parts.text(longestHost);
  return {std::move(host), parts.address()};
}

}  // namespace

std::string encode(const ToWorker& message) { return encoded(message); }
std::string encode(const FromWorker& message) { return encoded(message); }

std::optional<ToWorker> decodeToWorker(std::string_view text) {
  Parts parts(text);
  ToWorker message;
  switch (parts.kind()) {
    case Kind::begin:
      message = readBegin(parts);
      break;
    case Kind::takeEndpoint:
      message = TakeEndpoint{parts.text(longestUrl)};
      break;
    case Kind::takeServers:
      message = readServers(parts);
      break;
    case Kind::networkChanged:
      message = NetworkChanged{};
      break;
    case Kind::ping:
      message = Ping{};
      break;
    default:
      return std::nullopt;
  }
  return parts.isWhole() ? std::optional(std::move(message)) : std::nullopt;
}

std::optional<FromWorker> decodeFromWorker(std::string_view text) {
  Parts parts(text);
  FromWorker message;
  switch (parts.kind()) {
    case Kind::line:
      message = Line{parts.text(longestLine)};
      break;
    case Kind::wantServers:
      message = WantServers{};
      break;
    case Kind::reached:
      message = readReached(parts);
      break;
    case Kind::pong:
      message = Pong{};
      break;
    default:
      return std::nullopt;
  }
  return parts.isWhole() ? std::optional(std::move(message)) : std::nullopt;
}

}  // namespace quillmar::tunnel
