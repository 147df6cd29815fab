#include "platform/linux/process/SpareMemory.h"

#include <malloc.h>

namespace {

// A scan is good for two seconds, and changes come up to two and a half seconds after each other;
// so after three there is nothing that belongs to what was.
constexpr gint64 idleTime = 3000;  // milliseconds

// What mallopt(3) names as the first values. Left to itself the allocator raises them to the
// largest block and twice that, at most 64 MiB.
constexpr int mappedBlockSize = 128 << 10;
constexpr int keptSize = 128 << 10;

// `malloc_trim` gives back nothing at the end of the memory of any thread but the main one, so all
// share that: there are few of them, and each keeps some small blocks at hand.
constexpr int arenaCount = 1;

}  // namespace

void SpareMemory::keepLittle() {
  mallopt(M_ARENA_MAX, arenaCount);
  mallopt(M_MMAP_THRESHOLD, mappedBlockSize);
  mallopt(M_TRIM_THRESHOLD, keptSize);
}

SpareMemory::~SpareMemory() {
  if (source_ != 0) {
    g_source_remove(source_);
  }
}

void SpareMemory::noteWork() {
  lastWork_ = g_get_monotonic_time();
  if (source_ == 0) {
    giveBackAfter(idleTime);
  }
}

void SpareMemory::giveBackAfter(guint milliseconds) {
  const GSourceFunc giveBack = [](gpointer data) -> gboolean {
    static_cast<SpareMemory *>(data)->giveBackIfIdle();
    return G_SOURCE_REMOVE;
  };
  source_ = g_timeout_add_full(G_PRIORITY_LOW, milliseconds, giveBack, this, nullptr);
}

void SpareMemory::giveBackIfIdle() {
  source_ = 0;
  const gint64 idle = (g_get_monotonic_time() - lastWork_) / G_TIME_SPAN_MILLISECOND;
  if (idle < idleTime) {
    giveBackAfter(static_cast<guint>(idleTime - idle));
  } else {
    malloc_trim(0);
  }
}
