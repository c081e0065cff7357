#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "sandbox/service.h"
#include "testing/temporary_directory.h"

namespace quillmar::test {

using Words = std::vector<std::string>;

Words operator+(Words words, const Words& more);

// A login session in which programs are started as a person would start them: they get none of the test's
// environment.
class ProgramSession {
 public:
  ProgramSession();

  // The environment as "NAME=value": `variables`, and the session's own variables with other names.
  Words environment(Words variables = {}) const;
  // The command line that runs these words in the session.
  Words running(const Words& words, const Words& variables = {}) const;

  const std::filesystem::path& home() const { return home_.path(); }
  const std::filesystem::path& runtime() const { return runtime_.path(); }

 private:
  const TemporaryDirectory home_;
  const TemporaryDirectory runtime_;
};

// A program for an installation that uses this service, on a machine whose network is not changed.
Words programFor(const std::string& program, const std::filesystem::path& dataDirectory,
                 const sandbox::Service& service, const Words& command = {});

}  // namespace quillmar::test
