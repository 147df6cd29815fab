// Another program that is given a text and gives one back.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/Result.h"

namespace companion {

struct ProgramAnswer {
  std::optional<int> status;  // none if a signal ended it
  int signal = 0;             // that signal
  std::string output;         // its standard output
  std::string errors;         // its standard error
};

// Runs the program with `input` as its standard input and waits for its end, however long that
// takes. The program may read all of the input or nothing. Fails with a reason where it cannot be
// started.
platform::Result<ProgramAnswer> runWithInput(const std::vector<std::string> &arguments,
                                             const std::string &input);

}  // namespace companion
