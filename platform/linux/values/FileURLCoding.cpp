// File URLs as GLib writes and reads them.
#include <cstring>

#include "platform/FileURL.h"
#include "platform/linux/GLibHandles.h"

namespace platform::file_url_coding {

std::string textOfPath(const std::string &path) {
  const StringHandle text(g_filename_to_uri(path.c_str(), nullptr, nullptr));
  if (text == nullptr) {
    g_error("A file URL needs an absolute path");
  }
  return text.get();
}

std::optional<std::string> pathOfText(const std::string &text) {
  if (text.find('\0') != std::string::npos) {
    return std::nullopt;
  }
  char *hostOut = nullptr;
  const StringHandle path(g_filename_from_uri(text.c_str(), &hostOut, nullptr));
  const StringHandle host(hostOut);
  const bool isLocal =
      host == nullptr || *host == '\0' || std::strcmp(host.get(), "localhost") == 0;
  if (path == nullptr || !isLocal || *path != '/') {
    return std::nullopt;
  }
  return path.get();
}

}  // namespace platform::file_url_coding
