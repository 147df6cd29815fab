// A session in which commands are opened: a private bus, a home of its own, and a PATH on which are
// only the programs that the test puts there.
#pragma once

#include <string>
#include <vector>

#include "platform/PropertyList.h"
#include "tests/support/bus/PrivateBus.h"
#include "tests/support/files/TemporaryDirectory.h"
#include "tests/support/processes/Command.h"

class OpenSession {
 public:
  // Everything of the session is below it.
  std::string operator/(std::string_view name) const { return directory_ / name; }
  const PrivateBus &bus() const { return bus_; }

  // Leaves a command as the extension does. Its URL.
  std::string leave(const std::string &action, const std::vector<std::string> &paths) const;
  std::string leave(const platform::Dictionary &command) const;
  std::string leaveBytes(std::string_view bytes) const;

  // Whether it has not been taken yet.
  bool isLeft(const std::string &url) const;

  // Sets a variable for the programs that are started from now on; programs have no other ones
  // that say anything of a desktop or an editor.
  void set(const std::string &name, const std::string &value);

  // Puts a shell script on the PATH. Its path.
  std::string install(const std::string &name, const std::string &script) const;

  // The same for one that writes down its arguments, one in brackets on each line, and its standard
  // input, says `output` and ends with `status`.
  void installRecorder(const std::string &name, const std::string &output = "",
                       int status = 0) const;
  std::string argumentsOf(const std::string &name) const;
  std::string inputOf(const std::string &name) const;
  bool wasRun(const std::string &name) const;

  // Opens the command without a terminal, to its end.
  CommandResult open(const std::string &url) const;

  // For those who do it in another way.
  std::vector<std::string> command(const std::string &url,
                                   const std::vector<std::string> &options = {}) const;
  CommandOptions environment() const;

  // What is in the directory for temporary files, of which nothing should be left.
  std::vector<std::string> temporaryFiles() const;

  // The files of messages that could not be used.
  std::vector<std::string> keptMessages() const;

  OpenSession();

 private:
  const TemporaryDirectory directory_;
  CommandOptions environment_;
  const PrivateBus bus_;
  mutable int commandCount_ = 0;
};
