#pragma once

#include "programs/agent/options.h"

// What each word of the command line does. Each waits until it is done.
namespace quillmar::agent {

ExitStatus enroll(const Options& options);
ExitStatus run(const Options& options);
ExitStatus tellStatus(const Options& options);
ExitStatus sync(const Options& options);
ExitStatus reset(const Options& options);
ExitStatus examine(const Options& options);

// What each of them ends with where another process has the work and can't be asked.
ExitStatus tellNobodyAnswers();

}  // namespace quillmar::agent
