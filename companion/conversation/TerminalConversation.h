// Talking with the user in a terminal.
#pragma once

#include "companion/Output.h"
#include "companion/conversation/Conversation.h"
#include "companion/conversation/EditingPlace.h"

namespace companion {

// In the terminal that standard input and standard output are.
class TerminalConversation final : public Conversation {
 public:
  explicit TerminalConversation(Output &output) : output_(output) {}

  // Whether both of them are a terminal.
  static bool isPossible();

  platform::Result<bool> confirm(const std::string &question, const std::string &button,
                                 const std::vector<std::string> &items) override;
  platform::Result<std::optional<std::string>> askForMessage(
      const std::vector<std::string> &items) override;
  bool hasTerminal() const override { return true; }
  void tell(const std::string &line) override;
  void report(const Report &report) override;

 private:
  Output &output_;
  std::optional<EditingPlace> place_;  // of the last message
};

// One line of standard input, without its end; none if the input ends before the line
// does, or if a signal comes that the program has a handler for: who interrupts a question agrees
// to nothing.
std::optional<std::string> readInputLine();

}  // namespace companion
