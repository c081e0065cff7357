#include "tests/platform/http2_connection.h"

#include <algorithm>
#include <array>
#include <utility>

namespace quillmar {
namespace {

std::string stringOf(const std::uint8_t* bytes, std::size_t size) {
  return {reinterpret_cast<const char*>(bytes), size};
}

// nghttp2 copies both.
nghttp2_nv field(std::string_view name, std::string_view value) {
  const auto bytes = [](std::string_view text) {
    return reinterpret_cast<std::uint8_t*>(
        const_cast<char*>(text.data()));  // NOLINT: a C interface that only reads
  };
  return {bytes(name), bytes(value), name.size(), value.size(), NGHTTP2_NV_FLAG_NONE};
}

}  // namespace

Http2Connection::Http2Connection(RawConnection& connection)
    : connection_(connection), session_(makeSession(this)) {
  nghttp2_submit_settings(session_.get(), NGHTTP2_FLAG_NONE, nullptr, 0);
}

nghttp2_session* Http2Connection::makeSession(Http2Connection* self) {
  nghttp2_session_callbacks* made = nullptr;
  nghttp2_session_callbacks_new(&made);
  const std::unique_ptr<nghttp2_session_callbacks, decltype(&nghttp2_session_callbacks_del)> callbacks(
      made, &nghttp2_session_callbacks_del);
  nghttp2_session_callbacks_set_on_header_callback(made, &Http2Connection::onHeader);
  nghttp2_session_callbacks_set_on_frame_recv_callback(made, &Http2Connection::onFrame);
  nghttp2_session* session = nullptr;
  nghttp2_session_server_new(&session, made, self);
  return session;
}

int Http2Connection::onHeader(nghttp2_session*, const nghttp2_frame* frame, const std::uint8_t* name,
                              std::size_t nameSize, const std::uint8_t* value, std::size_t valueSize,
                              std::uint8_t, void* self) {
  Request& request = static_cast<Http2Connection*>(self)->open_[frame->hd.stream_id];
  const std::string header = stringOf(name, nameSize);
  if (header == ":method") {
    request.method = stringOf(value, valueSize);
  } else if (header == ":path") {
    request.path = stringOf(value, valueSize);
  }
  return 0;
}

int Http2Connection::onFrame(nghttp2_session*, const nghttp2_frame* frame, void* self) {
  auto& connection = *static_cast<Http2Connection*>(self);
  const bool carriesRequest = frame->hd.type == NGHTTP2_HEADERS || frame->hd.type == NGHTTP2_DATA;
  if (carriesRequest && (frame->hd.flags & NGHTTP2_FLAG_END_STREAM) != 0) {
    Request request = std::move(connection.open_[frame->hd.stream_id]);
    connection.open_.erase(frame->hd.stream_id);
    request.stream = frame->hd.stream_id;
    connection.whole_.push_back(std::move(request));
  }
  return 0;
}

std::optional<Http2Connection::Request> Http2Connection::readRequest() {
  while (whole_.empty()) {
    const auto bytes = connection_.readSome();
    if (!bytes ||
        nghttp2_session_mem_recv(session_.get(), reinterpret_cast<const std::uint8_t*>(bytes->data()),
                                 bytes->size()) < 0) {
      return std::nullopt;
    }
    flush();
  }
  Request request = std::move(whole_.front());
  whole_.pop_front();
  return request;
}

void Http2Connection::flush() {
  const std::uint8_t* bytes = nullptr;
  for (auto size = nghttp2_session_mem_send(session_.get(), &bytes); size > 0;
       size = nghttp2_session_mem_send(session_.get(), &bytes)) {
    connection_.send({reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size)});
  }
}

ssize_t Http2Connection::readBody(nghttp2_session*, std::int32_t, std::uint8_t* buffer, std::size_t size,
                                  std::uint32_t* flags, nghttp2_data_source* source, void*) {
  Body& body = *static_cast<Body*>(source->ptr);
  const std::size_t count = std::min(size, body.left.size());
  std::copy_n(body.left.begin(), count, buffer);
  body.left.erase(0, count);
  if (!body.left.empty()) {
    return static_cast<ssize_t>(count);
  }
  if (body.ends) {
    *flags |= NGHTTP2_DATA_FLAG_EOF;
  } else if (count == 0) {
    return NGHTTP2_ERR_DEFERRED;
  }
  return static_cast<ssize_t>(count);
}

void Http2Connection::respond(std::int32_t stream, int status, std::string_view length, Body body) {
  const std::string code = std::to_string(status);
  const std::array<nghttp2_nv, 2> headers{field(":status", code), field("content-length", length)};
  Body& kept = bodies_[stream] = std::move(body);
  nghttp2_data_provider provider{{.ptr = &kept}, &Http2Connection::readBody};
  nghttp2_submit_response(session_.get(), stream, headers.data(), headers.size(), &provider);
  flush();
}

void Http2Connection::answer(std::int32_t stream, int status, std::string body) {
  const std::string length = std::to_string(body.size());
  respond(stream, status, length, {.left = std::move(body)});
}

void Http2Connection::answerInPart(std::int32_t stream, std::string_view length, std::string body) {
  respond(stream, 200, length, {.left = std::move(body), .ends = false});
}

void Http2Connection::beginHeaders(std::int32_t stream) {
  // A HEADERS frame with ":status: 200" (static table, index 8) and without END_HEADERS.
  const auto id = static_cast<char>(stream);
  connection_.send(std::string{'\0', '\0', '\1', '\1', '\0', '\0', '\0', '\0', id, '\x88'});
}

void Http2Connection::resetStream(std::int32_t stream, std::uint32_t error) {
  nghttp2_submit_rst_stream(session_.get(), NGHTTP2_FLAG_NONE, stream, error);
  flush();
}

void Http2Connection::goAway(std::int32_t lastStream) {
  nghttp2_submit_goaway(session_.get(), NGHTTP2_FLAG_NONE, lastStream, NGHTTP2_NO_ERROR, nullptr, 0);
  flush();
}

}  // namespace quillmar
