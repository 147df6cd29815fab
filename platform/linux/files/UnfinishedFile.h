// A file that has all its contents, on disk, but not its name yet. Blocking.
//
// While it is being written it has a name that only depends on what is written, so that a program
// that ends in the midst of it leaves one file there and never a second one: the next writer takes
// it over. Whoever writes holds a lock on it, which ends with the program, so that of several
// writers each finds it empty.
#pragma once

#include <string>
#include <string_view>

#include "platform/Result.h"
#include "platform/linux/files/SpareDescriptor.h"

namespace platform {

class UnfinishedFile {
 public:
  // A file at `path` for its owner alone, with these contents, flushed to disk. What was there
  // before is gone, be it a link or a file with a second name, and those are untouched; a directory
  // stays and makes it fail. It fails too if another writer does not come to an end for 2 seconds.
  static Result<UnfinishedFile> write(const std::string &path, std::string_view contents);

  UnfinishedFile(UnfinishedFile &&other) noexcept;
  UnfinishedFile &operator=(UnfinishedFile &&other) = delete;
  // Removes it unless it has got its name.
  ~UnfinishedFile();

  // Gives it the name, instead of what has it now; a symbolic link is replaced and not followed.
  // Then flushes the folder to disk. Once. If it is the flushing that fails, the reason says so:
  // the file has its name, but a power cut may still bring the old one back.
  Outcome replace(const std::string &target);

  // The same for a name that nothing may have yet, else EEXIST; then the file is still unfinished.
  // The system's error number.
  int takeName(const std::string &target);

 private:
  UnfinishedFile(std::string path, FileWithSpareDescriptor file)
      : path_(std::move(path)), file_(std::move(file)) {}

  int finish(const std::string &target);

  std::string path_;
  FileWithSpareDescriptor file_;  // negative once it is finished
};

}  // namespace platform
