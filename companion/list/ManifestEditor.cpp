#include "companion/list/ManifestEditor.h"

#include "companion/PathText.h"
#include "companion/SharedDirectory.h"
#include "platform/linux/files/LinuxFileManager.h"
#include "platform/linux/values/LinuxPropertyListFiles.h"

namespace companion {

using platform::Array;
using platform::Dictionary;
using platform::FileURL;
using platform::Result;

namespace {

std::string notWritten(const FileURL &file, const std::string &reason) {
  return "the list of working copies cannot be written: " + displayedPath(file.path()) + ": " +
         reason;
}

}  // namespace

Result<ManifestEditor> ManifestEditor::open() {
  const auto failure = [](const std::string &message) {
    return Result<ManifestEditor>::failure(message);
  };
  const Result<FileURL> directory = sharedDirectoryURL();
  if (!directory) {
    return failure(directory.reason());
  }
  const platform::Outcome created =
      platform::LinuxFileManager().createDirectoryWithIntermediates(*directory);
  if (!created) {
    return failure("the directory cannot be created: " + displayedPath(directory->path()) + ": " +
                   created.reason());
  }
  Result<ManifestLock> lock = ManifestLock::take(*directory, manifestLockPatience);
  if (!lock) {
    return failure(lock.reason());
  }
  Result<Manifest> manifest = Manifest::read(*directory);
  if (!manifest) {
    return failure(manifest.reason());
  }
  return ManifestEditor(*directory, std::move(*lock), std::move(*manifest));
}

std::optional<std::string> ManifestEditor::publish(Array entries) const {
  const FileURL file = Manifest::urlInDirectory(sharedDirectory_);
  const Result<Dictionary> next = manifest_.successor(std::move(entries));
  if (!next) {
    return notWritten(file, next.reason());
  }
  const platform::Outcome written = platform::LinuxPropertyListFiles().writeDictionary(*next, file);
  return written ? std::nullopt : std::optional(notWritten(file, written.reason()));
}

}  // namespace companion
