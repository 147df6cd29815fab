// The few file-system verbs that the logic needs. Blocking, from any thread.
#pragma once

#include <optional>
#include <string>

#include "platform/FileURL.h"
#include "platform/Result.h"

namespace platform {

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
};

}  // namespace platform
