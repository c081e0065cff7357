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

// Where the call completes. A call that can't be sent fails at once, unless it always completes on the main
// queue.
enum class Ending { onSession, onMainQueue };

// One call, with what the shared rules need to know about it.
struct ContractCall {
  std::string name = {};
  std::string method = {};
  std::string path = {};
  // The path with its placeholders, if it has any.
  std::string pattern = {};
  std::optional<std::string> body = {};
  // The names of the records; empty for a call without one.
  std::string bodyRecord = {};
  Token token = Token::bearer;
  Root root = Root::required;
  Judging judging = Judging::by2xx;
  Ending ending = Ending::onSession;
  // The body of a success; empty for a call without a record.
  std::string answer = {};
  std::string answerRecord = {};
  // An empty object is a valid answer.
  bool acceptsEmptyObject = false;
  // The log lines if there is no root.
  std::vector<std::string> noRootLines = {};
  // The call writes to the system log.
  bool leavesTrail = false;
  std::function<void(NetworkService&, Completion<void>)> start = {};
  // Starts the call with text that JSON can't encode; empty if the body has no text. The next member is the
  // resulting error.
  std::function<void(NetworkService&, Completion<void>)> startUnwritable = {};
  std::string unwritableEnd = {};
};

inline void PrintTo(const ContractCall& call, std::ostream* out) { *out << call.name; }

// Drops the value: the rules check only how a call ends.
template <class T>
Completion<T> ending(Completion<void> completion) {
  return [completion = std::move(completion)](const Result<T>& result) {
    completion(result.ok() ? success() : Result<void>(result.error()));
  };
}

std::vector<ContractCall> accountCalls();  // including enrollment and check-in
std::vector<ContractCall> childCalls();
std::vector<ContractCall> deviceCalls();
std::vector<ContractCall> familyCalls();
// All calls that follow the common rules, and the refresh, which has its own.
std::vector<ContractCall> allCalls();
ContractCall refreshCall();

// The error of a refusal whose body has the service's message or is unreadable; nullopt if the call does not
// decode the body.
std::optional<NetworkError> refusal(const ContractCall& call, int status,
                                    const std::optional<std::string>& words);

}  // namespace quillmar
