#include "tools/common/start.h"

#include <iostream>

#include "command_line/standard_streams.h"
#include "platform/common/authority_file.h"

namespace quillmar {

command_line::Option authorityOption(std::string& caFile) {
  return {"--ca-file", "FILE", "Trust the certificate authorities in FILE too", command_line::to(caFile)};
}

std::optional<int> endsAtOnce(const command_line::Program& program, int count, char** arguments,
                              const std::string& caFile) {
  command_line::holdStandardStreams();
  if (const auto answer = command_line::read(program, command_line::wordsOf(count, arguments))) {
    return command_line::say(program, *answer);
  }
  if (const auto problem = problemWithAuthorities(caFile)) {
    std::cerr << program.name << ": " << *problem << '\n';
    return unusableAuthorities;
  }
  return std::nullopt;
}

}  // namespace quillmar
