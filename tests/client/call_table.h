#pragma once

#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "tests/client/client_test.h"

namespace quillmar {

enum class Token { none, bearer };
enum class Root { required, orDefault };
// When an answer is a success, and whose words a refusal has: `below400` is how a parent joins a family,
// `byBody` how an invitation is looked up.
enum class Judging { by2xx, byExactly200, below400, byBody };
// Where the call completes. What can't be sent fails at once, unless all ends come on the main queue.
enum class Ending { onSession, onMainQueue };

// One call as the rules that all calls share see it.
struct Call {
  std::string name = {};
  std::string method = {};
  std::string path = {};
  std::optional<std::string> body = {};
  Token token = Token::bearer;
  Root root = Root::required;
  Judging judging = Judging::by2xx;
  Ending ending = Ending::onSession;
  // Of a success; empty for a call without a record.
  std::string answer = {};
  // An answer that is an empty object is one too.
  bool acceptsEmptyObject = false;
  // What the log says where there is no root.
  std::vector<std::string> noRootLines = {};
  // The call writes to the system's log.
  bool leavesTrail = false;
  std::function<void(NetworkService&, Completion<void>)> start = {};
  // The same with text in it that JSON can't carry, and how that ends; none where no text goes into a body.
  std::function<void(NetworkService&, Completion<void>)> startUnwritable = {};
  std::string unwritableEnd = {};
};

inline void PrintTo(const Call& call, std::ostream* out) { *out << call.name; }

// The rules look at how a call ends and not at what it brings.
template <class T>
Completion<T> ending(Completion<void> completion) {
  return [completion = std::move(completion)](const Result<T>& result) {
    completion(result.ok() ? success() : Result<void>(result.error()));
  };
}

std::vector<Call> accountCalls();  // enrollment and check-in too
std::vector<Call> childCalls();
std::vector<Call> deviceCalls();
std::vector<Call> familyCalls();
std::vector<Call> allCalls();

// How a refusal ends whose body holds the service's own words, or nothing that can be read; none where the
// body is not what the call wants to read.
std::optional<NetworkError> refusal(const Call& call, int status, const std::optional<std::string>& words);

}  // namespace quillmar
