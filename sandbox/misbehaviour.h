#pragma once

#include <chrono>
#include <mutex>
#include <optional>
#include <random>
#include <string>

#include "sandbox/http/message.h"

namespace quillmar::sandbox {

enum class ErrorBody { json, html };

// What the service does wrong on purpose. A value made anew is a service that does everything right.
struct Misbehaviour {
  // Only requests whose path holds this text are ill served; empty: all of them. The last four fields always
  // hold.
  std::string onlyPath{};

  std::chrono::milliseconds latency{0};   // before every answer
  std::chrono::milliseconds bodyTime{0};  // over which each body is spread
  bool hold = false;                      // answers wait until this is false again

  bool failEverything = false;
  int errorCount = 0;     // the next so many answers are errors
  double errorShare = 0;  // of all answers, 0 to 1
  int errorStatus = 500;
  ErrorBody errorBody = ErrorBody::json;

  int dropCount = 0;  // the next so many connections break after the request was carried out
  double dropShare = 0;
  Drop drop = Drop::beforeAnswer;

  bool refuseRefresh = false;
  std::string checkinStatus = "ok";
  bool withoutEndpoint = false;  // enrollment status and check-in leave out the endpoint and its base
  std::optional<std::string> publicAddress{};  // from which requests seem to come
};

// Applies a Misbehaviour to requests as they come. Any thread.
class Saboteur {
 public:
  [[nodiscard]] Misbehaviour present() const;
  void set(Misbehaviour misbehaviour);

  struct Plan {
    Delivery delivery;
    std::optional<Answer> error;  // given in place of the call's own answer; the call is not carried out
  };
  [[nodiscard]] Plan planFor(const Request& request);

 private:
  bool happens(int& count, double share);

  mutable std::mutex mutex_;
  Misbehaviour present_;
  std::mt19937 dice_{20161008};  // the same misfortunes in every run
};

}  // namespace quillmar::sandbox
