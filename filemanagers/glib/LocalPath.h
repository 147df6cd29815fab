// Which of a file manager's files the extension can know.
#pragma once

#include <string>

#include <gio/gio.h>

namespace filemanagers {

// The path of a local file, empty for any other. Takes the location over, which may be null.
std::string pathOfLocation(GFile *location);

}  // namespace filemanagers
