// A program in a terminal of its own, at which the test sits.
#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

#include "tests/support/processes/Command.h"

class PseudoTerminal {
 public:
  // Its standard streams are the terminal; all three are `output`.
  explicit PseudoTerminal(const std::vector<std::string> &arguments,
                          const CommandOptions &options = {});
  ~PseudoTerminal();
  PseudoTerminal(const PseudoTerminal &) = delete;
  PseudoTerminal &operator=(const PseudoTerminal &) = delete;

  // Reads until the text has been shown; false if it is not, within a time that only a broken
  // program takes. What was shown up to it does not count for the next one.
  bool waitFor(std::string_view text);

  // Keys, as they reach a program: "\x03" is Ctrl-C, "\x04" Ctrl-D.
  void type(std::string_view keys) const;

  // Types the keys again and again until the text is shown: a signal may come before the program
  // waits for one. False as with `waitFor`.
  bool typeUntil(std::string_view keys, std::string_view text);

  // Waits until it has ended; it is killed if that takes as long as with a broken one. The output
  // is all that was shown, also what was typed, with LF at the ends of lines.
  CommandResult waitForEnd();

 private:
  // Reads what is there within so many milliseconds; false if nothing is.
  bool readMore(int patience = longPatience);
  bool hasShown(std::string_view text);

  static constexpr int longPatience = 30'000;

  int terminal_ = -1;
  pid_t process_ = -1;
  std::string output_;
  std::size_t seen_ = 0;
};
