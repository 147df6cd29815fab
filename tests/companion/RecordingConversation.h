// A user whose answers the test says, and who remembers what was said.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "companion/conversation/Conversation.h"

class RecordingConversation : public companion::Conversation {
 public:
  platform::Result<bool> confirm(const std::string & /*question*/, const std::string &button,
                                 const std::vector<std::string> &items) override {
    buttons.push_back(button);
    asked.push_back(items);
    whileAsking();
    return agreement;
  }

  platform::Result<std::optional<std::string>> askForMessage(
      const std::vector<std::string> &items) override {
    asked.push_back(items);
    whileAsking();
    return message;
  }

  bool hasTerminal() const override { return false; }
  void tell(const std::string &line) override {
    told.push_back(line);
    whileTelling();
  }
  void report(const companion::Report & /*report*/) override {}

  platform::Result<bool> agreement = true;
  platform::Result<std::optional<std::string>> message = std::optional<std::string>("a message");
  std::function<void()> whileAsking = [] {};
  std::function<void()> whileTelling = [] {};

  std::vector<std::string> buttons;
  std::vector<std::vector<std::string>> asked;  // the items of each question
  std::vector<std::string> told;
};
