// The desktop's own program for asking in a window.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/Result.h"

namespace companion {

// Whether windows can be shown at all.
bool hasDisplay();

// zenity or kdialog. Nothing that it is told can become an option or markup. Its operations block
// until the window is closed.
class DialogProgram {
 public:
  // The one that is there, the desktop's own first. Fails with a sentence where there is none, or
  // no display.
  static platform::Result<DialogProgram> find();

  // Whether the user agrees. Fails where the program does.
  platform::Result<bool> confirm(const std::string &question, const std::string &button,
                                 const std::vector<std::string> &items) const;

  // The message for a commit of the items; none if the user gave up or wrote nothing.
  platform::Result<std::optional<std::string>> askForMessage(
      const std::vector<std::string> &items) const;

  void showError(const std::string &headline, const std::vector<std::string> &lines) const;

 private:
  enum class Kind { zenity, kdialog };

  DialogProgram(Kind kind, std::string path) : kind_(kind), path_(std::move(path)) {}

  Kind kind_;
  std::string path_;
};

}  // namespace companion
