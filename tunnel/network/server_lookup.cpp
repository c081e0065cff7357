#include "tunnel/network/server_lookup.h"

#include <openssl/rand.h>

#include <algorithm>
#include <array>
#include <boost/asio/buffer.hpp>
#include <optional>
#include <utility>

namespace quillmar::tunnel {
namespace {

namespace ip = boost::asio::ip;
using boost::system::error_code;

constexpr std::size_t largestReply = 4096;

// Unpredictable, so that others can't forge answers.
std::uint16_t randomId() {
  std::array<unsigned char, 2> bytes{};
  RAND_bytes(bytes.data(), bytes.size());
  return static_cast<std::uint16_t>(bytes[0] * 256U + bytes[1]);
}

ip::address addressFrom(const std::string& bytes) {
  if (bytes.size() == 4) {
    ip::address_v4::bytes_type four{};
    std::copy_n(bytes.begin(), four.size(), four.begin());
    return ip::address_v4(four);
  }
  ip::address_v6::bytes_type sixteen{};
  std::copy_n(bytes.begin(), sixteen.size(), sixteen.begin());
  return ip::address_v6(sixteen);
}

}  // namespace

// A server and its answers.
struct ServerLookup::Asked {
  Asked(boost::asio::io_context& context, ip::udp::endpoint from)
      : server(std::move(from)), socket(context) {}

  ip::udp::endpoint server;
  ip::udp::socket socket;
  std::vector<std::uint16_t> ids{};
  std::vector<std::optional<AddressRecords>> replies{};  // to each query
  std::array<char, largestReply> buffer{};
};

ServerLookup::ServerLookup(boost::asio::io_context& context, NameServers servers, Done done)
    : context_(context),
      servers_(std::move(servers)),
      next_(servers_.begin()),
      done_(std::move(done)),
      turn_(context),
      end_(context) {}

void ServerLookup::start(const std::string& host) {
  for (const auto recordType : {type::aaaa, type::a}) {
    if (auto query = queryFor(host, recordType)) {
      queries_.push_back(std::move(*query));
    }
  }
  const bool canBeAsked = !queries_.empty() && !servers_.empty();
  end_.start(canBeAsked ? patience : std::chrono::seconds(0), [self = shared_from_this()] { self->end({}); });
  if (canBeAsked) {
    askNext();
  }
}

void ServerLookup::askNext() {
  if (!done_ || next_ == servers_.end()) {
    return;
  }
  const auto asked = std::make_shared<Asked>(context_, *next_++);
  if (!send(*asked)) {
    return askNext();
  }
  asked_.push_back(asked);
  receive(asked);
  turn_.start(headStart, [self = shared_from_this()] { self->askNext(); });
}

bool ServerLookup::send(Asked& asked) {
  error_code error;
  asked.socket.open(asked.server.protocol(), error);
  if (!error) {
    asked.socket.connect(asked.server, error);
  }
  asked.replies.resize(queries_.size());
  for (const Query& query : queries_) {
    auto message = writeQuestion(query);
    asked.ids.push_back(randomId());
    put16(message, 0, asked.ids.back());
    if (!error) {
      asked.socket.send(boost::asio::buffer(message), 0, error);
    }
  }
  return !error;
}

void ServerLookup::receive(const std::shared_ptr<Asked>& asked) {
  asked->socket.async_receive(boost::asio::buffer(asked->buffer),
                              [self = shared_from_this(), asked](error_code error, std::size_t size) {
                                if (!self->done_) {
                                  return;
                                }
                                if (error) {
                                  return self->askNext();
                                }
                                self->take(*asked, {asked->buffer.data(), size});
                                self->receive(asked);
                              });
}

void ServerLookup::take(Asked& asked, std::string_view message) {
  const auto header = readHeader(message);
  for (std::size_t index = 0; header && index < queries_.size(); ++index) {
    if (header->id == asked.ids[index]) {
      if (auto records = readAddressRecords(message, queries_[index].question)) {
        asked.replies[index] = std::move(records);
      }
    }
  }
  if (!std::ranges::all_of(asked.replies, [](const auto& reply) { return reply.has_value(); })) {
    return;
  }
  Result result{.life = std::chrono::seconds::max()};
  for (const auto& reply : asked.replies) {
    std::ranges::transform(reply->addresses, std::back_inserter(result.addresses), addressFrom);
    if (!reply->addresses.empty()) {
      result.life = std::min(result.life, reply->life);
    }
  }
  if (result.addresses.empty()) {
    return askNext();
  }
  end(std::move(result));
}

void ServerLookup::end(Result result) {
  if (const auto done = std::exchange(done_, nullptr)) {
    turn_.cancel();
    end_.cancel();
    // The addresses of one family are better than none.
    for (const auto& asked : asked_) {
      for (const auto& reply : asked->replies) {
        if (result.addresses.empty() && reply) {
          std::ranges::transform(reply->addresses, std::back_inserter(result.addresses), addressFrom);
          result.life = reply->life;
        }
      }
    }
    asked_.clear();
    done(std::move(result));
  }
}

}  // namespace quillmar::tunnel
