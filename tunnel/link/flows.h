#pragma once

#include <string>

namespace quillmar::tunnel {

// The kernel goes on translating a flow as it did when the flow began. Makes it look anew at those of DNS.
// The problem, if there is one.
std::string forgetDnsFlows();

}  // namespace quillmar::tunnel
