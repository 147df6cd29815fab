// The working copies that have ended a status worker: each is left alone until its database
// changes, so that none of them ends one worker after another. From one thread at a time.
#pragma once

#include <chrono>
#include <functional>
#include <future>
#include <map>
#include <optional>
#include <string>

#include "platform/linux/worker/DatabaseState.h"
#include "platform/linux/worker/ScanMessages.h"

class BarredRoots {
 public:
  using StateOfDatabase = std::function<std::string(const std::string &path)>;

  // Gives up on a file system that does not answer after `patience`.
  explicit BarredRoots(std::chrono::milliseconds patience,
                       StateOfDatabase stateOfDatabase = ::stateOfDatabase);

  // `database` is as the scan found it; without one, it counts as it is now.
  void bar(const std::string &root, const std::optional<ScanDatabase> &database);

  // Looks whether the database has changed, and if so forgets about the root. A file system that
  // did not answer and does so again counts as a change: it may well have been the cause.
  bool isBarred(const std::string &root);

 private:
  struct Entry {
    std::string databasePath;
    std::optional<std::string> state;  // none until it has been found out
    std::future<std::string> check;    // valid while a look at it takes too long
  };

  // None while the file system does not answer.
  std::optional<std::string> stateNow(Entry &entry) const;

  const std::chrono::milliseconds patience_;
  const StateOfDatabase stateOfDatabase_;
  std::map<std::string, Entry> entries_;
};
