// The few file-system verbs that the logic needs. Blocking, from any thread.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/FileURL.h"
#include "platform/Queues.h"
#include "platform/Result.h"

namespace platform {

struct DirectoryEntry {
  std::string name;
  // When its contents last changed, a symbolic link's own; none where that cannot be told.
  std::optional<Clock::TimePoint> contentModificationDate;
};

class FileManager {
 public:
  virtual ~FileManager() = default;

  // The directory that the processes of an application group share; none if there is none for the
  // group. Creates nothing.
  virtual std::optional<FileURL> containerURLForSecurityApplicationGroupIdentifier(
      const std::string &groupIdentifier) = 0;

  // Whether an entry of any kind exists at the path; a symbolic link is followed.
  virtual bool fileExistsAtPath(const std::string &path) = 0;

  // Creates the directory and its missing parents. One that exists already is no failure.
  virtual Outcome createDirectoryWithIntermediates(const FileURL &url) = 0;

  // Calls `visit` for each entry directly inside the directory, hidden ones included, until it
  // answers false. It may remove the entry that it is given. Fails where the directory cannot be
  // listed; a symbolic link to one is none.
  virtual Outcome visitContentsOfDirectory(
      const FileURL &url, const std::function<bool(const DirectoryEntry &)> &visit) = 0;

  // Removes an entry of any kind: a directory with all that is in it, a symbolic link itself. What
  // takes too long is given up, which is a failure, as is what is nested too deeply (on Linux, 256
  // levels); the next call for it goes on.
  virtual Outcome removeItem(const FileURL &url) = 0;
};

}  // namespace platform
