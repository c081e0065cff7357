#pragma once

#include <chrono>
#include <mutex>
#include <optional>
#include <random>
#include <string>

#include "sandbox/http/message.h"

namespace quillmar::sandbox {

enum class ErrorBody { json, html };

// Faults that the service simulates. By default there are none.
struct Misbehaviour {
  // Only requests whose path contains this text are affected; empty: all. The last four fields always apply.
  std::string onlyPath{};

  std::chrono::milliseconds latency{0};   // before every answer
  std::chrono::milliseconds bodyTime{0};  // over which each body is spread
  bool hold = false;                      // answers wait until this is false

  bool failEverything = false;
  int errorCount = 0;     // this many of the next answers are errors
  double errorShare = 0;  // the share of answers that are errors, 0 to 1
  int errorStatus = 500;
  ErrorBody errorBody = ErrorBody::json;

  int dropCount = 0;  // this many of the next connections break after the call was carried out
  double dropShare = 0;
  Drop drop = Drop::beforeAnswer;

  bool refuseRefresh = false;
  std::string checkinStatus = "ok";
  bool withoutEndpoint = false;  // enrollment status and check-in omit the endpoint and its base
  std::optional<std::string> publicAddress{};  // the apparent source address of requests
};

// Applies a Misbehaviour to requests. Thread-safe.
class FaultInjector {
 public:
  [[nodiscard]] Misbehaviour present() const;
  void set(Misbehaviour misbehaviour);

  struct Plan {
    Delivery delivery;
    std::optional<Answer> error;  // replaces the answer; the call is not carried out
  };
  [[nodiscard]] Plan planFor(const Request& request);

 private:
  bool happens(int& count, double share);

  mutable std::mutex mutex_;
  Misbehaviour present_;
  std::mt19937 dice_{20161008};  // the same sequence in every run
};

}  // namespace quillmar::sandbox
