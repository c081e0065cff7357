#pragma once

#include <string>
#include <vector>

namespace quillmar::sandbox::test {

// One call of the service's contract. In its texts {child}, {device}, {spare}, {member}, {code}
// and {pending} stand for what the test has set up.
struct ContractCall {
  std::string name;
  std::string method;
  std::string path;
  bool needsToken;
  std::string body;               // of a good request
  int status;                     // of its answer
  std::vector<std::string> keys;  // of its answer's object; none: no body
  std::string badBody;            // a body of a wrong form, and
  std::string complaint;          // what the refusal has to name of it
  int foreign;                    // what another family's parent gets; 0: nothing here belongs to anybody
};

[[nodiscard]] const std::vector<ContractCall>& contract();

}  // namespace quillmar::sandbox::test
