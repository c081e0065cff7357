#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quillmar::sandbox {

using Headers = std::vector<std::pair<std::string, std::string>>;

// The first header of this name, ignoring case; empty if there is none.
[[nodiscard]] std::string_view header(const Headers& headers, std::string_view name);

struct Request {
  std::string method{};
  std::string target{};     // path and query, as sent
  std::string authority{};  // requested host and port; may be empty
  bool secure = false;      // came over TLS
  Headers headers{};        // without HTTP/2's pseudo headers
  std::string body{};
};

enum class Drop { none, beforeAnswer, inBody };

// How an answer is sent; simulates a bad network.
struct Delivery {
  std::chrono::milliseconds latency{0};
  std::chrono::milliseconds bodyTime{0};  // over which the body is spread
  Drop drop = Drop::none;
  bool held = false;  // until released
};

struct Answer {
  int status = 200;
  std::string contentType{};  // empty: no body
  std::string body{};
  Headers headers{};
  Delivery delivery{};
};

using Handler = std::function<Answer(const Request&)>;

inline constexpr std::size_t largestHeader = std::size_t{16} * 1024;
inline constexpr std::size_t largestBody = 1'000'000;
inline constexpr std::size_t piecesOfSlowBody = 10;

// {"error": text}; the client shows the text to the person.
[[nodiscard]] Answer refusal(int status, std::string_view text);

[[nodiscard]] Answer refusalOfLargeBody();
[[nodiscard]] Answer refusalOfMalformedRequest();

}  // namespace quillmar::sandbox
