#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "platform/log.h"

namespace quillmar {

// `bearer` sends the stored token; a first 401 causes one refresh and one retry. The others send no token.
// `fromAnswer` stores the token of the answer.
enum class Token { none, bearer, fromAnswer };

enum class Root { required, orDefault };

// Which answers are a success, and whether an error has the client's message or the service's.
enum class Judging {
  by2xx,         // 401, 403 and 404 get the client's message, every other status the service's
  byExactly200,  // every other status gets the service's message
  below400,      // 409 gets the client's message: the email is taken
  byBody,        // any status is a success; the record holds the result
};

struct CallRules {
  Token token = Token::bearer;
  Judging judging = Judging::by2xx;
  Root root = Root::required;
};

// The log lines of a call, with placeholders for values. An empty line is not logged.
struct CallLines {
  void (Log::*write)(std::string_view line) = &Log::print;
  std::string_view noRegion = {};
  std::string_view url = {};         // before it is parsed
  std::string_view region = {};      // the stored one, logged after the URL
  std::string_view invalidURL = {};  // takes the URL
  std::string_view encodeError = {};
  std::string_view error = {};  // the transport's error
  std::string_view noAnswer = {};
  std::string_view status = {};
  std::string_view response = {};  // the first characters of a UTF-8 body
  std::string_view refusal = {};   // a failure, or a body that does not decode
  std::string_view refusedResponse = {};
};

template <class Body, class Answer>
struct CallLog {
  CallLines lines;
  std::string (*sending)(std::string_view url, const Body& body) = nullptr;
  std::string (*success)(const Answer& answer) = nullptr;
};

// Without an answer there is no success line.
template <class Body>
struct CallLog<Body, void> {
  CallLines lines;
  std::string (*sending)(std::string_view url, const Body& body) = nullptr;
};

struct CallFacts {
  std::string_view method;
  std::string_view path;
  CallRules rules;
  const CallLines* lines = nullptr;  // null for calls that do not log their steps
};

// The Body of a call that sends none. A call that receives none has the Answer `void`.
struct NoBody {};

namespace detail {

// Not constexpr: a row that calls it does not compile.
void placeholdersDoNotMatch();

constexpr void checkPlaces(std::string_view path, std::size_t count) {
  while (path.find_first_of("{}") != std::string_view::npos) {
    path.remove_prefix(path.find_first_of("{}"));
    const auto place = path.substr(0, path.find('}') + 1);
    if (count == 0 || (place != "{}" && place != "{%path}" && place != "{%query}")) {
      placeholdersDoNotMatch();
    }
    path.remove_prefix(place.size());
    --count;
  }
  if (count != 0) {
    placeholdersDoNotMatch();
  }
}

}  // namespace detail

// The contract of one call with the service. The path has `places` placeholders: `{}` takes an argument
// unchanged, `{%path}` and `{%query}` percent-encode it for that part of a URL.
template <class Body, class Answer, std::size_t places = 0>
struct CallRow : CallFacts {
  constexpr CallRow(std::string_view method, std::string_view path, CallRules rules = {},
                    const CallLog<Body, Answer>* log = nullptr)
      : CallFacts{method, path, rules, log ? &log->lines : nullptr}, log(log) {
    detail::checkPlaces(path, places);
  }

  const CallLog<Body, Answer>* log = nullptr;
};

// A call that its row describes completely. A call with steps of its own is only a CallRow, and
// NetworkService has a function for it.
template <class Body, class Answer, std::size_t places = 0>
struct Call : CallRow<Body, Answer, places> {
  using CallRow<Body, Answer, places>::CallRow;
};

inline std::string pathArgument(std::string_view text) { return std::string(text); }
std::string pathArgument(std::integral auto number) { return std::to_string(number); }

// Takes exactly `places` arguments.
template <std::size_t places>
class PathArguments {
 public:
  template <class... Arguments>
  requires(sizeof...(Arguments) == places) PathArguments(const Arguments&... arguments)
      : values_{pathArgument(arguments)...} {}

  std::span<const std::string> values() const { return values_; }

 private:
  std::array<std::string, places> values_;
};

std::string filledPath(std::string_view path, std::span<const std::string> arguments);

}  // namespace quillmar
