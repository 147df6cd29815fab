// An instance of inotify, the kernel's interface for watching directories. For one thread.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <sys/inotify.h>

namespace platform {

class Inotify {
 public:
  struct Event {
    int watch;  // -1 for an overflow
    std::uint32_t mask;
    std::uint32_t cookie;   // the same for the two ends of a move
    std::string_view name;  // of the entry; empty if the event is the directory's own
  };

  // All changes in a directory. Never IN_CLOSE_WRITE: a scan that only reads opens the working
  // copy's database for writing, and would cause the next scan.
  static constexpr std::uint32_t everyChange = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO |
                                               IN_MODIFY | IN_ATTRIB | IN_DELETE_SELF |
                                               IN_MOVE_SELF;

  // That the directory itself goes away; nothing about what is in it.
  static constexpr std::uint32_t ownEnd = IN_DELETE_SELF | IN_MOVE_SELF;

  // What may be the coming of an entry that was not there.
  static constexpr std::uint32_t arrival = IN_CREATE | IN_MOVED_TO | IN_ATTRIB;

  Inotify();
  ~Inotify();
  Inotify(const Inotify &) = delete;
  Inotify &operator=(const Inotify &) = delete;

  // Whether the kernel has given one; it gives each user a limited number.
  bool isOpen() const { return descriptor_ >= 0; }
  int descriptor() const { return descriptor_; }

  // The watch of the directory, which is the same for each path that leads to it, or -1 with errno
  // set. Adds to what the watch already asks for.
  int addWatch(const std::string &path, std::uint32_t mask);

  // As `addWatch`, but the watch asks for nothing else from now on.
  int replaceWatch(const std::string &path, std::uint32_t mask);
  void removeWatch(int watch);

  // Hands over the events that are there, without waiting, until there are none or `visit` answers
  // false. The number of events seen.
  std::size_t readEvents(const std::function<bool(const Event &event)> &visit);

 private:
  const int descriptor_;
};

}  // namespace platform
