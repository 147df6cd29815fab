// A working copy in which more happens than can be followed one by one, while the extension that
// watches it is asked for badges.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "tests/system/LiveFixture.h"

class LiveStormFixture : public LiveFixture {
 protected:
  // The extension is started by what `launcher` says, a command line in quotes that a program
  // follows.
  explicit LiveStormFixture(const std::string &launcher = "");

  // Makes the storm, and meanwhile asks for badges as fast as they are answered.
  void weather(const std::function<void()> &storm);

  // Not with sanitizers, which take memory of their own.
  void expectBoundedMemory() const;

  // How many lines of the extension's log have that text in them.
  std::size_t logLineCount(const std::string &text) const;

  // An edit of the file is still noticed.
  void expectLiveFile(const std::string &name);
};
