#pragma once

#include <string>
#include <vector>

namespace quillmar::sandbox::test {

// A call of the service's contract. The placeholders {child}, {device}, {spare}, {member}, {code} and
// {pending} stand for ids of the test's fixture.
struct ContractCall {
  std::string name;
  std::string method;
  std::string path;
  bool needsToken;
  std::string body;               // of a valid request
  int status;                     // of its answer
  std::vector<std::string> keys;  // of its answer's object; empty: no body
  std::string badBody;            // an invalid body
  std::string complaint;          // what its refusal must mention
  int foreign;                    // the status for another family's parent; 0: the call concerns no family
};

[[nodiscard]] const std::vector<ContractCall>& contract();

}  // namespace quillmar::sandbox::test
