#pragma once

#include "programs/agent/options.h"

// One function for each command of the command line. Each returns when the command is done.
namespace quillmar::agent {

ExitStatus enroll(const Options& options);
ExitStatus run(const Options& options);
ExitStatus tellStatus(const Options& options);
ExitStatus sync(const Options& options);
ExitStatus reset(const Options& options);
ExitStatus examine(const Options& options);

// The exit status if another process does the work but does not answer.
ExitStatus tellNobodyAnswers();

}  // namespace quillmar::agent
