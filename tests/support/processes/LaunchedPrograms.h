// The programs that others launch during a test. Whoever launches them is not their parent, so they
// come to this process, which takes in the orphans among its descendants.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

// One of them, seen through the kernel's eyes while it runs.
class LaunchedProgram {
 public:
  explicit LaunchedProgram(pid_t process) : process_(process) {}

  pid_t process() const { return process_; }

  // Its name and what it was given, one each.
  std::vector<std::string> arguments() const;
  std::map<std::string, std::string> environment() const;

  // A file of the kernel about it, such as "limits"; and one line of "status" by its name.
  std::string file(const std::string &name) const;
  std::string status(const std::string &name) const;

  bool isRunning() const;

 private:
  const pid_t process_;
};

class LaunchedPrograms {
 public:
  // Before whoever launches is started: only what is started later leaves its orphans to this
  // process on every system.
  LaunchedPrograms();

  // Ends those that are left.
  ~LaunchedPrograms();
  LaunchedPrograms(const LaunchedPrograms &) = delete;
  LaunchedPrograms &operator=(const LaunchedPrograms &) = delete;

  // From here on; what was started before does not count.
  void begin();

  // All of them. A program is there when the call that launched it has returned.
  std::vector<pid_t> processes() const;

  // The only one, once it runs the stand-in for the application. Throws if there is another number
  // of them or if it runs something else.
  LaunchedProgram only() const;

  void end();

  // A program that stays until it is ended, to be launched.
  static std::string standInProgram();

 private:
  std::optional<std::vector<pid_t>> earlier_;
};
