// Talking with the user on the desktop.
#pragma once

#include <string>

#include "companion/Output.h"
#include "companion/conversation/Conversation.h"
#include "companion/conversation/DialogProgram.h"

namespace companion {

// In windows and notifications, where there is no terminal. What is told and reported is on the
// standard streams as well, for the log of whoever started the program.
class DialogConversation final : public Conversation {
 public:
  // `title` names the command for people, such as "Add".
  DialogConversation(std::string title, Output &output);

  // They fail where there is no display or no program that can ask.
  platform::Result<bool> confirm(const std::string &question, const std::string &button,
                                 const std::vector<std::string> &items) override;
  platform::Result<std::optional<std::string>> askForMessage(
      const std::vector<std::string> &items) override;

  bool hasTerminal() const override { return false; }
  void tell(const std::string &line) override;

  // A failure that cannot be a notification becomes a window, if there is a program for that.
  void report(const Report &report) override;

 private:
  const std::string title_;
  Output &output_;
  const platform::Result<DialogProgram> program_;
};

}  // namespace companion
