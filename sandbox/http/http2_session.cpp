#include "sandbox/http/http2_session.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "sandbox/text.h"

namespace quillmar::sandbox {
namespace {

constexpr std::size_t largestWrite = std::size_t{64} * 1024;

std::string_view text(const uint8_t* data, size_t length) {
  return {reinterpret_cast<const char*>(data), length};
}

// nghttp2 copies both, although its pointers are not const.
nghttp2_nv field(std::string& name, std::string& value) {
  const auto bytes = [](std::string& text) { return reinterpret_cast<uint8_t*>(text.data()); };
  return {bytes(name), bytes(value), name.size(), value.size(), NGHTTP2_NV_FLAG_NONE};
}

std::size_t sizeOf(const Headers& headers) {
  std::size_t size = 0;
  for (const auto& [name, value] : headers) {
    size += name.size() + value.size();
  }
  return size;
}

Http2Session& session(void* user) { return *static_cast<Http2Session*>(user); }

}  // namespace

Http2Session::Http2Session(std::shared_ptr<Connection> connection, Exchange& exchange)
    : connection_{std::move(connection)}, exchange_{exchange} {
  nghttp2_session_server_new(&session_, callbacks(), this);
}

Http2Session::~Http2Session() { nghttp2_session_del(session_); }

const nghttp2_session_callbacks* Http2Session::callbacks() {
  static const nghttp2_session_callbacks* const shared = [] {
    nghttp2_session_callbacks* made = nullptr;
    nghttp2_session_callbacks_new(&made);
    nghttp2_session_callbacks_set_on_begin_headers_callback(
        made, [](nghttp2_session*, const nghttp2_frame* frame, void* user) {
          auto& self = session(user);
          self.streams_.try_emplace(frame->hd.stream_id, self.exchange_.network());
          return 0;
        });
    nghttp2_session_callbacks_set_on_header_callback(
        made, [](nghttp2_session*, const nghttp2_frame* frame, const uint8_t* name, size_t nameLength,
                 const uint8_t* value, size_t valueLength, uint8_t, void* user) {
          session(user).headerCame(frame->hd.stream_id, text(name, nameLength), text(value, valueLength));
          return 0;
        });
    nghttp2_session_callbacks_set_on_data_chunk_recv_callback(
        made, [](nghttp2_session*, uint8_t, int32_t id, const uint8_t* data, size_t length, void* user) {
          session(user).dataCame(id, text(data, length));
          return 0;
        });
    nghttp2_session_callbacks_set_on_frame_recv_callback(
        made, [](nghttp2_session*, const nghttp2_frame* frame, void* user) {
          const bool carriesRequest = frame->hd.type == NGHTTP2_HEADERS || frame->hd.type == NGHTTP2_DATA;
          if (carriesRequest && (frame->hd.flags & NGHTTP2_FLAG_END_STREAM) != 0) {
            session(user).requestCame(frame->hd.stream_id);
          }
          return 0;
        });
    nghttp2_session_callbacks_set_on_stream_close_callback(
        made, [](nghttp2_session*, int32_t id, uint32_t, void* user) {
          session(user).streams_.erase(id);
          return 0;
        });
    return made;
  }();
  return shared;
}

void Http2Session::start() {
  if (session_ == nullptr) {
    return;
  }
  connection_->closeNever();
  const std::array settings{nghttp2_settings_entry{NGHTTP2_SETTINGS_MAX_CONCURRENT_STREAMS, 100},
                            nghttp2_settings_entry{NGHTTP2_SETTINGS_MAX_HEADER_LIST_SIZE, largestHeader}};
  nghttp2_submit_settings(session_, NGHTTP2_FLAG_NONE, settings.data(), settings.size());
  flush();
  read();
}

Http2Session::Exchanged* Http2Session::find(int32_t id) {
  const auto found = streams_.find(id);
  return found == streams_.end() ? nullptr : &found->second;
}

void Http2Session::headerCame(int32_t id, std::string_view name, std::string_view value) {
  auto* const stream = find(id);
  if (stream == nullptr) {
    return;
  }
  auto& request = stream->request;
  if (name == ":method") {
    request.method = value;
  } else if (name == ":path") {
    request.target = value;
  } else if (name == ":authority" || name == "host") {
    request.authority = value;
  } else if (!name.starts_with(':') && sizeOf(request.headers) < largestHeader) {
    request.headers.emplace_back(name, value);
  }
}

void Http2Session::dataCame(int32_t id, std::string_view data) {
  auto* const stream = find(id);
  if (stream == nullptr || stream->answered) {
    return;
  }
  if (stream->request.body.size() + data.size() > largestBody) {
    return submit(id, refusalOfLargeBody());
  }
  stream->request.body.append(data);
}

void Http2Session::requestCame(int32_t id) {
  auto* const stream = find(id);
  if (stream == nullptr || stream->answered) {
    return;
  }
  stream->request.secure = true;
  stream->headOnly = stream->request.method == "HEAD";
  exchange_.answer(std::move(stream->request), [self = shared_from_this(), id](Answer answer) {
    if (self->closed_ || self->find(id) == nullptr) {
      return;
    }
    self->submit(id, std::move(answer));
    self->flush();
  });
}

void Http2Session::submit(int32_t id, Answer answer) {
  if (answer.delivery.drop == Drop::beforeAnswer) {
    return close();
  }
  auto& stream = *find(id);
  stream.answered = true;
  stream.answer = std::move(answer);
  auto& headers = stream.answer.headers;
  headers.emplace_back("content-length", std::to_string(stream.answer.body.size()));
  if (!stream.answer.contentType.empty()) {
    headers.emplace_back("content-type", stream.answer.contentType);
  }
  for (auto& [name, value] : headers) {
    name = lowerCase(std::move(name));
  }
  // Pseudo headers must be first.
  headers.emplace(headers.begin(), ":status", std::to_string(stream.answer.status));
  std::vector<nghttp2_nv> fields;
  for (auto& [name, value] : headers) {
    fields.push_back(field(name, value));
  }

  makeReady(id);
  nghttp2_data_provider provider{};
  provider.read_callback = &Http2Session::readAnswer;
  const bool withBody = !stream.answer.body.empty() && !stream.headOnly;
  nghttp2_submit_response(session_, id, fields.data(), fields.size(), withBody ? &provider : nullptr);
}

// Releases the next piece of a slow body, or all of a normal one.
void Http2Session::makeReady(int32_t id) {
  auto& stream = *find(id);
  const auto whole = stream.answer.body.size();
  const auto& delivery = stream.answer.delivery;
  if (delivery.bodyTime.count() <= 0) {
    stream.ready = whole;
    return;
  }
  stream.ready = std::min(whole, stream.ready + whole / piecesOfSlowBody + 1);
  if (stream.ready == whole) {
    return;
  }
  stream.pause.expires_after(delivery.bodyTime / piecesOfSlowBody);
  stream.pause.async_wait([self = shared_from_this(), id](Error error) {
    if (error || self->closed_ || self->find(id) == nullptr) {
      return;
    }
    self->makeReady(id);
    nghttp2_session_resume_data(self->session_, id);
    self->flush();
  });
}

ssize_t Http2Session::readAnswer(nghttp2_session*, int32_t id, uint8_t* buffer, size_t length,
                                 uint32_t* flags, nghttp2_data_source*, void* user) {
  auto& self = session(user);
  auto* const stream = self.find(id);
  if (stream == nullptr) {
    return NGHTTP2_ERR_TEMPORAL_CALLBACK_FAILURE;
  }
  const auto& body = stream->answer.body;
  const bool cut = stream->answer.delivery.drop == Drop::inBody;
  const auto end = cut ? std::min(stream->ready, body.size() / 2) : stream->ready;
  if (stream->sent == end && cut) {
    return NGHTTP2_ERR_CALLBACK_FAILURE;
  }
  if (stream->sent == end && end < body.size()) {
    return NGHTTP2_ERR_DEFERRED;
  }
  const auto size = std::min(length, end - stream->sent);
  std::memcpy(buffer, body.data() + stream->sent, size);
  stream->sent += size;
  if (stream->sent == body.size()) {
    *flags |= NGHTTP2_DATA_FLAG_EOF;
  }
  return ssize_t(size);
}

void Http2Session::read() {
  connection_->read(boost::asio::buffer(incoming_),
                    [self = shared_from_this()](Error error, std::size_t size) {
                      if (error || self->closed_) {
                        return self->close();
                      }
                      if (nghttp2_session_mem_recv(self->session_, self->incoming_.data(), size) < 0) {
                        return self->close();
                      }
                      self->flush();
                      if (!self->closed_) {
                        self->read();
                      }
                    });
}

void Http2Session::flush() {
  if (writing_ || closed_) {
    return;
  }
  outgoing_.clear();
  bool broken = false;
  while (outgoing_.size() < largestWrite) {
    const uint8_t* data = nullptr;
    const auto size = nghttp2_session_mem_send(session_, &data);
    broken = size < 0;
    if (size <= 0) {
      break;
    }
    outgoing_.append(text(data, std::size_t(size)));
  }
  const bool finished =
      broken || (nghttp2_session_want_read(session_) == 0 && nghttp2_session_want_write(session_) == 0);
  if (outgoing_.empty()) {
    if (finished) {
      close();
    }
    return;
  }
  writing_ = true;
  connection_->write(outgoing_, [self = shared_from_this(), broken](Error error, std::size_t) {
    self->writing_ = false;
    if (error || broken) {
      return self->close();
    }
    self->flush();
  });
}

void Http2Session::close() {
  if (closed_) {
    return;
  }
  closed_ = true;
  connection_->close();
}

}  // namespace quillmar::sandbox
