#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include "tunnel/dns/query.h"

namespace quillmar::tunnel {

enum class AnswerFault { malformed, cutShort, ofAnotherQuestion };

// The endpoint's answer to a question, which can be given to every client that asks it.
//
// Clients keep an answer for as long as its TTLs say. No TTL is longer than `longestLife`, so that a change
// at the service reaches them within a minute. If the answer says that something does not exist, no TTL is
// longer than `longestAbsence`.
class Answer {
 public:
  static constexpr std::chrono::seconds longestLife{60};
  static constexpr std::chrono::seconds longestAbsence{10};

  // `age`: how long caches on the way have kept it.
  static std::variant<Answer, AnswerFault> parse(std::string message, const Question& question,
                                                 std::chrono::seconds age);

  // How long it may be kept here. Zero if it does not say.
  std::chrono::seconds lifetime() const { return lifetime_; }
  // The response code is an error other than NXDOMAIN.
  bool isFailure() const { return isFailure_; }
  std::size_t size() const;

  // The reply to a query for the same question, `elapsed` after the answer arrived.
  std::string toQuery(const Query& query, std::chrono::seconds elapsed) const;

 private:
  Answer() = default;

  struct Survey;
  void take(const Record& record, Survey& survey);
  void limitLives(const Survey& survey, std::chrono::seconds age);

  std::string message_;         // without its OPT record
  std::u16string lives_;        // offsets of the TTLs; a few need no memory of their own
  std::string extendedErrors_;  // as options of an OPT record
  std::chrono::seconds lifetime_{0};
  bool isFailure_ = false;
};

}  // namespace quillmar::tunnel
