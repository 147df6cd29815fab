// Gives back to the system what the process has freed, once nothing has happened for a while: the
// allocator by itself keeps nearly all of it for the next scan, which may be hours away. Confined
// to the main thread.
#pragma once

#include <glib.h>

class SpareMemory {
 public:
  SpareMemory() = default;
  ~SpareMemory();
  SpareMemory(const SpareMemory &) = delete;
  SpareMemory &operator=(const SpareMemory &) = delete;

  // Has the allocator keep no more than can be given back. For the whole process; to be called
  // before there is a second thread.
  static void keepLittle();

  // To be called whenever something has been done. Costs next to nothing.
  void noteWork();

 private:
  void giveBackAfter(guint milliseconds);
  void giveBackIfIdle();

  gint64 lastWork_ = 0;  // microseconds, on the monotonic clock
  guint source_ = 0;     // 0 while there is nothing to give back
};
