// The application that takes the commands of the menu: a desktop entry with the stand-in, and what
// the extension has left for it to read.
#pragma once

#include <string>
#include <vector>

#include "tests/support/session/ExtensionSession.h"

class CommandApplication {
 public:
  explicit CommandApplication(const ExtensionSession &session) : session_(session) {}

  // The application's desktop entry, with further lines in it; and its place in the user's data
  // directory.
  static std::string desktopEntry(const std::string &lines = "");
  void install(const std::string &lines = "") const;

  std::string commandDirectory() const { return session_.sharedPath("Commands"); }

  // The names in the directory of commands, in alphabetical order; none while it is not there.
  std::vector<std::string> commandNames() const;

  // The one command there is; throws if there is another number of them.
  platform::Dictionary command() const;
  std::vector<std::string> sentPaths() const;

 private:
  const ExtensionSession &session_;
};
