// Listing a directory through a descriptor, which keeps to the directory whatever becomes of its
// name.
#pragma once

#include <dirent.h>
#include <memory>

namespace platform {

struct CloseDirectory {
  void operator()(DIR *directory) const { closedir(directory); }
};
using DirectoryStream = std::unique_ptr<DIR, CloseDirectory>;

enum class LastLink { follow, refuse };

// A relative path begins at the directory open as `parent`. Null with the reason in errno.
DirectoryStream openDirectory(int parent, const char *path, LastLink lastLink);

// The next entry but the directory itself and its parent; null at the end. Valid until the next
// call.
const dirent *nextEntry(DIR *directory);

}  // namespace platform
