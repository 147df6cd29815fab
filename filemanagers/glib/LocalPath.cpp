#include "filemanagers/glib/LocalPath.h"

#include "platform/linux/GLibHandles.h"

namespace filemanagers {

std::string pathOfLocation(GFile *location) {
  const platform::ObjectHandle<GFile> owner(location);
  if (location == nullptr || g_file_is_native(location) == FALSE) {
    return "";
  }
  const platform::StringHandle path(g_file_get_path(location));
  return path == nullptr ? "" : path.get();
}

}  // namespace filemanagers
