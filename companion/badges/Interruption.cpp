#include "companion/badges/Interruption.h"

#include <cerrno>
#include <csignal>
#include <sys/eventfd.h>
#include <unistd.h>

#include <glib-unix.h>

namespace companion {

namespace {

// Outlives the object, because a signal may come at any time.
int signalled = -1;

void noteSignal(int /*signal*/) {
  const int error = errno;
  eventfd_write(signalled, 1);
  errno = error;
}

gboolean note(int /*descriptor*/, GIOCondition /*condition*/, gpointer isThere) {
  *static_cast<bool *>(isThere) = true;
  return G_SOURCE_REMOVE;
}

}  // namespace

Interruption::Interruption() {
  if (signalled < 0) {
    signalled = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  }
  for (const int signal : {SIGINT, SIGTERM}) {
    std::signal(signal, noteSignal);
  }
  sources_.emplace_back(g_unix_fd_source_new(signalled, G_IO_IN));
  sources_.emplace_back(g_unix_fd_source_new(STDOUT_FILENO, G_IO_ERR));
  for (const auto &source : sources_) {
    g_source_set_callback(source.get(), G_SOURCE_FUNC(note), &isThere_, nullptr);
    g_source_attach(source.get(), nullptr);
  }
}

int Interruption::descriptor() const {
  return signalled;
}

Interruption::~Interruption() {
  for (const auto &source : sources_) {
    g_source_destroy(source.get());
  }
}

}  // namespace companion
