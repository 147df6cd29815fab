// Another program that is given a text and gives one back.
#pragma once

#include <string>
#include <vector>

#include "platform/Result.h"

namespace companion {

struct ProgramAnswer {
  int status;
  std::string output;  // its standard output
};

// Runs the program with `input` as its standard input and waits for its end, however long that
// takes. The program may read all of the input or nothing. Fails with a reason where it cannot be
// started or is ended by a signal.
platform::Result<ProgramAnswer> runWithInput(const std::vector<std::string> &arguments,
                                             const std::string &input);

}  // namespace companion
