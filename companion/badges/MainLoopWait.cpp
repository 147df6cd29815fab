#include "companion/badges/MainLoopWait.h"

namespace companion {

MonotonicTime timeAfter(std::chrono::seconds duration) {
  return g_get_monotonic_time() + duration.count() * G_USEC_PER_SEC;
}

MainLoopWait::MainLoopWait() : alarm_(g_timeout_source_new_seconds(G_MAXUINT)) {
  g_source_set_callback(
      alarm_.get(), [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr, nullptr);
  g_source_attach(alarm_.get(), nullptr);
}

MainLoopWait::~MainLoopWait() {
  g_source_destroy(alarm_.get());
}

bool MainLoopWait::turnBefore(MonotonicTime deadline) {
  if (g_get_monotonic_time() >= deadline) {
    return false;
  }
  g_source_set_ready_time(alarm_.get(), deadline == noDeadline ? -1 : deadline);
  g_main_context_iteration(nullptr, TRUE);
  return true;
}

}  // namespace companion
