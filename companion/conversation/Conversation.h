// Talking with the user about a command: in the terminal, or in windows where there is none. Every
// operation blocks until it is answered.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "companion/conversation/Report.h"
#include "platform/Result.h"

namespace companion {

class Conversation {
 public:
  virtual ~Conversation() = default;

  // Whether the user agrees. `question` is a sentence; `button` a word for agreeing, such as
  // "Revert"; `items` what it is about, as displayed paths or lines that begin with a state. Fails
  // where there is no way to ask.
  virtual platform::Result<bool> confirm(const std::string &question, const std::string &button,
                                         const std::vector<std::string> &items) = 0;

  // The message that the user wrote for a commit of the items, which are shown to them, as
  // Subversion takes it: valid UTF-8 with LF alone between the lines, neither blank nor with blank
  // lines at its ends (MessageText). None if the user gave up or wrote nothing. Fails where there
  // is no way to ask.
  virtual platform::Result<std::optional<std::string>> askForMessage(
      const std::vector<std::string> &items) = 0;

  // Whether a library may ask for passwords on the terminal.
  virtual bool hasTerminal() const = 0;

  // Tells a step while a command is under way, such as a file that was updated.
  virtual void tell(const std::string &line) = 0;

  // Tells how the command went.
  virtual void report(const Report &report) = 0;
};

}  // namespace companion
