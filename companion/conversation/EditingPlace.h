// Where a commit message is while its writer edits it. Blocking.
//
// It is where messages are kept, and not among temporary files: if this program is ended meanwhile,
// because its terminal is closed or the machine stops, what was written is still there, and the
// next run puts it with the kept messages. Without a directory for state it is a temporary one.
#pragma once

#include <string>
#include <vector>

#include "platform/Result.h"
#include "platform/linux/files/FileDescriptor.h"

namespace companion {

// A directory for this user alone, removed with all that is in it unless it is left.
class EditingPlace {
 public:
  // Also looks at what runs that were ended have left: what holds nothing that was written is
  // removed, and to `found` are added the directories of the rest. Fails with a reason.
  static platform::Result<EditingPlace> make(std::vector<std::string> &found);

  EditingPlace(EditingPlace &&other) noexcept;
  EditingPlace &operator=(EditingPlace &&other) = delete;
  ~EditingPlace();

  // Of the file that is to be edited.
  std::string file() const;

  // Leaves what is in it, if there is anything, under a name by which it is not looked at again.
  // The end of a sentence that says where.
  std::string leave();

 private:
  EditingPlace(std::string path, platform::FileDescriptor lock)
      : path_(std::move(path)), lock_(std::move(lock)) {}

  std::string path_;               // empty once it was moved on or left
  platform::FileDescriptor lock_;  // on the directory, as long as this program lives
};

}  // namespace companion
