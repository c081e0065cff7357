#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "tunnel/dns/query.h"

namespace quillmar::tunnel {

enum class AnswerFault { malformed, cutShort, ofAnotherQuestion };

// What the endpoint said to one question, ready to be handed to everybody who asks the same.
//
// Clients keep an answer for as long as its records say. So that a change at the service acts within a minute
// for them too, no record says more than `longestLife`, and `longestAbsence` where something does not exist.
class Answer {
 public:
  static constexpr std::chrono::seconds longestLife{60};
  static constexpr std::chrono::seconds longestAbsence{10};

  // `age` is for how long it has been kept on its way here.
  static std::variant<Answer, AnswerFault> parse(std::string message, const Question& question,
                                                 std::chrono::seconds age);

  // For how long it may be given again. Zero for what says nothing about that.
  std::chrono::seconds lifetime() const { return lifetime_; }
  // The endpoint could not or would not answer.
  bool isFailure() const { return isFailure_; }
  std::size_t size() const;

  // The answer to this query for the same question, `elapsed` after it came.
  std::string toQuery(const Query& query, std::chrono::seconds elapsed) const;

 private:
  Answer() = default;

  struct Survey;
  void take(const Record& record, Survey& survey);
  void limitLives(const Survey& survey, std::chrono::seconds age);

  std::string message_;               // up to its OPT record
  std::vector<std::uint16_t> lives_;  // where its TTLs stand
  std::string extendedErrors_;        // options as they came
  std::chrono::seconds lifetime_{0};
  bool isFailure_ = false;
};

}  // namespace quillmar::tunnel
