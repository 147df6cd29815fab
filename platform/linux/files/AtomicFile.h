// Whole files, read and replaced at once. Blocking, from any thread.
#pragma once

#include <string>
#include <string_view>

#include "platform/Result.h"

namespace platform {

// Fails with the reason alone; the path is not part of it. If `error` is given, it becomes the
// system's error number, 0 on success, or negative for what is no regular file.
Result<std::string> readFile(const std::string &path, int *error = nullptr);

// Whether the system's error says nothing of a file, but that something has run out for now.
bool isShortage(int error);

// Writes "<path>.unfinished", flushes it to disk, renames it over the target (mode 0600) and
// flushes the folder. A symbolic link is replaced and not followed. The target is untouched if it
// fails, except when it is the flushing of the folder that does. A program that ends in the midst
// of it leaves the old file or the new one, and at most that one file beside it, which the next
// writer takes over.
Outcome replaceFile(const std::string &path, std::string_view contents);

}  // namespace platform
