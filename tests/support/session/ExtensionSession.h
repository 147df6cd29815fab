// A desktop session in small: a private bus that starts the built extension process on first use, a
// home of its own, and the companion program to run in it. The user's own session, home and
// Subversion configuration are neither seen nor changed.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

#include "platform/PropertyList.h"
#include "tests/support/bus/PrivateBus.h"
#include "tests/support/files/Subversion.h"
#include "tests/support/files/TemporaryDirectory.h"
#include "tests/support/processes/Command.h"

class ExtensionSession {
 public:
  struct Setup {
    // How the session's environment differs from the usual one.
    std::map<std::string, std::string> environment = {};
    std::vector<std::string> unset = {};
    // What the bus starts in place of the extension; the command line of a service file.
    std::string extensionCommand = {};
    // Whether the bus can start the extension at all.
    bool isActivatable = true;
  };

  // That of an extension whose log goes into a file. `launcher`, if there is one, is what runs it.
  static Setup loggingSetup(const std::string &launcher = "");

  ExtensionSession() : ExtensionSession(Setup()) {}
  explicit ExtensionSession(const Setup &setup);

  // Ends the bus and waits until the extension, if it was started, has ended with it.
  ~ExtensionSession();
  ExtensionSession(const ExtensionSession &) = delete;
  ExtensionSession &operator=(const ExtensionSession &) = delete;

  // Everything of the session is below it.
  const TemporaryDirectory &directory() const { return directory_; }
  std::string operator/(std::string_view name) const { return directory_ / name; }
  const PrivateBus &bus() const { return *bus_; }

  // A new bus in the place of one that was killed; the session goes on with it.
  void replaceBus();

  // Runs `halvern` in the session; `options` change its environment further.
  CommandResult halvern(const std::vector<std::string> &arguments,
                        const CommandOptions &options = {}) const;

  // Its command line and environment, for those who start it in another way.
  static std::string halvernProgram();
  static std::string extensionProgram();
  CommandOptions environment() const;

  // The process that has the extension's name; -1 if none has.
  pid_t extensionProcess() const;

  // What extensions have logged so far in a session with that setup.
  std::string log() const;

  // Files in the directory that companion and extension share.
  std::string sharedPath(std::string_view name = "") const;
  platform::Dictionary sharedDictionary(std::string_view name) const;
  void writeSharedDictionary(std::string_view name, const platform::Dictionary &dictionary) const;

 private:
  void writeServiceFile(const Setup &setup) const;

  const TemporaryDirectory directory_;
  const CommandOptions environment_;
  std::optional<PrivateBus> bus_;
};
