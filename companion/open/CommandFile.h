// One command file, from its finding to its removal. Blocking.
//
// What becomes of a file that is refused: one that the extension cannot have written for this user
// (not a regular file, another owner, writable by others, with a second name) is not ours and is
// left alone. Every other one is removed before anything comes of its contents, also if they are
// wrong: nothing would ever carry it out, the next ones would pile up beside it, and what it asked
// for can be asked for again in the file manager.
#pragma once

#include <string>

#include "platform/FileURL.h"
#include "platform/Result.h"
#include "platform/linux/files/FileDescriptor.h"

namespace companion {

class CommandFile {
 public:
  // `identifier` is a UUID. Never waits for what is in the file's place. Fails with a sentence.
  static platform::Result<CommandFile> open(const platform::FileURL &sharedDirectory,
                                            const std::string &identifier);

  // Its contents as they are now; fails with a sentence. Of those that are larger than a command
  // can be there is only as much as shows that.
  platform::Result<std::string> read() const;

  // Removes the file. Of several programs that do, one alone is told true, and that one may carry
  // the command out. Fails with a sentence.
  platform::Result<bool> take() const;

 private:
  CommandFile(platform::FileDescriptor directory, platform::FileDescriptor file, std::string name)
      : directory_(std::move(directory)), file_(std::move(file)), name_(std::move(name)) {}

  platform::FileDescriptor directory_;
  platform::FileDescriptor file_;
  std::string name_;
};

}  // namespace companion
