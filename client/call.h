#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "platform/log.h"

namespace quillmar {

// `bearer` calls are sent with the stored token, and a first 401 leads to a refresh and one repetition. The
// others go out without one; the token in the answer of a `fromAnswer` call is the stored one from then on.
enum class Token { none, bearer, fromAnswer };

enum class Root { required, orDefault };

// When an answer is a success, and whose words a refusal has.
enum class Judging {
  by2xx,         // 401, 403 and 404 have the client's words, every other status the service's
  byExactly200,  // every other status has the service's words
  below400,      // so is an account joined to a family: 409 has the client's words
  byBody,        // whatever the status is: what is to be known stands in the record
};

struct CallRules {
  Token token = Token::bearer;
  Judging judging = Judging::by2xx;
  Root root = Root::required;
};

// The lines that a call leaves in a log on its way, with places for what they tell. An empty one is not told.
struct CallLines {
  void (Log::*write)(std::string_view line) = &Log::print;
  std::string_view noRegion = {};
  std::string_view url = {};         // before it is looked at
  std::string_view region = {};      // the stored one, after the URL
  std::string_view invalidURL = {};  // with the URL
  std::string_view encodeError = {};
  std::string_view error = {};  // there is no answer, and why
  std::string_view noAnswer = {};
  std::string_view status = {};
  std::string_view response = {};  // the first characters of a body that is text
  std::string_view refusal = {};   // an answer that is no success, or no record
  std::string_view refusedResponse = {};
};

template <class Body, class Answer>
struct CallLog {
  CallLines lines;
  std::string (*sending)(std::string_view url, const Body& body) = nullptr;
  std::string (*success)(const Answer& answer) = nullptr;
};

// A success without an answer has nothing to tell.
template <class Body>
struct CallLog<Body, void> {
  CallLines lines;
  std::string (*sending)(std::string_view url, const Body& body) = nullptr;
};

struct CallFacts {
  std::string_view method;
  std::string_view path;
  CallRules rules;
  const CallLines* lines = nullptr;  // of the few calls that tell a log of their way
};

// The body of a call without one. A call without an answer has `void` there.
struct NoBody {};

namespace detail {

// Not constexpr, so that a row that comes to it does not compile.
void placesAreNotWhatTheCallSays();

constexpr void checkPlaces(std::string_view path, std::size_t count) {
  while (path.find_first_of("{}") != std::string_view::npos) {
    path.remove_prefix(path.find_first_of("{}"));
    const auto place = path.substr(0, path.find('}') + 1);
    if (count == 0 || (place != "{}" && place != "{%path}" && place != "{%query}")) {
      placesAreNotWhatTheCallSays();
    }
    path.remove_prefix(place.size());
    --count;
  }
  if (count != 0) {
    placesAreNotWhatTheCallSays();
  }
}

}  // namespace detail

// What the client and the service have agreed on for a call. The path has as many places as the call's last
// parameter says: `{}` takes an argument as it stands, `{%path}` and `{%query}` percent-encode it for that
// part of a URL.
template <class Body, class Answer, std::size_t places = 0>
struct CallRow : CallFacts {
  constexpr CallRow(std::string_view method, std::string_view path, CallRules rules = {},
                    const CallLog<Body, Answer>* log = nullptr)
      : CallFacts{method, path, rules, log ? &log->lines : nullptr}, log(log) {
    detail::checkPlaces(path, places);
  }

  const CallLog<Body, Answer>* log = nullptr;
};

// A row that is all there is to a call. A call that goes a way of its own is a CallRow only, and
// NetworkService has a function for it.
template <class Body, class Answer, std::size_t places = 0>
struct Call : CallRow<Body, Answer, places> {
  using CallRow<Body, Answer, places>::CallRow;
};

inline std::string pathArgument(std::string_view text) { return std::string(text); }
std::string pathArgument(std::integral auto number) { return std::to_string(number); }

// Exactly as many arguments as a path has places.
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
