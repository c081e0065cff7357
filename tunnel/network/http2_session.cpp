#include "tunnel/network/http2_session.h"

#include <array>
#include <utility>

#include "tunnel/dns/wire.h"

namespace quillmar::tunnel {
namespace {

// For sixteen of the longest answers at once.
constexpr std::int32_t connectionWindow = 1024 * 1024;
constexpr std::uint32_t largestHeaderList = 16 * 1024;
constexpr std::string_view dnsMessage = "application/dns-message";

std::string_view text(const std::uint8_t* data, std::size_t length) {
  return {reinterpret_cast<const char*>(data), length};
}

// nghttp2 takes non-const pointers but only reads the texts. They have to live as long as the request.
nghttp2_nv field(std::string_view name, std::string_view value) {
  const auto bytes = [](std::string_view given) {
    return reinterpret_cast<std::uint8_t*>(const_cast<char*>(given.data()));  // NOLINT(*-const-cast)
  };
  return {bytes(name), bytes(value), name.size(), value.size(),
          NGHTTP2_NV_FLAG_NO_COPY_NAME | NGHTTP2_NV_FLAG_NO_COPY_VALUE};
}

Failure broken(ssize_t error) { return {Cause::broken, nghttp2_strerror(static_cast<int>(error))}; }

}  // namespace

Http2Session::Http2Session(const Endpoint& endpoint, ConnectionEvents& events)
    : endpoint_(endpoint), events_(&events) {
  nghttp2_session* made = nullptr;
  nghttp2_session_client_new(&made, callbacks(), this);
  http_.reset(made);
  const std::array settings{nghttp2_settings_entry{NGHTTP2_SETTINGS_ENABLE_PUSH, 0},
                            nghttp2_settings_entry{NGHTTP2_SETTINGS_MAX_HEADER_LIST_SIZE, largestHeaderList}};
  nghttp2_submit_settings(made, NGHTTP2_FLAG_NONE, settings.data(), settings.size());
  nghttp2_session_set_local_window_size(made, NGHTTP2_FLAG_NONE, 0, connectionWindow);
}

Http2Session::~Http2Session() = default;

std::optional<Failure> Http2Session::send(Ticket ticket, const std::string& question) {
  auto& request = requests_.try_emplace(ticket).first->second;
  request.ticket = ticket;
  request.question = question;
  request.length = std::to_string(question.size());
  const std::array fields{field(":method", "POST"),
                          field(":scheme", "https"),
                          field(":authority", endpoint_.authority),
                          field(":path", endpoint_.path),
                          field("accept", dnsMessage),
                          field("content-type", dnsMessage),
                          field("content-length", request.length)};
  nghttp2_data_provider provider{};
  provider.source.ptr = &request;
  provider.read_callback = [](nghttp2_session*, std::int32_t, std::uint8_t* buffer, std::size_t room,
                              std::uint32_t* flags, nghttp2_data_source* source, void*) {
    auto& asked = *static_cast<Request*>(source->ptr);
    const auto size = asked.question.copy(reinterpret_cast<char*>(buffer), room, asked.sent);
    asked.sent += size;
    if (asked.sent == asked.question.size()) {
      *flags |= NGHTTP2_DATA_FLAG_EOF;
    }
    return static_cast<ssize_t>(size);
  };
  request.stream =
      nghttp2_submit_request(http_.get(), nullptr, fields.data(), fields.size(), &provider, &request);
  // All stream ids may be used up.
  return request.stream < 0 ? std::optional(broken(request.stream)) : std::nullopt;
}

void Http2Session::cancel(Ticket ticket) {
  const auto request = requests_.find(ticket);
  if (request == requests_.end()) {
    return;
  }
  request->second.isCancelled = true;
  nghttp2_submit_rst_stream(http_.get(), NGHTTP2_FLAG_NONE, request->second.stream, NGHTTP2_CANCEL);
}

void Http2Session::ping() { nghttp2_submit_ping(http_.get(), NGHTTP2_FLAG_NONE, nullptr); }

std::optional<Failure> Http2Session::receive(std::string_view bytes) {
  const auto* data = reinterpret_cast<const std::uint8_t*>(bytes.data());
  const auto taken = nghttp2_session_mem_recv(http_.get(), data, bytes.size());
  return taken < 0 ? std::optional(broken(taken)) : std::nullopt;
}

std::optional<Failure> Http2Session::takeOutgoing(std::string& frames, std::size_t size) {
  frames.clear();
  while (frames.size() < size && nghttp2_session_want_write(http_.get()) != 0) {
    const std::uint8_t* data = nullptr;
    const auto length = nghttp2_session_mem_send(http_.get(), &data);
    if (length < 0) {
      return broken(length);
    }
    if (length == 0) {
      break;
    }
    frames += text(data, static_cast<std::size_t>(length));
  }
  return std::nullopt;
}

bool Http2Session::isOver() const {
  return nghttp2_session_want_read(http_.get()) == 0 && nghttp2_session_want_write(http_.get()) == 0;
}

Http2Session::Request* Http2Session::requestOf(std::int32_t stream) {
  return static_cast<Request*>(nghttp2_session_get_stream_user_data(http_.get(), stream));
}

void Http2Session::frameCame(const nghttp2_frame& frame) {
  const auto isEndOf = [&](std::uint8_t kind) {
    return frame.hd.type == kind && (frame.hd.flags & NGHTTP2_FLAG_END_STREAM) != 0;
  };
  if (isEndOf(NGHTTP2_HEADERS) || isEndOf(NGHTTP2_DATA)) {
    if (auto* const request = requestOf(frame.hd.stream_id)) {
      request->isComplete = true;
    }
  } else if (events_ == nullptr) {
    return;
  } else if (frame.hd.type == NGHTTP2_PING && (frame.hd.flags & NGHTTP2_FLAG_ACK) != 0) {
    events_->ponged(BootClock::now());
  } else if (frame.hd.type == NGHTTP2_GOAWAY) {
    events_->closing(BootClock::now());
  }
}

void Http2Session::dataCame(std::int32_t stream, std::string_view data) {
  auto* const request = requestOf(stream);
  if (request == nullptr || request->isTooLong) {
    return;
  }
  request->isTooLong = request->body.size() + data.size() > largestMessage;
  if (request->isTooLong) {
    nghttp2_submit_rst_stream(http_.get(), NGHTTP2_FLAG_NONE, stream, NGHTTP2_CANCEL);
  } else {
    request->body += data;
  }
}

void Http2Session::streamClosed(std::int32_t stream) {
  auto* const known = requestOf(stream);
  if (known == nullptr) {
    return;
  }
  const auto request = requests_.extract(known->ticket);
  if (request.empty() || events_ == nullptr || known->isCancelled) {
    return;
  }
  if (known->isTooLong) {
    return events_->answered(BootClock::now(), known->ticket, Failure{Cause::tooLong});
  }
  if (!known->isComplete) {
    return events_->dropped(BootClock::now(), known->ticket);
  }
  auto answer = known->fields.answer();
  answer.body = std::move(known->body);
  events_->answered(BootClock::now(), known->ticket, std::move(answer));
}

const nghttp2_session_callbacks* Http2Session::callbacks() {
  static const nghttp2_session_callbacks* const shared = [] {
    nghttp2_session_callbacks* made = nullptr;
    nghttp2_session_callbacks_new(&made);
    nghttp2_session_callbacks_set_on_header_callback(
        made,
        [](nghttp2_session*, const nghttp2_frame* frame, const std::uint8_t* name, std::size_t nameLength,
           const std::uint8_t* value, std::size_t valueLength, std::uint8_t, void* user) {
          if (auto* const request = static_cast<Http2Session*>(user)->requestOf(frame->hd.stream_id)) {
            request->fields.take(text(name, nameLength), text(value, valueLength));
          }
          return 0;
        });
    nghttp2_session_callbacks_set_on_data_chunk_recv_callback(
        made, [](nghttp2_session*, std::uint8_t, std::int32_t stream, const std::uint8_t* data,
                 std::size_t length, void* user) {
          static_cast<Http2Session*>(user)->dataCame(stream, text(data, length));
          return 0;
        });
    nghttp2_session_callbacks_set_on_frame_recv_callback(
        made, [](nghttp2_session*, const nghttp2_frame* frame, void* user) {
          static_cast<Http2Session*>(user)->frameCame(*frame);
          return 0;
        });
    nghttp2_session_callbacks_set_on_stream_close_callback(
        made, [](nghttp2_session*, std::int32_t stream, std::uint32_t, void* user) {
          static_cast<Http2Session*>(user)->streamClosed(stream);
          return 0;
        });
    return made;
  }();
  return shared;
}

}  // namespace quillmar::tunnel
