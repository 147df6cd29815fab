#include "platform/linux/files/DirectoryStream.h"

#include <fcntl.h>
#include <string_view>
#include <unistd.h>

namespace platform {

DirectoryStream openDirectory(int parent, const char *path, LastLink lastLink) {
  const int flags =
      O_RDONLY | O_DIRECTORY | O_CLOEXEC | (lastLink == LastLink::refuse ? O_NOFOLLOW : 0);
  const int descriptor = openat(parent, path, flags);
  if (descriptor < 0) {
    return nullptr;
  }
  DirectoryStream stream(fdopendir(descriptor));
  if (stream == nullptr) {
    close(descriptor);
  }
  return stream;
}

const dirent *nextEntry(DIR *directory) {
  const dirent *entry = readdir(directory);
  while (entry != nullptr &&
         (std::string_view(entry->d_name) == "." || std::string_view(entry->d_name) == "..")) {
    entry = readdir(directory);
  }
  return entry;
}

}  // namespace platform
