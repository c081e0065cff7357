#pragma once

#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "client/call.h"
#include "tests/client/client_test.h"

namespace quillmar {

// Where the call completes. What can't be sent fails at once, unless all ends come on the main queue.
enum class Ending { onSession, onMainQueue };

// One call as the rules that all calls share see it.
struct ContractCall {
  std::string name = {};
  std::string method = {};
  std::string path = {};
  // The path without its arguments, where it has some.
  std::string pattern = {};
  std::optional<std::string> body = {};
  // The records' names; empty for a call without one.
  std::string bodyRecord = {};
  Token token = Token::bearer;
  Root root = Root::required;
  Judging judging = Judging::by2xx;
  Ending ending = Ending::onSession;
  // Of a success; empty for a call without a record.
  std::string answer = {};
  std::string answerRecord = {};
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

inline void PrintTo(const ContractCall& call, std::ostream* out) { *out << call.name; }

// The rules look at how a call ends and not at what it brings.
template <class T>
Completion<T> ending(Completion<void> completion) {
  return [completion = std::move(completion)](const Result<T>& result) {
    completion(result.ok() ? success() : Result<void>(result.error()));
  };
}

std::vector<ContractCall> accountCalls();  // enrollment and check-in too
std::vector<ContractCall> childCalls();
std::vector<ContractCall> deviceCalls();
std::vector<ContractCall> familyCalls();
// All that follow the common rules, and the refresh, which has rules of its own.
std::vector<ContractCall> allCalls();
ContractCall refreshCall();

// How a refusal ends whose body holds the service's own words, or nothing that can be read; none where the
// body is not what the call wants to read.
std::optional<NetworkError> refusal(const ContractCall& call, int status,
                                    const std::optional<std::string>& words);

}  // namespace quillmar
