// Where the commands that change working copies are tested: a home, a repository and a working copy
// of it.
#pragma once

#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "companion/subversion/WorkingCopyCommands.h"
#include "tests/companion/RecordingConversation.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/files/Subversion.h"
#include "tests/support/files/TemporaryDirectory.h"
#include "tests/support/processes/RunningProgram.h"

class CommandFixture : public testing::Test {
 protected:
  using Lines = std::vector<std::string>;

  CommandFixture();

  static void expectReport(const companion::Report &report, const Lines &done,
                           const Lines &failures);

  // What `svn status` says of the working copy.
  std::string status() const { return wc.svn({"status"}); }

  // A script of the repository, such as "pre-commit".
  void writeHook(const std::string &name, const std::string &script) const;

  // Writes into the user's Subversion configuration.
  void configure(const std::string &lines) const;

  // From now on the working copy speaks to a server whose program writes a line into the file
  // "connections" each time that it is started.
  void useServer(const std::string &settings) const;

  TemporaryDirectory directory;
  const EnvironmentVariable home{"HOME", directory / "home"};
  const EnvironmentVariable state{"XDG_STATE_HOME", directory / "state"};
  const WorkingCopy wc{directory};
  RecordingConversation conversation;
};

// Another program in the working copy, which holds its lock, or that of the folder in it, as long
// as the object lives.
class LockingProgram {
 public:
  LockingProgram(const TemporaryDirectory &directory, const WorkingCopy &wc,
                 const std::string &folder = ".");
  ~LockingProgram();
  LockingProgram(const LockingProgram &) = delete;
  LockingProgram &operator=(const LockingProgram &) = delete;

 private:
  std::fstream end_;
  RunningProgram program_;
};

// Another program that keeps the database of the working copy for itself as long as the object
// lives.
class DatabaseHoldingProgram {
 public:
  explicit DatabaseHoldingProgram(const WorkingCopy &wc);
  ~DatabaseHoldingProgram();
  DatabaseHoldingProgram(const DatabaseHoldingProgram &) = delete;
  DatabaseHoldingProgram &operator=(const DatabaseHoldingProgram &) = delete;

 private:
  pid_t process_ = -1;
};

// Names that something on the way might take for more than a name.
inline const std::vector<std::string> namesOfAllKinds = {
    "-rHEAD", "a@1.txt", "at@", "@", "[ab]*?.txt", "b\\s", "grüße 文書", " spaces ", "100%20.txt",
};
