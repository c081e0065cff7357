#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "sandbox/service.h"
#include "testing/temporary_directory.h"

namespace quillmar::test {

using Words = std::vector<std::string>;

Words operator+(Words words, const Words& more);

// A login session of its own, in which programs are started as a person would start them: nothing of the
// test's environment reaches them.
class ProgramSession {
 public:
  ProgramSession();

  // The variables as "NAME=value": these, and the session's own but for those of the same name.
  Words environment(Words variables = {}) const;
  // What to run for these words to run in it.
  Words running(const Words& words, const Words& variables = {}) const;

  const std::filesystem::path& home() const { return home_.path(); }
  const std::filesystem::path& runtime() const { return runtime_.path(); }

 private:
  const TemporaryDirectory home_;
  const TemporaryDirectory runtime_;
};

// A program for an installation that uses this service, on a machine whose network stays as it is.
Words programFor(const std::string& program, const std::filesystem::path& dataDirectory,
                 const sandbox::Service& service, const Words& command = {});

}  // namespace quillmar::test
